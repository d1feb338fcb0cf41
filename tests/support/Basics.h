#pragma once

// What nearly every test uses: GoogleTest, the library, and the standard library's everyday parts.

#include "FCurveLib/FCurveLib.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Test {

using namespace VEM_FN::FCurveLib;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Points = std::vector<Vector2D<double>>;

/// What a recorder has heard.
using Heard = std::vector<std::string>;

} // namespace Test
