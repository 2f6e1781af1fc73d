#pragma once

#include <cstdint>
#include <opencv2/core/mat.hpp>
#include <vector>

#include "Includes/line2Dup.h"
#include "tests/support/Shapes.h"

namespace Quorvane::TestSupport {

/// Where a copy of the part lies: its centre, and its turn in degrees, anti-clockwise on the screen.
struct Pose {
    cv::Point2d centre;
    double angle;
};

/// A flat part without any symmetry, about `extent` pixels across, centred at the origin.
Shape Part(double extent);
/// The same part, placed.
Shape Part(double extent, const Pose& pose);

/// A picture of one upright part in its middle, large enough to hold the part at any angle; its sides are `side`.
cv::Mat PartPicture(double extent, int side, bool colour = true);

/// A picture with copies of the part, slightly out of focus and noisy.
cv::Mat PartScene(cv::Size size, double extent, const std::vector<Pose>& poses, std::uint32_t seed, bool colour = true);

/// Adds the upright part and `count` - 1 rotations of it by `step` degrees each, in the class "part". False if the
/// picture has too few features.
bool TrainAllAngles(line2Dup::Detector& detector, const cv::Mat& picture, int count, float step);

}  // namespace Quorvane::TestSupport
