// What makes this fast cannot be seen from outside. The 8-bit conversion to Lab is a function of one pixel alone, so
// squares are converted in a call or two as their turn comes, and only as far as it takes to accept them. What is
// traced or widened is looked at in its own window and not in the whole image.

#include "algorithms/TargetExtraction.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <queue>

#include "Includes/LargestContour.h"
#include "algorithms/ColourRegionDisplay.h"

namespace Quorvane {

namespace {

using Contour = std::vector<cv::Point>;

constexpr uchar inside = 255;

/// Radius in pixels of the circle of points from which a colour region starts.
constexpr double startRadius = 10.0;

/// Rows of a square that are converted before the others: the call costs about as much as they do.
constexpr int firstStripRows = 4;

/// `cv::distanceTransform` knows no distance above this one, in pixels: it is where its fixed-point numbers begin.
constexpr int farthestDistance = 8191;

cv::Rect FrameOf(const cv::Mat& image) { return {cv::Point(), image.size()}; }

cv::Vec3b LabOf(const cv::Vec3b& bgr) {
    cv::Mat lab;
    cv::cvtColor(cv::Mat(1, 1, CV_8UC3, bgr), lab, cv::COLOR_BGR2Lab);
    return lab.at<cv::Vec3b>(0, 0);
}

int SquaredDistance(const uchar* a, const cv::Vec3b& b) {
    const int d0 = a[0] - b[0];
    const int d1 = a[1] - b[1];
    const int d2 = a[2] - b[2];
    return d0 * d0 + d1 * d1 + d2 * d2;
}

std::vector<cv::Point> StartPoints(cv::Point seed, int count, const cv::Rect& frame) {
    std::vector<cv::Point> points;
    for (int i = 0; i < count; ++i) {
        const double angle = 2.0 * CV_PI * i / count;
        const auto x = static_cast<int>(std::cos(angle) * startRadius + seed.x);
        const auto y = static_cast<int>(std::sin(angle) * startRadius + seed.y);
        points.emplace_back(std::clamp(x, 0, frame.width - 1), std::clamp(y, 0, frame.height - 1));
    }
    return points;
}

/// The image cut into squares, each with its difference to the seed's colour.
class ColourSquares {
public:
    ColourSquares(const cv::Mat& image, cv::Point seed, int side)
        : pixels_(BytesOf(image)), side_(side), seedColour_(LabOf(pixels_.at<cv::Vec3b>(seed))) {}

    cv::Size GridSize() const { return {(pixels_.cols - 1) / side_ + 1, (pixels_.rows - 1) / side_ + 1}; }

    /// The square, given by column and row of the grid, that holds a pixel.
    cv::Point SquareOf(cv::Point pixel) const { return {pixel.x / side_, pixel.y / side_}; }

    cv::Rect Bounds(cv::Point square) const {
        const int x = square.x * side_;
        const int y = square.y * side_;
        return {x, y, std::min(pixels_.cols - x, side_), std::min(pixels_.rows - y, side_)};
    }

    /// The difference to the seed's colour of the square's pixel that is nearest to it. Once a pixel nearer than
    /// `enough` was seen, the others may be left out.
    double LeastDifference(const cv::Rect& bounds, double enough) const {
        // A first strip of a few rows is mostly enough for a square that is accepted.
        const int firstRows = std::min(firstStripRows, bounds.height);
        const cv::Rect first(bounds.x, bounds.y, bounds.width, firstRows);
        const double least = LeastDifferenceIn(first);
        if (least < enough || firstRows == bounds.height) return least;
        const cv::Rect rest(bounds.x, bounds.y + firstRows, bounds.width, bounds.height - firstRows);
        return std::min(least, LeastDifferenceIn(rest));
    }

private:
    /// Three bytes a pixel whatever the image's type is: wider pixels give the bytes at three times their column.
    static cv::Mat BytesOf(const cv::Mat& image) {
        CV_Assert(image.elemSize() >= 3);
        return {image.rows, image.cols, CV_8UC3, image.data, image.step};
    }

    double LeastDifferenceIn(const cv::Rect& strip) const {
        cv::Mat lab;
        cv::cvtColor(pixels_(strip), lab, cv::COLOR_BGR2Lab);
        int least = std::numeric_limits<int>::max();
        for (int r = 0; r < lab.rows; ++r) {
            const uchar* pixel = lab.ptr(r);
            for (int c = 0; c < lab.cols; ++c, pixel += 3) least = std::min(least, SquaredDistance(pixel, seedColour_));
        }
        return std::sqrt(static_cast<double>(least));
    }

