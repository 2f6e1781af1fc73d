#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

#include "geometry/Line.h"

namespace Demo {

/// A part of a picture, enlarged so that fractions of a pixel show, to draw on in the picture's coordinates: search
/// regions in blue, points in red, fits in green.
class Drawing {
public:
    Drawing(const cv::Mat& picture, const cv::Rect& part, int factor);

    void Arrow(const cv::Point2d& from, const cv::Point2d& to);
    void Rectangle(const cv::Point2d& center, const cv::Point2d& half);
    void Points(const std::vector<cv::Point2f>& points);
    void Cross(const cv::Point2d& p);
    /// Where a point truly is: a tilted cross in blue.
    void Truth(const cv::Point2d& p);
    void Fit(const Quorvane::Line& line, float reach);
    void Fit(const cv::Point2d& center, double radius);
    void Fit(const std::vector<cv::Point2f>& curve);

    const cv::Mat& Image() const { return image_; }

private:
    cv::Point At(const cv::Point2d& p) const;

    cv::Mat image_;
    cv::Point corner_;
    int factor_;
};

}  // namespace Demo
