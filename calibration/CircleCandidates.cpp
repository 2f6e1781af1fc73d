#include "calibration/CircleCandidates.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "geometry/GrayImage.h"

namespace Quorvane::CameraCalibration {

namespace {

/// Above this deviation of its gray levels a picture counts as noisy or busy and gets the stronger blur.
constexpr double busyDeviation = 15.0;
const cv::Size strongBlur(9, 9);
const cv::Size weakBlur(5, 5);
constexpr double sigmaOfWindow = 0.0;  // OpenCV derives it from the window's size

constexpr int sobelWindow = 3;
constexpr double sobelScale = 1.0;
constexpr double sobelDelta = 0.0;

// Thresholds, in gray levels, of the edges that are counted: where they begin to be followed, and where they start.
constexpr double edgeFollowed = 50.0;
constexpr double edgeStarted = 150.0;
constexpr bool exactGradient = false;

// Settings of the Hough transform.
constexpr double accumulatorCell = 1.2;       // pixels
constexpr double centerSpacing = 1.5;         // of half the picture's longer side
constexpr double edgeShareOfStrongest = 0.7;  // edge threshold, of the strongest gradient
constexpr int edgePixelsPerVote = 1000;       // each such count raises the votes needed by one
constexpr int leastVotes = 10;
constexpr int shortSidesToLeastRadius = 50;   // the least radius is this part of the shorter side
constexpr int longSidesToGreatestRadius = 2;  // the greatest one is this part of the longer side

/// Candidates must be larger than this, in pixels: smaller circles are holes and screws.
constexpr double radiusOfNoise = 20.0;

/// A gray copy without its noise. As the copy is the function's own, a view into a larger picture is not blurred with
/// what lies around it.
cv::Mat BlurredGray(const cv::Mat& image) {
    const cv::Mat gray = UtilityFunctions::toGrayImageStrictly(image);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(gray, mean, deviation);
    cv::Mat blurred;
    cv::GaussianBlur(gray, blurred, deviation[0] > busyDeviation ? strongBlur : weakBlur, sigmaOfWindow, sigmaOfWindow,
                     cv::BORDER_DEFAULT);
    return blurred;
}

double StrongestGradient(const cv::Mat& gray) {
    cv::Mat dx;
    cv::Mat dy;
    cv::Sobel(gray, dx, CV_32F, 1, 0, sobelWindow, sobelScale, sobelDelta, cv::BORDER_DEFAULT);
    cv::Sobel(gray, dy, CV_32F, 0, 1, sobelWindow, sobelScale, sobelDelta, cv::BORDER_DEFAULT);
    cv::Mat strength;
    cv::magnitude(dx, dy, strength);
    double strongest = 0.0;
    cv::minMaxLoc(strength, nullptr, &strongest);
    return strongest;
}

int CountEdgePixels(const cv::Mat& gray) {
    cv::Mat edges;
    cv::Canny(gray, edges, edgeFollowed, edgeStarted, sobelWindow, exactGradient);
    return cv::countNonZero(edges);
}

std::vector<cv::Vec3f> HoughCircles(const cv::Mat& gray, double strongestGradient, int edgePixels) {
    const int longer = std::max(gray.rows, gray.cols);
    const int shorter = std::min(gray.rows, gray.cols);
    const int halfOfLonger = longer / 2;
    const auto minDist = static_cast<int>(halfOfLonger * centerSpacing);
    const auto edgeThreshold = static_cast<int>(strongestGradient * edgeShareOfStrongest);
    const int votes = edgePixels / edgePixelsPerVote + leastVotes;
    std::vector<cv::Vec3f> circles;
    cv::HoughCircles(gray, circles, cv::HOUGH_GRADIENT, accumulatorCell, minDist, edgeThreshold, votes,
                     shorter / shortSidesToLeastRadius, longer / longSidesToGreatestRadius);
    return circles;
}

/// Entirely in float.
float Distance(const cv::Point2f& a, const cv::Point2f& b) {
    const float dx = a.x - b.x;
    const float dy = a.y - b.y;
    return std::sqrt(dx * dx + dy * dy);
}

}  // namespace

void DetectCircleCandidates(const cv::Mat& image, std::vector<cv::Point2f>& centers, std::vector<double>& radii) {
    centers.clear();
    radii.clear();
    const cv::Mat gray = BlurredGray(image);
    const double strongestGradient = StrongestGradient(gray);
    const int edgePixels = CountEdgePixels(gray);
    for (const cv::Vec3f& circle : HoughCircles(gray, strongestGradient, edgePixels)) {
        centers.emplace_back(circle[0], circle[1]);
        radii.push_back(circle[2]);
    }
}

std::optional<std::size_t> NearestCandidate(const cv::Size& picture, const std::vector<cv::Point2f>& centers,
                                            const std::vector<double>& radii) {
    const cv::Point wholePixels(picture.width / 2, picture.height / 2);
    const cv::Point2f middle(wholePixels);
    auto best = static_cast<float>(std::max(picture.width, picture.height));
    std::optional<std::size_t> nearest;
    for (std::size_t i = 0; i < centers.size(); ++i) {
        if (!(radii[i] > radiusOfNoise)) continue;
        const float distance = Distance(centers[i], middle);
        if (!(distance < best)) continue;
        best = distance;
        nearest = i;
    }
    return nearest;
}

}  // namespace Quorvane::CameraCalibration