    cv::Mat pixels_;
    int side_;
    cv::Vec3b seedColour_;
};

/// A region that grows from square to square; `display` watches it in debug mode and is null otherwise.
class RegionGrowth {
public:
    RegionGrowth(const ColourSquares& squares, const cv::Rect& frame, double maxDifference,
                 ColourRegionDisplay* display)
        : squares_(squares),
          frame_(frame),
          maxDifference_(maxDifference),
          display_(display),
          visited_(cv::Mat::zeros(squares.GridSize(), CV_8U)) {}

    void FloodFrom(cv::Point startPoint) {
        std::queue<cv::Point> waiting;
        Visit(squares_.SquareOf(startPoint), waiting);
        for (; !waiting.empty(); waiting.pop()) {
            if (!Accepts(squares_.Bounds(waiting.front()))) continue;
            VisitNeighbours(waiting.front(), waiting);
        }
    }

    /// The least window of the image that holds the region.
    cv::Rect Window() const {
        cv::Rect window;
        for (const cv::Rect& square : accepted_) window |= square;
        return window;
    }

    /// The region within a window of the image.
    cv::Mat Mask(const cv::Rect& window) const {
        cv::Mat mask = cv::Mat::zeros(window.size(), CV_8U);
        for (const cv::Rect& square : accepted_) mask(square - window.tl()).setTo(inside);
        return mask;
    }

private:
    /// Queues a square of the grid unless it has been visited before.
    bool Visit(cv::Point square, std::queue<cv::Point>& waiting) {
        if (!FrameOf(visited_).contains(square) || visited_.at<uchar>(square) != 0) return false;
        visited_.at<uchar>(square) = inside;
        waiting.push(square);
        return true;
    }

    void VisitNeighbours(cv::Point square, std::queue<cv::Point>& waiting) {
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                const cv::Point neighbour(square.x + dx, square.y + dy);
                if (Visit(neighbour, waiting) && display_ != nullptr) display_->Queued(squares_.Bounds(neighbour));
            }
        }
    }

    bool Accepts(const cv::Rect& square) {
        if (display_ != nullptr) display_->Processing(square);
        // A person wants to see the square's true difference.
        const double enough = display_ != nullptr ? 0.0 : maxDifference_;
        const double difference = squares_.LeastDifference(square, enough);
        if (!(difference < maxDifference_)) {
            if (display_ != nullptr) ColourRegionDisplay::Rejected(square, difference);
            return false;
        }
        accepted_.push_back(square);
        if (display_ != nullptr) display_->Accepted(square, difference, Mask(frame_));
        return true;
    }

    const ColourSquares& squares_;
    cv::Rect frame_;
    double maxDifference_;
    ColourRegionDisplay* display_;
    cv::Mat visited_;
    std::vector<cv::Rect> accepted_;
};

std::vector<Contour> OuterContours(const cv::Mat& mask, cv::Point offset = {}) {
    std::vector<Contour> contours;
    cv::findContours(mask, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE, offset);
    return contours;
}

/// Draws the filled contour, shifted by `offset`, into a new mask.
cv::Mat FilledContour(cv::Size size, const Contour& contour, cv::Point offset) {
    cv::Mat mask = cv::Mat::zeros(size, CV_8U);
    cv::drawContours(mask, std::vector<Contour>{contour}, 0, cv::Scalar::all(inside), cv::FILLED, cv::LINE_8,
                     cv::noArray(), std::numeric_limits<int>::max(), offset);
    return mask;
}

/// The part of the image in which pixels within `distance` of the contour can lie. It is the whole image where
/// distances outgrow what `cv::distanceTransform` tells apart, and for a contour that leaves the image, since lines
/// that are cut off at the border would be drawn somewhat differently in a smaller window.
cv::Rect WindowAround(const Contour& contour, int distance, const cv::Rect& frame) {
    const cv::Rect box = cv::boundingRect(contour);
    if (distance >= farthestDistance || (box & frame) != box) return frame;
    const int margin = std::max(distance, 0) + 1;
    return cv::Rect(box.x - margin, box.y - margin, box.width + 2 * margin, box.height + 2 * margin) & frame;
}

}  // namespace

