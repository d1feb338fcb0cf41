#pragma once

/// \file
/// Everything that the library FCurveInterchange offers.

#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/ConversionReport.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
