#include <array>
#include <cstddef>

#include "calibration/CameraCalibration.h"
#include "geometry/UtilityFunctions.h"

namespace Quorvane::CameraCalibration {

namespace {

// Settings of the edge measurements: the ring's inner edge and the bars' edges go from light to dark.
constexpr double sigma = 1.0;       // pixels
constexpr double threshold = 30.0;  // gray levels of amplitude
constexpr float angleStep = 0.2f;   // degrees
constexpr double lineStep = 0.5;    // pixels

/// Any radius serves: the scale that comes of it is not used.
constexpr double anyRealRadius = 8.0;
constexpr double notRead = 0.0;

struct Circle {
    cv::Point2f center;
    double radius = 0.0;
};

/// The first edge around the centre. Where none is found the circle keeps its initial value, without extent.
Circle InnerEdge(const cv::Mat& image, const cv::Point2f& center, double radius) {
    Circle circle;
    double score = 0.0;
    UtilityFunctions::MeasureCircle(image, center, radius, circle.center, circle.radius, score, EdgePolarity::Negative,
                                    SearchDirection::Outward, sigma, threshold, angleStep);
    return circle;
}

/// The sides of the bars, each seen from its own side: left, right, top and bottom.
std::array<Line, 4> SidesOfBars(const cv::Mat& image, const Circle& circle) {
    const double side = circle.radius * 2.0;
    const std::array<SearchDirection, 4> directions{SearchDirection::LeftToRight, SearchDirection::RightToLeft,
                                                    SearchDirection::TopToBottom, SearchDirection::BottomToTop};
    std::array<Line, 4> lines;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        UtilityFunctions::MeasureLine(image, circle.center, side, side, lines[i], EdgePolarity::Negative, directions[i],
                                      sigma, threshold, lineStep);
    }
    return lines;
}

}  // namespace

bool FindCircleCross(const cv::Mat& image, cv::Point2f& center, double& radius) {
    double scale = 0.0;
    if (!CalScalePixToMmUseCircle(image, anyRealRadius, notRead, center, radius, scale)) return false;
    const std::array<Line, 4> sides = SidesOfBars(image, InnerEdge(image, center, radius));
    return UtilityFunctions::computeQuadrilateralCenterRobust(sides[0], sides[1], sides[2], sides[3], center);
}

}  // namespace Quorvane::CameraCalibration
