#include "geometry/CaliperRow.h"

#include <opencv2/core/cvdef.h>
#include <algorithm>
#include <cmath>

#include "TruncateToInt.h"
#include "geometry/CaliperGuard.h"
#include "geometry/GrayImage.h"

namespace Quorvane::UtilityFunctions {

namespace {

/// Half the width of every caliper of a row, in pixels: six samples across.
constexpr double halfWidthOfRow = 2.5;

double ScanAngle(SearchDirection direction) {
    switch (direction) {
        case SearchDirection::LeftToRight: return 0.0;
        case SearchDirection::RightToLeft: return CV_PI;
        case SearchDirection::TopToBottom: return CV_PI / 2.0;
        default:  // the directions of circles scan upwards here, too
            return -CV_PI / 2.0;
    }
}

}  // namespace

CaliperRow::CaliperRow(const cv::Point2f& center, double width, double height, SearchDirection direction, double step)
    : center_(center),
      height_(height),
      step_(step),
      angle_(ScanAngle(direction)),
      scansAlongX_(direction == SearchDirection::LeftToRight || direction == SearchDirection::RightToLeft) {
    extent_ = scansAlongX_ ? height : width;
    halfLength_ = (scansAlongX_ ? width : height) / 2.0;
    count_ = step > 0.0 ? std::max(TruncateToInt(extent_ / step), 0) : 0;
}

float CaliperRow::Across(int index) const {
    const double middle = scansAlongX_ ? center_.y : center_.x;
    return static_cast<float>(middle - extent_ / 2.0 + index * step_ + step_ / 2.0);
}

int CaliperRow::FirstFrom(double across) const {
    int begin = 0;
    int end = count_;
    while (begin < end) {
        const int middle = begin + (end - begin) / 2;
        if (Across(middle) >= across) {
            end = middle;
        } else {
            begin = middle + 1;
        }
    }
    return begin;
}

std::pair<int, int> CaliperRow::IndicesNear(const cv::Size& image) const {
    // A caliper's axis leaves its row or column by the rounding of pi only: less than this, however long it is.
    constexpr double drift = 1.0;
    constexpr double reach = halfWidthOfRow + drift;
    return {FirstFrom(-reach), FirstFrom((scansAlongX_ ? image.height : image.width) + reach)};
}

CaliperPlace CaliperRow::Place(int index) const {
    const float across = Across(index);
    if (scansAlongX_) return {across, center_.x, angle_, halfLength_};
    return {center_.y, across, angle_, halfLength_};
}

std::pair<double, double> CaliperRow::RowsSpanned() const {
    const double reach = std::abs(height_) / 2.0 + halfWidthOfRow;
    return {center_.y - reach, center_.y + reach};
}

std::vector<cv::Point2f> FirstEdgesOfRow(const cv::Mat& image, const CaliperRow& row, EdgePolarity polarity,
                                         double sigma, double threshold) {
    const auto [top, bottom] = row.RowsSpanned();
    FirstEdgeSearch search(grayImageBetween(image, top, bottom), halfWidthOfRow, sigma, threshold, polarity);
    std::vector<cv::Point2f> edges;
    const auto measure = [&](int k) {
        return GuardCaliper("position", k, [&] {
            cv::Point2f edge;
            if (search.Find(row.Place(k), edge)) edges.push_back(edge);
        });
    };
    // Calipers outside the image have no edge, but each says so where memory does not suffice for the filter. That is
    // the same for all: where one goes through, the others would, too.
    const auto measureOutside = [&](int begin, int end) {
        for (int k = begin; k < end && !measure(k); ++k) continue;
    };
    const auto [first, last] = row.IndicesNear({image.cols, image.rows});
    measureOutside(0, first);
    for (int k = first; k < last; ++k) measure(k);
    measureOutside(last, row.Count());
    return edges;
}

}  // namespace Quorvane::UtilityFunctions
