#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

namespace Quorvane::Reference {

/// The caliper from its definition: every run works on a copy of the whole image and reads its type anew for each
/// pixel; every list is built in full before the next step begins.
class EdgeCaliper {
public:
    void configure(double centreRow, double centreColumn, double scanAngle, double halfTheLength, double halfTheWidth,
                   const std::string& kindOfInterpolation);

    bool measure(const cv::Mat& image, double sigma, double threshold, const std::string& transition,
                 const std::string& select, std::vector<double>& rows, std::vector<double>& columns,
                 std::vector<double>& amplitudes, std::vector<double>& distances) const;

private:
    double ReadAt(const cv::Mat& working, double x, double y) const;
    std::vector<double> Profile(const cv::Mat& working) const;

    double row = 0.0;
    double column = 0.0;
    double angle = 0.0;
    double halfLength = 0.0;
    std::string interpolation;
    std::vector<std::vector<cv::Point2d>> sampleGrid;
};

}  // namespace Quorvane::Reference
