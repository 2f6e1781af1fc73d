#include "algorithms/CircleMarks.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "TruncateToInt.h"

namespace Quorvane {

namespace {

// Cleaning the picture.

/// Sigma of the blur in pixels, whatever the size of its kernel.
constexpr double blurSigma = 2.0;
/// Kernels of blur and opening are a third of the radius wide: wide enough to clean, narrow enough to keep the mark.
constexpr int kernelsPerRadius = 3;
constexpr int leastKernel = 3;
/// The bell of the blur is zero, as a double, from 78 pixels on: a wider kernel adds zeros alone.
constexpr int widestBlur = 161;
/// Marks of a smaller radius, in pixels, lose so much to the blur that their edges are sharpened again.
constexpr double sharpenBelowRadius = 9.0;

// The Hough transform.

/// Side of a cell of the accumulator in pixels.
constexpr double accumulatorRatio = 2.0;
/// Upper threshold of its edge detector, in gray levels of the Sobel gradient.
constexpr double edgeThreshold = 50.0;
/// Edge pixels that a centre needs.
constexpr double centreThreshold = 25.0;
/// Least radius in pixels that it looks for.
constexpr double leastHoughRadius = 3.0;

// The score.

constexpr double white = 255.0;
/// Contrast of the stretched patch: levels below 50 become 0, those above 200 become 255. The factor is a float.
constexpr double contrastFactor = 1.7f;
constexpr double contrastOffset = -85.0;
/// The rings are a fifth of the radius thick, at least 3 pixels.
constexpr int thicknessesPerRadius = 5;
constexpr int leastThickness = 3;
/// Contrast in gray levels that earns half of its score; the other half is earned by the levels up to 254.
constexpr float goodContrast = 60.0f;
constexpr float furtherContrast = 194.0f;
/// Least difference of perimeters, in pixels, so that no shape counts as perfect.
constexpr double leastMiss = 0.001;
constexpr double contrastWeight = 0.3;
constexpr double shapeWeight = 0.7;

/// One channel of `image`, as pixels of its own; empty for other than 1, 3 or 4 channels.
cv::Mat GrayCopy(const cv::Mat& image) {
    CV_Assert(image.dims <= 2);
    cv::Mat gray;
    if (image.channels() == 3) cv::cvtColor(image, gray, cv::COLOR_BGR2GRAY);
    if (image.channels() == 4) cv::cvtColor(image, gray, cv::COLOR_BGRA2GRAY);
    if (image.channels() == 1) gray = image.clone();
    return gray;
}

void Blur(cv::Mat& gray, double radius) {
    int side = TruncateToInt(radius / static_cast<double>(kernelsPerRadius));
    if (side % 2 == 0) side = TruncateToInt(radius / static_cast<double>(kernelsPerRadius) + 1.0);
    side = std::clamp(side, leastKernel, widestBlur);
    cv::GaussianBlur(gray, gray, cv::Size(side, side), blurSigma, blurSigma, cv::BORDER_DEFAULT);
}

void SharpenIfSmall(cv::Mat& gray, double radius) {
    if (!(radius < sharpenBelowRadius)) return;
    const cv::Matx33f kernel(0.0f, -1.0f, 0.0f, -1.0f, 5.0f, -1.0f, 0.0f, -1.0f, 0.0f);
    cv::filter2D(gray, gray, -1, kernel, cv::Point(-1, -1), 0.0, cv::BORDER_DEFAULT);
}

/// Whether the disc of an opening holds the whole image wherever in the image its middle lies.
bool HoldsAll(int side, const cv::Mat& image) {
    constexpr double rounding = 2.0;  // pixels
    const int reach = side / 2;
    return reach > std::hypot(image.cols, image.rows) + rounding;
}

/// Removes bright specks that are small against the mark. Unlike that of the blur, this kernel may be even.
void Open(cv::Mat& gray, double radius) {
    const int side = std::max(TruncateToInt(radius) / kernelsPerRadius, leastKernel);
    if (!gray.empty() && HoldsAll(side, gray)) {
        // Its least value is all that such an opening leaves of an image, and a disc of any size needs no memory.
        double least = 0.0;
        cv::minMaxLoc(gray, &least);
        gray.setTo(least);
        return;
    }
    const cv::Mat kernel = cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(side, side));
    cv::morphologyEx(gray, gray, cv::MORPH_OPEN, kernel, cv::Point(-1, -1), 1, cv::BORDER_CONSTANT,
                     cv::morphologyDefaultBorderValue());
}

/// No two pixels of the image lie this far apart, in pixels, not even by the Hough transform's rounded directions. It
/// keeps a counter for every fraction of a pixel up to its greatest radius, so larger ones ask for memory alone.
int RadiusBeyond(const cv::Mat& image) {
    constexpr double factor = 2.0;
    constexpr double margin = 16.0;
    return cv::saturate_cast<int>(factor * std::hypot(image.cols, image.rows) + margin);
}

std::vector<cv::Vec3f> Propose(const cv::Mat& gray, double radius, double tolerance) {
    const int beyond = RadiusBeyond(gray);
    const int leastRadius = std::min(TruncateToInt(std::max(leastHoughRadius, radius - tolerance)), beyond);
    const int greatestRadius = std::min(TruncateToInt(radius + tolerance), beyond);
    std::vector<cv::Vec3f> candidates;
    cv::HoughCircles(gray, candidates, cv::HOUGH_GRADIENT, accumulatorRatio, radius, edgeThreshold, centreThreshold,
                     leastRadius, greatestRadius);
    return candidates;
}

/// A candidate in whole pixels, with the part of the image around it.
struct Surroundings {
    Surroundings(const cv::Vec3f& candidate, const cv::Size& image)
        : centre(cvRound(candidate[0]), cvRound(candidate[1])), radius(cvRound(candidate[2])) {
        const int reach = radius + radius / 2;
        patch.x = std::max(centre.x - reach, 0);
        patch.y = std::max(centre.y - reach, 0);
        // Deliberately from the corner before it was limited: near the left and top edge the patch keeps its size.
        patch.width = std::min(2 * reach, image.width - centre.x + reach);
        patch.height = std::min(2 * reach, image.height - centre.y + reach);
    }

