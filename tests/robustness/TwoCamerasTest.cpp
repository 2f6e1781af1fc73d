// What joins two cameras, and the scale from a circle, on every picture and list.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/LastError.h"
#include "tests/robustness/NumberMatrix.h"
#include "tests/robustness/OutcomeTable.h"
#include "tests/robustness/PictureMatrix.h"

namespace Quorvane::Robustness {
namespace {

using namespace CameraCalibration;
using Shape = HostPicture::Shape;
using Points = std::vector<cv::Point2f>;

constexpr const char* refused = "false: an exception's text";
constexpr const char* noPicture = "false: Could not open or find the images!";
const ImageDirFlags upright(3, false, false);

template <typename Call>
std::string Told(const char* function, const Call& call) {
    SetLastError("");
    if (call()) return "true";
    const std::string text = GetLastError();
    return text.rfind("[" + QualifiedName(function) + "]", 0) == 0 ? refused : "false: " + text;
}

std::string TryMatching(const cv::Mat& first, const cv::Mat& second) {
    Points points1(1);
    Points points2(2);
    const cv::Rect everywhere(0, 0, 1000, 1000);
    const std::string told = Told("CalibrationMatchPointsForDualCam", [&] {
        return CalibrationMatchPointsForDualCam(first, upright, everywhere, second, ImageDirFlags(0, true, true),
                                                everywhere, 0.7, 3.0, 0.3, points1, points2);
    });
    return points1.empty() && points2.empty() ? told : "lists that were not cleared";
}

std::string TryMatchesImage(const cv::Mat& picture) {
    cv::Mat drawn;
    const std::string told = Told("CreateMatchesImage", [&] {
        return CreateMatchesImage(picture, upright, picture, ImageDirFlags(1, true, false), {{0.0f, 0.0f}},
                                  {{1.0f, 1.0f}}, drawn);
    });
    return told;
}

std::string TryBlending(const cv::Mat& picture) {
    cv::Mat blended;
    double seam = -7.0;
    const cv::Mat shift = (cv::Mat_<double>(3, 3) << 1, 0, -4, 0, 1, 0, 0, 0, 1);
    return Told("DoBlendingImageForDualCam", [&] {
        return DoBlendingImageForDualCam(picture, upright, picture, upright, 1.0, 1.0, shift, seam, blended);
    });
}

std::string TryScale(const cv::Mat& picture) {
    cv::Point2f center(-5.0f, -5.0f);
    double radius = -6.0;
    double scale = -7.0;
    if (CalScalePixToMmUseCircle(picture, 8.0, 0.0, center, radius, scale)) return "true";
    const bool untouched = center == cv::Point2f(-5.0f, -5.0f) && radius == -6.0;
    return untouched && scale == -1.0 ? "false" : "false, with changed outputs";
}

std::string TryCross(const cv::Mat& picture) {
    cv::Point2f center(-5.0f, -5.0f);
    double radius = -6.0;
    if (FindCircleCross(picture, center, radius)) return "true";
    return center == cv::Point2f(-5.0f, -5.0f) && radius == -6.0 ? "false" : "false, with changed outputs";
}

/// The pictures show no feature, so a call that comes to its end finds no pair. The search for features needs some rows
/// and columns, and numbers.
std::string MatchingTold(const HostPicture& picture) {
    if (picture.IsEmpty()) return noPicture;
    const bool isSearched = picture.HasStep() || picture.shape == Shape::ThreeByThree;
    return isSearched && IsColour(picture) && HasGrayForm(picture) ? "true" : refused;
}

/// Pictures without a circle, and without any contrast: the blur leaves none in four pixels.
std::string CircleTold(const HostPicture& picture) {
    if (picture.channels == 2 || picture.channels == 5) return "false";
    if (picture.IsEmpty() || picture.depth != CV_8U || picture.shape == Shape::OnePixel ||
        picture.shape == Shape::FourByOne) {
        return "cv::Exception";
    }
    return "false";
}

TEST(PictureMatrix, TwoCameras) {
    TryOnAllPictures({
        {"CalibrationMatchPointsForDualCam", [](const cv::Mat& p) { return TryMatching(p, p); }, MatchingTold},
        {"CalibrationMatchPointsForDualCam, second picture",
         [](const cv::Mat& p) { return TryMatching(cv::Mat(9, 9, CV_8UC3, cv::Scalar(7)), p); }, MatchingTold},
        {"CreateMatchesImage", TryMatchesImage,
         [](const HostPicture& p) -> std::string {
             if (p.IsEmpty()) return noPicture;
             return p.depth == CV_8U && (p.channels == 1 || IsColour(p)) ? "true" : refused;
         }},
        {"DoBlendingImageForDualCam", TryBlending,
         [](const HostPicture& p) -> std::string {
             if (p.IsEmpty()) return noPicture;
             // The seam needs ten columns on each side. A picture of up to 14 columns is laid over the other without.
             const bool fits = p.HasStep() || p.image.cols <= 14;
             return p.Has(CV_8U, 3) && fits && !p.IsLong() ? "true" : refused;
         }},
        {"CalScalePixToMmUseCircle", TryScale, CircleTold},
        {"FindCircleCross", TryCross, CircleTold},
        {"TransformPoint",
         [](const cv::Mat& p) {
             cv::Point2f transformed(-9.0f, -9.0f);
             const std::string told = Told("TransformPoint", [&] {
                 return TransformPoint(p, {1.0f, 2.0f}, transformed);
             });
             return told == "true" || transformed == cv::Point2f(-9.0f, -9.0f) ? told : "a touched point";
         },
         [](const HostPicture& p) -> std::string {
             if (p.shape != Shape::ThreeByThree) return "false: ";
             return p.channels == 1 ? "true" : refused;
         }},
    });
}

TEST(NumberMatrix, TwoCameras) {
    const cv::Mat picture(40, 60, CV_8UC3, cv::Scalar(9, 80, 200));
    const cv::Mat nothing = cv::Mat::eye(3, 3, CV_64F);
    TryWithAllIntegers({
        {"CalibrationMatchPointsForDualCam, rectangle",
         [&](int v) {
             Points points1;
             Points points2;
             return Told("CalibrationMatchPointsForDualCam", [&] {
                 return CalibrationMatchPointsForDualCam(picture, ImageDirFlags(v, true, false), {v, v, v, v}, picture,
                                                         upright, {0, v, 30, 30}, 0.7, 3.0, 0.3, points1, points2);
             });
         },
         // From 0 on, and not behind the last row.
         [](int v) { return v >= 0 && v < 40 ? "true" : refused; }},
        {"CreateHomography, iterations",
         [](int v) {
             cv::Mat homography;
             double error = 0.0;
             const Points points{{0, 0}, {9, 0}, {0, 9}, {9, 9}, {4, 5}};
             return Told("CreateHomography",
                         [&] { return CreateHomography(points, points, homography, error, 3.0, v, 0.99); });
         },
         [](int) { return "true"; }},
    });
    TryWithAllNumbers({
        {"DoBlendingImageForDualCam, shift",
         [&](double v) {
             cv::Mat shift = nothing.clone();
             shift.at<double>(0, 2) = -v;
             shift.at<double>(1, 2) = v;
             cv::Mat blended;
             double seam = 0.0;
             return Told("DoBlendingImageForDualCam", [&] {
                 return DoBlendingImageForDualCam(picture, upright, picture, upright, 1.0, 1.0, shift, seam, blended);
             });
         },
         [](double v) { return IsEveryday(v) ? "true" : refused; }},
        {"CalScalePixToMmUseCircle, true radius",
         [](double v) {
             cv::Point2f center;
             double radius = 0.0;
             double scale = 0.0;
             return std::to_string(
                 CalScalePixToMmUseCircle(cv::Mat::eye(60, 60, CV_8UC1) * 255, v, v, center, radius, scale));
         },
         [](double) { return "0"; }},
    });
}

TEST(PointListMatrix, TwoCameras) {
    constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinite = std::numeric_limits<float>::infinity();
    struct Case {
        const char* name;
        Points first;
        Points second;
        const char* told;
    };
    const Points good{{0, 0}, {9, 0}, {0, 9}, {9, 9}, {4, 5}};
    const Points wild(5, {notANumber, notANumber});
    const Points infinities{{infinite, 0}, {0, infinite}, {-infinite, 0}, {0, 0}, {1, 1}};
    const Case cases[] = {
        {"none", {}, {}, "false: "},
        {"three", Points(good.begin(), good.begin() + 3), Points(good.begin(), good.begin() + 3), "false: "},
        {"unequal", good, Points(good.begin(), good.begin() + 4), "false: "},
        {"five", good, good, "true"},
        {"equal ones", Points(5, {3, 3}), Points(5, {3, 3}), refused},
        {"not-a-numbers", wild, wild, refused},
        {"infinities", infinities, good, refused},
    };
    for (const Case& list : cases) {
        cv::Mat homography;
        double error = 5.0;
        const std::string outcome = Told("CreateHomography", [&] {
            return CreateHomography(list.first, list.second, homography, error, 3.0, 2000, 0.99);
        });
        OutcomeTable::Instance().Count("CreateHomography", list.name, outcome, list.told);
        EXPECT_EQ(outcome == "true", error != -1.0) << list.name;
    }
}

}  // namespace
}  // namespace Quorvane::Robustness
