#pragma once

#include <opencv2/core/types.hpp>
#include <utility>
#include <vector>

#include "geometry/FirstEdgeSearch.h"
#include "geometry/Measurement.h"

namespace Quorvane::UtilityFunctions {

/// The calipers that `MeasureLine` and `MeasureCurve` lay across an axis-parallel rectangle: side by side along its
/// middle line, the first half a step from the border, each spanning the rectangle in the direction of the scan.
class CaliperRow {
public:
    CaliperRow(const cv::Point2f& center, double width, double height, SearchDirection direction, double step);

    /// None for a step of zero or below, or one that the rectangle has no room for.
    int Count() const { return count_; }

    CaliperPlace Place(int index) const;

    /// The first caliper that may reach into an image of this size, and the one behind the last. The others see only
    /// what lies outside, and have no edge.
    std::pair<int, int> IndicesNear(const cv::Size& image) const;

    /// Least and greatest y of all positions that the calipers read.
    std::pair<double, double> RowsSpanned() const;

private:
    /// The coordinate in which the calipers lie side by side. It does not fall from index to index.
    float Across(int index) const;
    /// The first caliper that does not lie below a coordinate; their count if there is none.
    int FirstFrom(double across) const;

    cv::Point2f center_;
    double height_;
    double extent_;
    double step_;
    double angle_;
    double halfLength_;
    bool scansAlongX_;
    int count_;
};

/// The first edge of each caliper of the row, in its order, as far as there is one.
std::vector<cv::Point2f> FirstEdgesOfRow(const cv::Mat& image, const CaliperRow& row, EdgePolarity polarity,
                                         double sigma, double threshold);

}  // namespace Quorvane::UtilityFunctions
