#include "examples/demo/BedScene.h"

#include <cmath>
#include <opencv2/core.hpp>

#include "tests/support/Pictures.h"

namespace Demo {

using Quorvane::TestSupport::Board;

Board BedWithAPhotograph(const std::vector<cv::Point2f>& dots) {
    const cv::Mat photograph = Quorvane::TestSupport::LoadGrayPicture("photographer.png");
    Board bed;
    bed.level = [=](const cv::Point2d& p) {
        constexpr double bedLevel = 190.0;
        constexpr double tableLevel = 70.0;
        constexpr double dotRadius = 3.0;
        if (std::abs(p.x) > 130.0 || std::abs(p.y) > 100.0) return tableLevel;
        for (const cv::Point2f& dot : dots) {
            if (cv::norm(p - cv::Point2d(dot)) < dotRadius) return 20.0;
        }
        constexpr double side = 62.0;
        const double angle = 25.0 * CV_PI / 180.0;
        const double u = (p.x * std::cos(angle) + p.y * std::sin(angle)) / side + 0.5;
        const double v = (p.y * std::cos(angle) - p.x * std::sin(angle)) / side + 0.5;
        if (u < 0.0 || v < 0.0 || u >= 1.0 || v >= 1.0) return bedLevel;
        return static_cast<double>(
            photograph.at<uchar>(static_cast<int>(v * photograph.rows), static_cast<int>(u * photograph.cols)));
    };
    for (const cv::Point2f& dot : dots) bed.points.emplace_back(dot);
    return bed;
}

}  // namespace Demo
