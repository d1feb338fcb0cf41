#pragma once

/// \file
/// Everything.

#include "FCurveLib/Constant.h"
#include "FCurveLib/ContainerObserver.h"
#include "FCurveLib/Exception.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/FCurveObserver.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/ProjectionIterator.h"
#include "FCurveLib/PropertyMap.h"
#include "FCurveLib/Rectangle.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/SegmentMap.h"
#include "FCurveLib/SharedFromThis.h"
#include "FCurveLib/Tangent.h"
#include "FCurveLib/Tolerance.h"
#include "FCurveLib/TrackedObserver.h"
#include "FCurveLib/Vector2D.h"
