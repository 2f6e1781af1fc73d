#pragma once

#include "calibration/CameraCalibration.h"
#include "calibration/CameraCalibrator.h"
#include "framework/Algorithm.h"
#include "framework/AlgorithmFactory.h"
#include "framework/AlgorithmParameters.h"
#include "framework/AlgorithmResult.h"
#include "framework/Param.h"
#include "geometry/Curve.h"
#include "geometry/Line.h"
#include "geometry/UtilityFunctions.h"

/// Everything that a host of QuorvaneVision can use; the header QuorvaneVision.h brings it in with one line.
namespace Quorvane {}
