#include "calibration/CircleRefinement.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "TruncateToInt.h"
#include "geometry/CircleFit.h"

namespace Quorvane::CameraCalibration {

namespace {

/// How far the window reaches from the centre to each side, in radii.
constexpr double windowReach = 2.5;

const cv::Size noiseWindow(5, 5);
constexpr double sigmaOfWindow = 0.0;  // OpenCV derives it from the window's size
constexpr double otsuChoosesLevel = 0.0;
constexpr double white = 255.0;

const cv::Size mendingWindow(3, 3);
constexpr int closings = 2;
constexpr int openings = 1;
const cv::Point middleOfWindow(-1, -1);

/// Area in square pixels below which a shape is a speck.
constexpr double leastArea = 10.0;
/// 4 pi area / perimeter^2: 1 for a circle, 0.785 for a square.
constexpr double leastCircularity = 0.7;

constexpr double scoreOfEnclosingCircle = 0.5;

using Contour = std::vector<cv::Point>;

/// Empty where the circle's surroundings do not meet the picture.
cv::Rect WindowAround(double x, double y, double r, const cv::Size& picture) {
    const int half = TruncateToInt(r * windowReach);
    const int left = std::max(TruncateToInt(x - half), 0);
    const int top = std::max(TruncateToInt(y - half), 0);
    const int right = std::min(TruncateToInt(half + x), picture.width);
    const int bottom = std::min(TruncateToInt(half + y), picture.height);
    if (right <= left || bottom <= top) return {};
    return {left, top, right - left, bottom - top};
}

/// A gray copy, so that filters don't see what lies around the window. Unlike `toGrayImage` it refuses any count of
/// channels but 1, 3 and 4.
cv::Mat GrayCopy(const cv::Mat& window) {
    if (window.channels() == 1) return window.clone();
    cv::Mat gray;
    cv::cvtColor(window, gray, cv::COLOR_BGR2GRAY);
    return gray;
}

/// White where the picture is dark.
cv::Mat DarkShapes(const cv::Mat& window) {
    cv::Mat gray = GrayCopy(window);
    cv::GaussianBlur(gray, gray, noiseWindow, sigmaOfWindow, sigmaOfWindow, cv::BORDER_DEFAULT);
    cv::Mat shapes;
    cv::threshold(gray, shapes, otsuChoosesLevel, white, cv::THRESH_BINARY_INV + cv::THRESH_OTSU);
    const cv::Mat kernel = cv::getStructuringElement(cv::MORPH_ELLIPSE, mendingWindow);
    cv::morphologyEx(shapes, shapes, cv::MORPH_CLOSE, kernel, middleOfWindow, closings, cv::BORDER_CONSTANT);
    cv::morphologyEx(shapes, shapes, cv::MORPH_OPEN, kernel, middleOfWindow, openings, cv::BORDER_CONSTANT);
    return shapes;
}

bool IsRound(const Contour& contour, double area) {
    const double perimeter = cv::arcLength(contour, true);
    return 4.0 * CV_PI * area / (perimeter * perimeter) > leastCircularity;
}

/// The points of the largest round outline; none if there is no such outline.
std::vector<cv::Point2f> LargestRoundOutline(const cv::Mat& shapes) {
    std::vector<Contour> contours;
    cv::findContours(shapes, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    const Contour* largest = nullptr;
    double largestArea = 0.0;
    for (const Contour& contour : contours) {
        const double area = cv::contourArea(contour);
        if (!(area >= leastArea) || area <= largestArea || !IsRound(contour, area)) continue;
        largest = &contour;
        largestArea = area;
    }
    return largest == nullptr ? std::vector<cv::Point2f>() : std::vector<cv::Point2f>(largest->begin(), largest->end());
}

}  // namespace

void FitOrEnclose(const std::vector<cv::Point2f>& points, cv::Point2f& center, double& radius, double& score) {
    if (UtilityFunctions::fitCircleAlgebraic(points, center, radius, score)) return;
    float enclosingRadius = 0.0f;
    cv::minEnclosingCircle(points, center, enclosingRadius);
    radius = enclosingRadius;
    score = scoreOfEnclosingCircle;
}

void RefineCircle(const cv::Mat& image, double x, double y, double r, double& refinedX, double& refinedY,
                  double& refinedRadius, double& score) {
    refinedX = x;
    refinedY = y;
    refinedRadius = r;
    score = 0.0;
    const cv::Rect window = WindowAround(x, y, r, image.size());
    if (window.empty()) return;
    const std::vector<cv::Point2f> outline = LargestRoundOutline(DarkShapes(image(window)));
    if (outline.empty()) return;
    cv::Point2f center;
    FitOrEnclose(outline, center, refinedRadius, score);
    refinedX = static_cast<float>(window.x) + center.x;
    refinedY = static_cast<float>(window.y) + center.y;
}

}  // namespace Quorvane::CameraCalibration
