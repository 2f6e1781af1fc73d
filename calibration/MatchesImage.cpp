#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/ImageOrientation.h"
#include "calibration/LastError.h"

namespace Quorvane::CameraCalibration {

namespace {

std::vector<cv::KeyPoint> AsKeyPoints(const std::vector<cv::Point2f>& points) {
    constexpr float size = 1.0f;
    std::vector<cv::KeyPoint> keypoints;
    cv::KeyPoint::convert(points, keypoints, size, 0.0f, 0, -1);
    return keypoints;
}

/// Each point with the one of the same index.
std::vector<cv::DMatch> PairsByIndex(std::size_t count) {
    std::vector<cv::DMatch> pairs;
    pairs.reserve(count);
    for (int i = 0; i < static_cast<int>(count); ++i) pairs.emplace_back(i, i, -1, 0.0f);
    return pairs;
}

/// The pictures side by side, with thin lines of random colours.
cv::Mat SideBySide(const cv::Mat& oriented1, const std::vector<cv::Point2f>& points1, const cv::Mat& oriented2,
                   const std::vector<cv::Point2f>& points2) {
    cv::Mat canvas;
    cv::drawMatches(oriented1, AsKeyPoints(points1), oriented2, AsKeyPoints(points2), PairsByIndex(points1.size()),
                    canvas, cv::Scalar::all(-1), cv::Scalar::all(-1), std::vector<char>(),
                    cv::DrawMatchesFlags::NOT_DRAW_SINGLE_POINTS);
    return canvas;
}

/// Red is drawn first, then green, then blue: the colours that operators know.
cv::Scalar NextColour(cv::RNG& random) {
    const int red = random.uniform(0, 255);
    const int green = random.uniform(0, 255);
    const int blue = random.uniform(0, 255);
    return {static_cast<double>(blue), static_cast<double>(green), static_cast<double>(red)};
}

/// `offset` is where picture 2 begins.
void DrawThickLines(cv::Mat& picture, const std::vector<cv::Point2f>& points1, const std::vector<cv::Point2f>& points2,
                    int offset) {
    constexpr std::uint64_t seed = 12345;  // the same colours on every call
    constexpr int thickness = 2;           // pixels
    cv::RNG random(seed);
    for (std::size_t i = 0; i < points1.size(); ++i) {
        const cv::Scalar colour = NextColour(random);
        const cv::Point2f end = points2[i] + cv::Point2f(static_cast<float>(offset), 0.0f);
        cv::line(picture, points1[i], end, colour, thickness, cv::LINE_8);
    }
}

}  // namespace

bool CreateMatchesImage(const cv::Mat& image1, const ImageDirFlags& dir1, const cv::Mat& image2,
                        const ImageDirFlags& dir2, const std::vector<cv::Point2f>& points1,
                        const std::vector<cv::Point2f>& points2, cv::Mat& matchesImage) {
    return ReportingExceptions("CreateMatchesImage", [&] {
        if (points1.size() != points2.size()) return false;
        if (image1.empty() || image2.empty()) return FailWith(missingImagesText);
        const cv::Mat oriented1 = OrientImage(image1, dir1);
        const cv::Mat oriented2 = OrientImage(image2, dir2);
        SideBySide(oriented1, points1, oriented2, points2).copyTo(matchesImage);
        DrawThickLines(matchesImage, points1, points2, oriented1.cols);
        return true;
    });
}

}  // namespace Quorvane::CameraCalibration
