// Regions are grown by runs, the unbroken rows of pixels: a run looks for the pixels next to it in the rows above and
// below, and each one found is extended to both sides at once. Which pixels a region gets does not depend on the order
// in which they are found, as the test of a pixel knows only the region's first one.
//
// The test itself stays in integers: a root of a whole number is at most the tolerance where the number is at most a
// limit, found once.

#include "geometry/ColourRegions.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace Quorvane::UtilityFunctions {

namespace {

/// The largest squared distance of two colours of three bytes.
constexpr int farthestSquared = 3 * 255 * 255;

/// The largest squared distance whose root is at most `tolerance`; -1 if even 0 is too far.
int SquaredLimit(double tolerance) {
    if (!(tolerance >= 0.0)) return -1;
    if (tolerance >= std::sqrt(static_cast<double>(farthestSquared))) return farthestSquared;
    auto limit = static_cast<int>(tolerance * tolerance);
    while (std::sqrt(static_cast<double>(limit)) > tolerance) --limit;
    while (std::sqrt(static_cast<double>(limit + 1)) <= tolerance) ++limit;
    return limit;
}

/// Columns first to last, both included.
struct Run {
    int row = 0;
    int first = 0;
    int last = 0;
};

class RegionGrower {
public:
    RegionGrower(const cv::Mat& picture, double tolerance)
        : picture_(picture),
          squaredLimit_(SquaredLimit(tolerance)),
          taken_(cv::Mat::zeros(picture.rows + 2 * margin, picture.cols + 2 * margin, CV_8UC1)) {
        // A margin that is taken spares every test of the borders.
        taken_.row(0).setTo(1);
        taken_.row(taken_.rows - 1).setTo(1);
        taken_.colRange(0, margin).setTo(1);
        taken_.colRange(taken_.cols - margin, taken_.cols).setTo(1);
    }

    bool IsTaken(int row, int column) const { return TakenRow(row)[column] != 0; }

    /// The runs of the region that grows from this pixel, which must not be taken yet. They are valid until the next
    /// call.
    const std::vector<Run>& Grow(int row, int column) {
        const cv::Vec3b seed = picture_.at<cv::Vec3b>(row, column);
        for (int i = 0; i < 3; ++i) seed_[i] = seed[i];
        runs_.clear();
        TakeRunAround(row, column);
        for (std::size_t next = 0; next < runs_.size(); ++next) {
            const Run run = runs_[next];
            if (run.row > 0) TakeNeighbours(run.row - 1, run.first - 1, run.last + 1);
            if (run.row + 1 < picture_.rows) TakeNeighbours(run.row + 1, run.first - 1, run.last + 1);
        }
        return runs_;
    }

private:
    static constexpr int margin = 1;

    uchar* TakenRow(int row) { return taken_.ptr(row + margin) + margin; }
    const uchar* TakenRow(int row) const { return taken_.ptr(row + margin) + margin; }

    bool IsLikeSeed(const uchar* pixel) const {
        const int d0 = pixel[0] - seed_[0];
        const int d1 = pixel[1] - seed_[1];
        const int d2 = pixel[2] - seed_[2];
        return d0 * d0 + d1 * d1 + d2 * d2 <= squaredLimit_;
    }

    bool Joins(const uchar* pixels, const uchar* taken, int column) const {
        return taken[column] == 0 && IsLikeSeed(pixels + 3 * column);
    }

    void TakeRunAround(int row, int column) {
        const uchar* pixels = picture_.ptr(row);
        const uchar* taken = TakenRow(row);
        int first = column;
        while (Joins(pixels, taken, first - 1)) --first;
        int last = column;
        while (Joins(pixels, taken, last + 1)) ++last;
        std::fill(TakenRow(row) + first, TakenRow(row) + last + 1, uchar{1});
        runs_.push_back({row, first, last});
    }

    void TakeNeighbours(int row, int first, int last) {
        const uchar* pixels = picture_.ptr(row);
        const uchar* taken = TakenRow(row);
        for (int column = first; column <= last; ++column) {
            if (!Joins(pixels, taken, column)) continue;
            TakeRunAround(row, column);
            column = runs_.back().last + 1;
        }
    }

    const cv::Mat& picture_;
    int squaredLimit_;
    cv::Mat taken_;
    int seed_[3] = {0, 0, 0};
    std::vector<Run> runs_;
};

std::int64_t PixelsOf(const std::vector<Run>& runs) {
    std::int64_t count = 0;
    for (const Run& run : runs) count += run.last - run.first + 1;
    return count;
}

}  // namespace

cv::Mat LargeColourRegions(const cv::Mat& picture, double tolerance, int areaLimit) {
    CV_Assert(picture.type() == CV_8UC3);
    cv::Mat mask = cv::Mat::zeros(picture.size(), CV_8UC1);
    RegionGrower grower(picture, tolerance);
    for (int r = 0; r < picture.rows; ++r) {
        for (int c = 0; c < picture.cols; ++c) {
            if (grower.IsTaken(r, c)) continue;
            const std::vector<Run>& runs = grower.Grow(r, c);
            if (PixelsOf(runs) <= areaLimit) continue;
            for (const Run& run : runs) {
                std::fill(mask.ptr(run.row) + run.first, mask.ptr(run.row) + run.last + 1, uchar{255});
            }
        }
    }
    return mask;
}

}  // namespace Quorvane::UtilityFunctions