    cv::Point centre;
    int radius;
    cv::Rect patch;
};

void Stretch(cv::Mat& patch) {
    double least = 0.0;
    double most = 0.0;
    cv::minMaxLoc(patch, &least, &most);
    // One expression, so that it is rounded and saturated once.
    if (least != most) patch = (patch - least) * (white / (most - least));
}

void RaiseContrast(cv::Mat& patch) { patch.convertTo(patch, -1, contrastFactor, contrastOffset); }

cv::Mat RingMask(const cv::Size& size, cv::Point centre, int radius, int thickness) {
    cv::Mat mask = cv::Mat::zeros(size, CV_8UC1);
    cv::circle(mask, centre, radius, cv::Scalar(white), thickness, cv::LINE_8);
    return mask;
}

/// The pixels on the mark's side of the ring's mean: the brighter ones of a bright mark on a dark ground, otherwise the
/// darker ones.
cv::Mat Separate(const cv::Mat& patch, double ringMean, double outerMean) {
    const bool bright = ringMean > outerMean;
    cv::Mat region;
    cv::inRange(patch, cv::Scalar(bright ? ringMean : 0.0), cv::Scalar(bright ? white : ringMean), region);
    return region;
}

/// Roundness and circumference of the largest shape in the mask; 0 if there is none that has an area.
double ShapeScore(const cv::Mat& mask, int radius) {
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(mask, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    const std::vector<cv::Point>* largest = nullptr;
    double area = 0.0;
    for (const auto& contour : contours) {
        const double candidate = cv::contourArea(contour);
        if (candidate > area) {
            area = candidate;
            largest = &contour;
        }
    }
    if (largest == nullptr) return 0.0;

    const double perimeter = cv::arcLength(*largest, true);
    const double roundness = perimeter == 0.0 ? 0.0 : 4.0 * CV_PI * area / (perimeter * perimeter);
    const double expected = radius * (2.0 * CV_PI);
    const double miss = std::min(std::max(std::abs(perimeter - expected), leastMiss) / expected, 1.0);
    return (roundness + 1.0 - miss) * 0.5;
}

/// 0 for none, 0.5 for 60 gray levels, 1 for 254.
float ContrastScore(float contrast) {
    if (!(contrast > 0.0f)) return 0.0f;
    const float score = contrast <= goodContrast ? contrast / goodContrast * 0.5f
                                                 : (contrast - goodContrast) / furtherContrast * 0.5f + 0.5f;
    return std::min(std::max(score, 0.0f), 1.0f);
}

}  // namespace

void FindCircleMarks(const cv::Mat& source, double radius, double tolerance, double minSimilarity,
                     std::vector<cv::Point2f>& centres, std::vector<double>& radii, std::vector<double>& similarities) {
    const cv::Mat working = StretchRange(source, 0.0f, 255.0f);
    cv::Mat gray = GrayCopy(working);
    Blur(gray, radius);
    SharpenIfSmall(gray, radius);
    Open(gray, radius);
    for (const cv::Vec3f& candidate : Propose(gray, radius, tolerance)) {
        // The limits of the Hough transform were whole pixels; these are not.
        const double found = candidate[2];
        if (found < radius - tolerance || found > radius + tolerance) continue;
        // A score above 1 is not known to be reachable; the limit is a guard.
        const double score = std::min(1.0, static_cast<double>(CircleMarkScore(gray, candidate)));
        if (score >= minSimilarity) {
            centres.emplace_back(candidate[0], candidate[1]);
            radii.push_back(found);
            similarities.push_back(score);
        }
    }
}

float CircleMarkScore(const cv::Mat& gray, const cv::Vec3f& candidate) {
    if (gray.channels() != 1 && gray.channels() != 3 && gray.channels() != 4) return 0.0f;
    const Surroundings around(candidate, gray.size());
    cv::Mat patch = GrayCopy(gray(around.patch));
    Stretch(patch);
    RaiseContrast(patch);

    const cv::Point centre = around.centre - around.patch.tl();
    const int thickness = std::max(around.radius / thicknessesPerRadius, leastThickness);
    const cv::Mat inner = RingMask(patch.size(), centre, around.radius, thickness);
    const cv::Mat outer = RingMask(patch.size(), centre, around.radius + thickness, thickness);
    // The outer ring alone is empty for a radius of 1; the search, whose radii begin at 3, is not known to get here.
    if (cv::countNonZero(inner) == 0 || cv::countNonZero(outer) == 0) return 0.0f;
    const double ringMean = cv::mean(patch, inner)[0];
    const double outerMean = cv::mean(patch, outer)[0];

    const double shape = ShapeScore(Separate(patch, ringMean, outerMean), around.radius);
    const float contrast = ContrastScore(static_cast<float>(std::abs(ringMean - outerMean)));
    return static_cast<float>(static_cast<double>(contrast) * contrastWeight + shape * shapeWeight);
}

cv::Mat StretchRange(const cv::Mat& image, float low, float high) {
    cv::Mat stretched;
    if (!(low < high)) return stretched;
    const float scale = 255.0f / (high - low);
    image.convertTo(stretched, -1, static_cast<double>(scale), static_cast<double>(-scale * low));
    return stretched;
}

}  // namespace Quorvane
