#include <opencv2/imgproc.hpp>
#include <vector>

#include "geometry/CaliperRow.h"
#include "geometry/Measurement.h"

namespace Quorvane::UtilityFunctions {

namespace {

constexpr std::size_t leastPointsOfALine = 2;

/// Where `cv::fitLine` stops: the change of the line's distance to the origin, in pixels, and of its angle, in radians.
constexpr double fitPrecision = 0.01;

Line FitLine(const std::vector<cv::Point2f>& points) {
    if (points.size() < leastPointsOfALine) return {};
    constexpr double parameterOfOpenCV = 0.0;
    cv::Vec4f line;
    cv::fitLine(points, line, cv::DIST_WELSCH, parameterOfOpenCV, fitPrecision, fitPrecision);
    return {line};
}

}  // namespace

void MeasureLine(const cv::Mat& image, const cv::Point2f& center, const double& width, const double& height, Line& line,
                 EdgePolarity polarity, SearchDirection direction, const double& sigma, const double& threshold,
                 const double& step) {
    const CaliperRow row(center, width, height, direction, step);
    line = FitLine(FirstEdgesOfRow(image, row, polarity, sigma, threshold));
}

}  // namespace Quorvane::UtilityFunctions
