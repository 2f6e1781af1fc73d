#pragma once

/// The geometry and measurement functions of the namespace `Quorvane::UtilityFunctions`, with their result records.

#include "geometry/ChangeDetection.h"
#include "geometry/ContourGeometry.h"
#include "geometry/Curve.h"
#include "geometry/ImageOperators.h"
#include "geometry/Line.h"
#include "geometry/Measurement.h"
