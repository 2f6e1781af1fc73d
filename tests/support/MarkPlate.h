#pragma once

#include <cstdint>
#include <opencv2/core/types.hpp>
#include <vector>

#include "tests/support/Scene.h"

namespace Quorvane::TestSupport {

/// A plate with round marks of one radius on a grid, each a little off its place by a random fraction of pixels.
///
///     MarkPlate plate{{1280, 960}, {4, 3}, 50.0};
///     const cv::Mat picture = plate.Render().Blur(1.0).Gray();
///     const std::vector<cv::Point2d> centres = plate.Centres();
struct MarkPlate {
    cv::Size size;
    /// Columns and rows of marks.
    cv::Size grid;
    /// In pixels.
    double radius;
    double background = 40.0;
    double brightness = 220.0;
    std::uint32_t seed = 1;

    /// The true centres, row by row. No two marks come nearer to each other than four radii as far as the grid's cells
    /// allow it, and marks that fit their cell stay inside it.
    std::vector<cv::Point2d> Centres() const;

    Scene Render() const;
};

}  // namespace Quorvane::TestSupport
