#pragma once

#include "geometry/ChangeDetection.h"
#include "geometry/ContourGeometry.h"
#include "geometry/Curve.h"
#include "geometry/ImageOperators.h"
#include "geometry/Line.h"
#include "geometry/Measurement.h"

/// Geometry, measurement and image functions, with their result records. None of them depends on another subsystem.
namespace Quorvane::UtilityFunctions {}
