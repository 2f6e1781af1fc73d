// The measurements, operators and comparisons on every picture.

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "geometry/UtilityFunctions.h"
#include "tests/robustness/PictureMatrix.h"

namespace Quorvane::Robustness {
namespace {

using namespace UtilityFunctions;

const cv::Point2f middle(15.0f, 11.0f);

/// Whether a measurement reads this picture at all: others have no edges.
bool IsMeasured(const HostPicture& picture) {
    const bool isRead = picture.depth == CV_8U || picture.depth == CV_16U || picture.depth == CV_32F ||
                        (picture.depth == CV_64F && picture.channels == 1);
    return isRead && (picture.channels == 1 || IsColour(picture));
}

/// Colour pictures that cannot become gray are OpenCV's to refuse.
bool IsRefused(const HostPicture& picture) { return IsColour(picture) && !picture.IsEmpty() && !HasGrayForm(picture); }

struct Outcomes {
    const char* onTheStep;
    const char* withOneNotNumber;   ///< Calipers beside it find the edge. An infinity makes not-a-numbers, too.
    const char* withOneHugeNumber;  ///< Which is the strongest edge there is.
    const char* elsewhere;
};

std::string MeasurementTold(const HostPicture& picture, const Outcomes& told) {
    using Shape = HostPicture::Shape;
    if (IsRefused(picture)) return "cv::Exception";
    if (!IsMeasured(picture)) return told.elsewhere;
    if (picture.HasStep()) return told.onTheStep;
    if (picture.shape == Shape::OneNotNumber || picture.shape == Shape::OneInfinity) return told.withOneNotNumber;
    return picture.shape == Shape::OneHugeNumber ? told.withOneHugeNumber : told.elsewhere;
}

std::string TryLine(const cv::Mat& picture) {
    Line line(2.0f, 5.0f);
    MeasureLine(picture, middle, 20.0, 16.0, line, EdgePolarity::Positive, SearchDirection::LeftToRight, 1.0, 30.0,
                2.0);
    if (line.toVec4f() == Line().toVec4f()) return "the default line";
    return std::abs(line.linePoint.x - 14.5f) < 0.1f && std::abs(line.direction.x) < 0.01f ? "the edge"
                                                                                           : "another line";
}

std::string TryCircle(const cv::Mat& picture) {
    cv::Point2f center(-5.0f, -6.0f);
    double radius = -7.0;
    double score = -8.0;
    MeasureCircle(picture, {10.0f, 11.0f}, 9.0, center, radius, score, EdgePolarity::Positive, SearchDirection::Outward,
                  1.0, 30.0, 10.0);
    const bool untouched = center == cv::Point2f(-5.0f, -6.0f) && radius == -7.0 && score == -8.0;
    return untouched ? "untouched outputs" : "a circle";
}

std::string TryCurve(const cv::Mat& picture) {
    Curve curve;
    curve.meanFitError = -3.0;
    curve.curvePoints = {{1.0f, 1.0f}};
    MeasureCurve(picture, middle, 20.0, 16.0, curve, EdgePolarity::Positive, SearchDirection::LeftToRight, 1.0, 30.0,
                 2.0, 0);
    if (!curve.isValid()) return curve.meanFitError == -3.0 ? "no curve" : "a touched error";
    return curve.curvePoints.size() >= 40 ? "a curve" : "a short curve";
}

std::string TrySketch(const cv::Mat& picture) {
    const cv::Mat before(1, 1, CV_8UC1, cv::Scalar(3));
    cv::Mat result = before;
    ApplySketchFilter(picture, result, 60);
    if (result.data == before.data) return "untouched result";
    return result.type() == CV_8UC1 && result.size() == picture.size() ? "a sketch" : "a wrong picture";
}

std::string SketchTold(const HostPicture& picture) {
    if (picture.channels == 2 || picture.channels == 5) return "untouched result";
    if (picture.IsEmpty() || picture.depth != CV_8U) return "cv::Exception";
    return "a sketch";
}

std::string TryHoles(const cv::Mat& picture) {
    const cv::Mat filled = fillHolesMorphologicalEnhanced(picture, 6.0, 20, 2, 1);
    if (filled.empty()) return "an empty result";
    return filled.size() == picture.size() && filled.type() == picture.type() ? "a filled picture" : "a wrong picture";
}

/// Operators that compare 8-bit colours.
bool HasLabForm(const HostPicture& picture) { return IsColour(picture) && picture.depth == CV_8U; }

std::string TryDominantColour(const cv::Mat& picture, const std::vector<cv::Point>& contour) {
    const cv::Point point = findDominantLABColorPointInContour(picture, contour);
    if (point == cv::Point(-1, -1)) return "nowhere";
    return cv::Rect({0, 0}, picture.size()).contains(point) ? "a pixel" : "a pixel outside";
}

std::string TryRegions(const cv::Mat& picture) {
    std::vector<cv::Mat> regions(1);
    std::vector<cv::Point2f> centers(1);
    ThresholdAndFindAllRegionCenter(picture, 60, 200, regions, centers);
    if (regions.size() != centers.size()) return "unequal lists";
    return regions.size() > 1 ? "regions" : "untouched lists";
}

/// Whether some pixel lies in the band of the call above.
std::string RegionsTold(const HostPicture& picture) {
    if (picture.IsEmpty() || picture.channels == 2 || picture.channels == 5) return "untouched lists";
    return IsRefused(picture) || picture.depth == CV_16F ? "cv::Exception" : "regions";
}

std::string Changed(bool value) { return value ? "changed" : "not changed"; }

std::string GrayDifferenceToItselfTold(const HostPicture& picture) {
    if (picture.IsEmpty()) return "not changed";
    if (picture.channels == 2 || picture.channels == 5) return "cv::Exception";
    if (IsRefused(picture) || picture.depth == CV_16F) return "cv::Exception";
    // What is not a number differs from itself, and so do infinities from each other.
    return picture.HasNotNumbers() ? "changed" : "not changed";
}

std::string HashTold(const HostPicture& picture, const char* ofOtherChannels) {
    if (picture.channels == 2 || picture.channels == 5) return ofOtherChannels;
    if (picture.IsEmpty()) return "cv::Exception";
    const bool isResized = picture.depth != CV_8S && picture.depth != CV_32S && picture.depth != CV_16F;
    if (!isResized || IsRefused(picture)) return "cv::Exception";
    return "not changed";
}

std::string TryCut(const cv::Mat& picture, cv::Point2f center, int side, bool keepImageSize) {
    const cv::Mat cut = CutImageBasePoint(picture, center, side, side, keepImageSize);
    if (cut.empty()) return "an empty result";
    const cv::Size size = keepImageSize ? picture.size() : cv::Size(side, side);
    return cut.size() == size && cut.type() == picture.type() && cut.data != picture.data ? "a crop" : "a wrong crop";
}

/// Four pixels about (5, 5) begin at (3, 3). A picture that ends there has none of them, a smaller one has less.
std::string CutTold(const HostPicture& picture, bool keepImageSize) {
    if (picture.IsEmpty()) return "an empty result";
    if (picture.shape == HostPicture::Shape::ThreeByThree) return keepImageSize ? "a crop" : "an empty result";
    return picture.image.rows > 6 && picture.image.cols > 6 ? "a crop" : "cv::Exception";
}

TEST(PictureMatrix, Measurements) {
    TryOnAllPictures({
        {"MeasureLine", TryLine,
         [](const HostPicture& p) {
             return MeasurementTold(p, {"the edge", "the edge", "another line", "the default line"});
         }},
        {"MeasureCircle", TryCircle,
         [](const HostPicture& p) {
             return MeasurementTold(p, {"a circle", "untouched outputs", "a circle", "untouched outputs"});
         }},
        {"MeasureCurve", TryCurve,
         [](const HostPicture& p) {
             return MeasurementTold(p, {"a curve", "a curve", "a curve", "no curve"});
         }},
    });
}

TEST(PictureMatrix, Operators) {
    const std::vector<cv::Point> square{{0, 0}, {9, 0}, {9, 9}, {0, 9}};
    const std::vector<cv::Point> beyond{{-9, -9}, {-5, -9}, {-5, -5}};
    TryOnAllPictures({
        {"ApplySketchFilter", TrySketch, SketchTold},
        {"fillHolesMorphologicalEnhanced", TryHoles,
         [](const HostPicture& p) -> std::string {
             if (p.IsEmpty()) return "an empty result";
             return HasLabForm(p) ? "a filled picture" : "cv::Exception";
         }},
        {"findDominantLABColorPointInContour", [&](const cv::Mat& p) { return TryDominantColour(p, square); },
         [](const HostPicture& p) -> std::string {
             if (p.IsEmpty()) return "nowhere";
             return HasLabForm(p) ? "a pixel" : "cv::Exception";
         }},
        {"findDominantLABColorPointInContour, no contour", [](const cv::Mat& p) { return TryDominantColour(p, {}); },
         [](const HostPicture&) { return "nowhere"; }},
        {"findDominantLABColorPointInContour, beyond", [&](const cv::Mat& p) { return TryDominantColour(p, beyond); },
         [](const HostPicture& p) { return p.IsEmpty() || HasLabForm(p) ? "nowhere" : "cv::Exception"; }},
        {"ThresholdAndFindAllRegionCenter", TryRegions, RegionsTold},
        {"CutImageBasePoint",
         [](const cv::Mat& p) {
             return TryCut(p, {5.0f, 5.0f}, 4, false);
         },
         [](const HostPicture& p) { return CutTold(p, false); }},
        {"CutImageBasePoint, size kept",
         [](const cv::Mat& p) {
             return TryCut(p, {5.0f, 5.0f}, 4, true);
         },
         [](const HostPicture& p) { return CutTold(p, true); }},
        {"CutImageBasePoint, one pixel",
         [](const cv::Mat& p) {
             return TryCut(p, {0.5f, 0.5f}, 1, false);
         },
         [](const HostPicture& p) -> std::string {
             if (p.IsEmpty()) return "an empty result";
             return "a crop";
         }},
        {"CalculateExpansionHomography",
         [](const cv::Mat& p) {
             const cv::Mat expanded = CalculateExpansionHomography(p, 2.0);
             return std::string(expanded.empty() ? "an empty result" : "a homography");
         },
         [](const HostPicture& p) {
             return p.shape == HostPicture::Shape::ThreeByThree ? "a homography" : "an empty result";
         }},
    });
}

TEST(PictureMatrix, Comparisons) {
    const cv::Mat other(23, 31, CV_8UC1, cv::Scalar(200));
    TryOnAllPictures({
        {"IsMatChanged_GrayDiff, to itself",
         [](const cv::Mat& p) { return Changed(IsMatChanged_GrayDiff(p, p.clone())); }, GrayDifferenceToItselfTold},
        {"IsMatChanged_GrayDiff, to another",
         [&](const cv::Mat& p) { return Changed(IsMatChanged_GrayDiff(p, other)); },
         [](const HostPicture& p) {
             const bool fits = p.HasStep() && p.depth == CV_8U && (p.channels == 1 || IsColour(p));
             // OpenCV takes a double, or four in a column, for the value of all pixels.
             const bool isNumber = p.Has(CV_64F, 1) && (p.shape == HostPicture::Shape::OnePixel ||
                                                        p.shape == HostPicture::Shape::FourByOne);
             return p.IsEmpty() || fits || isNumber ? "changed" : "cv::Exception";
         }},
        {"IsMatChanged_GrayDiff, to none", [](const cv::Mat& p) { return Changed(IsMatChanged_GrayDiff(p, {})); },
         [](const HostPicture& p) { return p.IsEmpty() ? "not changed" : "changed"; }},
        {"IsMatChanged_HammingDistance, to itself",
         [](const cv::Mat& p) { return Changed(IsMatChanged_HammingDistance(p, p, 0)); },
         [](const HostPicture& p) { return HashTold(p, "not changed"); }},
        {"IsMatChanged_HammingDistance, from flat gray",
         [&](const cv::Mat& p) { return Changed(IsMatChanged_HammingDistance(other, p, 64)); },
         [](const HostPicture& p) { return HashTold(p, "not changed"); }},
        {"IsMatChanged_HammingDistance, to flat gray",
         [&](const cv::Mat& p) { return Changed(IsMatChanged_HammingDistance(p, other, -1)); },
         [](const HostPicture& p) {
             // A distance is at least 0, but a picture without a hash has the distance -1.
             const std::string told = HashTold(p, "no hash");
             return told == "no hash" ? "not changed" : told == "not changed" ? "changed" : told;
         }},
    });
}

}  // namespace
}  // namespace Quorvane::Robustness
