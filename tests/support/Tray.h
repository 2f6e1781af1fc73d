#pragma once

#include <cstdint>
#include <opencv2/core/mat.hpp>
#include <vector>

#include "tests/support/Shapes.h"

namespace Quorvane::TestSupport {

/// Where a part lies: its middle, and its turn in degrees, counter-clockwise as one looks at the picture.
struct PartPose {
    cv::Point2d middle;
    double angle = 0.0;

    /// Where a point of the part, given relative to its middle when it lies unturned, is in the picture.
    cv::Point2d Place(cv::Point2d inPart) const;
};

/// A tray with copies of one part under a camera.
struct TraySettings {
    cv::Size size{640, 480};
    double partSize = 80.0;  ///< Diameter in pixels of the circle around a part.
    int columns = 4;         ///< Parts lie in a grid of this many columns and rows, shifted at random in their cells.
    int rows = 3;
    double noise = 2.0;         ///< Deviation of the camera's noise in gray levels.
    double lightAtRight = 1.0;  ///< Brightness at the right edge as a share of that at the left edge.
    std::uint32_t seed = 1;
};

struct Tray {
    cv::Mat picture;  ///< Colour
    std::vector<PartPose> poses;
};

/// The part: a plate with a notch, two holes and a slot, without any symmetry, of one colour.
Shape TrayPart(double partSize);

/// The part's outline without its holes, as a closed polygon relative to its middle.
std::vector<cv::Point2d> TrayPartOutline(double partSize);

/// A point of the unturned part, relative to its middle, with plain colour for at least a seventh of its size around.
cv::Point2d TrayPartMark(double partSize);

/// Renders the tray. The first part lies unturned.
Tray RenderTray(const TraySettings& settings);

}  // namespace Quorvane::TestSupport
