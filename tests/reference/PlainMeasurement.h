#pragma once

#include <opencv2/core/mat.hpp>

#include "geometry/Measurement.h"

namespace Quorvane::Reference {

using UtilityFunctions::Curve;
using UtilityFunctions::EdgePolarity;
using UtilityFunctions::Line;
using UtilityFunctions::SearchDirection;

// The three measurements from their definition: the whole image converted to gray, a fresh caliper at every place,
// each one measured in full.

void MeasureLine(const cv::Mat& image, const cv::Point2f& center, double width, double height, Line& line,
                 EdgePolarity polarity, SearchDirection direction, double sigma, double threshold, double step);

void MeasureCircle(const cv::Mat& image, const cv::Point2f& center, double radius, cv::Point2f& foundCenter,
                   double& foundRadius, double& score, EdgePolarity polarity, SearchDirection direction, double sigma,
                   double threshold, double angleStep);

void MeasureCurve(const cv::Mat& image, const cv::Point2f& center, double width, double height, Curve& curve,
                  EdgePolarity polarity, SearchDirection direction, double sigma, double threshold, double step);

}  // namespace Quorvane::Reference