double LabColourDistance(const cv::Vec3b& bgrA, const cv::Vec3b& bgrB) {
    return std::sqrt(static_cast<double>(SquaredDistance(LabOf(bgrA).val, LabOf(bgrB))));
}

std::vector<cv::Point> FindColourRegion(const cv::Mat& image, cv::Point seed, double maxDifference, int directionCount,
                                        int squareSize, bool debug) {
    if (squareSize < 1 || !FrameOf(image).contains(seed)) return {};

    const std::vector<cv::Point> startPoints = StartPoints(seed, directionCount, FrameOf(image));
    const auto display = debug ? std::make_unique<ColourRegionDisplay>(image, seed, startPoints) : nullptr;
    const ColourSquares squares(image, seed, squareSize);
    RegionGrowth growth(squares, FrameOf(image), maxDifference, display.get());
    for (const cv::Point& point : startPoints) growth.FloodFrom(point);

    // Deliberately closed in debug mode only: what a person sees there is the rounded region.
    const std::vector<Contour> contours = display ? OuterContours(display->Closed(growth.Mask(FrameOf(image))))
                                                  : OuterContours(growth.Mask(growth.Window()), growth.Window().tl());
    if (display) display->AllContours(contours);
    if (contours.empty()) {
        if (display) ColourRegionDisplay::NoContour();
        return {};
    }
    const Contour& largest = contours[IndexOfLargestContour(contours)];
    if (display) display->FinalContour(largest);
    return largest;
}

cv::Mat FitToWindow(const cv::Mat& image, int maxWidth, int maxHeight) {
    if (image.empty()) return image;
    const double scale =
        std::min(static_cast<double>(maxHeight) / image.rows, static_cast<double>(maxWidth) / image.cols);
    if (scale >= 1.0) return image.clone();
    cv::Mat fitted;
    const cv::Size size(static_cast<int>(image.cols * scale), static_cast<int>(image.rows * scale));
    cv::resize(image, fitted, size, 0.0, 0.0, cv::INTER_LINEAR);
    return fitted;
}

std::vector<cv::Point> ExpandContour(const cv::Mat& image, const std::vector<cv::Point>& contour, int distance) {
    if (contour.empty()) return contour;
    const cv::Rect window = WindowAround(contour, distance, FrameOf(image));
    const cv::Mat filled = FilledContour(window.size(), contour, -window.tl());
    cv::Mat distances;
    cv::distanceTransform(~filled, distances, cv::DIST_L2, cv::DIST_MASK_5, CV_32F);
    const std::vector<Contour> contours = OuterContours(distances <= distance, window.tl());
    return contours.empty() ? contour : contours.front();
}

cv::Mat CropContourRegion(const cv::Mat& image, const std::vector<cv::Point>& contour, bool fillBackground,
                          cv::Rect& box) {
    if (contour.empty()) return {};
    box = cv::boundingRect(contour) & FrameOf(image);
    if (box.empty()) return {};
    if (!fillBackground) return image(box).clone();

    const cv::Mat mask = FilledContour(box.size(), contour, -box.tl());
    cv::Mat part = cv::Mat::zeros(box.size(), image.type());
    image(box).copyTo(part, mask);
    part.setTo(RingMeanColour(image(box), mask), ~mask);
    return part;
}

cv::Scalar RingMeanColour(const cv::Mat& image, const cv::Mat& mask) {
    cv::Mat ring;
    const cv::Mat element = cv::getStructuringElement(cv::MORPH_RECT, {3, 3});
    cv::dilate(mask, ring, element, {-1, -1}, 1, cv::BORDER_CONSTANT);
    cv::subtract(ring, mask, ring);
    return cv::countNonZero(ring) > 0 ? cv::mean(image, ring) : cv::mean(image);
}

std::vector<cv::Point2f> TransformShape(const std::vector<cv::Point2f>& points, cv::Point2f centre, double angle,
                                        cv::Point2f offset) {
    if (points.empty()) return {};
    cv::Mat motion = cv::getRotationMatrix2D(centre, angle, 1.0);
    motion.at<double>(0, 2) += offset.x;
    motion.at<double>(1, 2) += offset.y;
    std::vector<cv::Point2f> moved;
    cv::transform(points, moved, motion);
    return moved;
}

}  // namespace Quorvane
