// Two cameras joined. Nearly all of it is OpenCV's work, so each row has its floor beside it: OpenCV's own calls with
// the same arguments, and nothing around them.

#include <benchmark/benchmark.h>

#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/photo.hpp>
#include <vector>

#include "calibration/CameraCalibration.h"
#include "tests/support/Pictures.h"
#include "tests/support/TwoCameras.h"

namespace Quorvane::CameraCalibration {
namespace {

using namespace TestSupport;

constexpr double ratioThreshold = 0.75;
const ImageDirFlags direction1(cv::ROTATE_90_CLOCKWISE, false, false);
const ImageDirFlags direction2(-1, true, false);

/// Pictures of 1280 x 960 pixels, of a camera that is turned by a right angle and of one that mirrors.
struct Pair {
    TwoViews views;
    cv::Mat delivered1;
    cv::Mat delivered2;
    std::vector<cv::Point2f> points1;
    std::vector<cv::Point2f> points2;
    cv::Mat homography;
};

const Pair& Pictures() {
    static const Pair pair = [] {
        cv::Mat scene;
        cv::resize(LoadColourPicture("gravel.png"), scene, {}, 4.0, 4.0, cv::INTER_CUBIC);
        TwoCameras cameras;
        cameras.view = {1280, 960};
        cameras.overlap = 400.0;
        cameras.turn = 0.5;
        Pair made;
        made.views = Photograph(cameras, scene);
        made.delivered1 = Mounted(made.views.picture1, cv::ROTATE_90_CLOCKWISE, false, false);
        made.delivered2 = Mounted(made.views.picture2, -1, true, false);
        double meanError = 0.0;
        cv::setRNGSeed(1);
        CalibrationMatchPointsForDualCam(made.delivered1, direction1, made.views.overlap1, made.delivered2, direction2,
                                         made.views.overlap2, ratioThreshold, 3.0, 0.3, made.points1, made.points2);
        CreateHomography(made.points1, made.points2, made.homography, meanError, 3.0, 2000, 0.995);
        return made;
    }();
    return pair;
}

cv::Mat Upright1() {
    cv::Mat oriented;
    cv::rotate(Pictures().delivered1, oriented, cv::ROTATE_90_CLOCKWISE);
    return oriented;
}

cv::Mat Upright2() {
    cv::Mat oriented = Pictures().delivered2.clone();
    cv::flip(oriented, oriented, 1);
    return oriented;
}

struct Features {
    std::vector<cv::KeyPoint> keypoints;
    cv::Mat descriptors;
};

Features FindFeatures(cv::AKAZE& detector, const cv::Mat& oriented, const cv::Rect& overlap) {
    cv::Mat gray;
    cv::cvtColor(oriented, gray, cv::COLOR_BGR2GRAY);
    cv::cvtColor(oriented, gray, cv::COLOR_RGB2GRAY);
    cv::Mat mask = cv::Mat::zeros(gray.size(), CV_8U);
    mask(overlap).setTo(255);
    Features features;
    detector.detectAndCompute(gray, mask, features.keypoints, features.descriptors);
    return features;
}

/// With the ratio test alone: what else is sorted out costs OpenCV nothing.
void MatchFloor(benchmark::State& state) {
    const TwoViews& views = Pictures().views;
    for (auto _ : state) {
        cv::setRNGSeed(1);
        const cv::Ptr<cv::AKAZE> detector = cv::AKAZE::create();
        const Features features1 = FindFeatures(*detector, Upright1(), views.overlap1);
        const Features features2 = FindFeatures(*detector, Upright2(), views.overlap2);
        std::vector<std::vector<cv::DMatch>> nearest;
        cv::FlannBasedMatcher(cv::makePtr<cv::flann::LshIndexParams>(12, 20, 2))
            .knnMatch(features2.descriptors, features1.descriptors, nearest, 2);
        std::vector<cv::Point2f> vectors;
        for (const std::vector<cv::DMatch>& two : nearest) {
            if (two.size() < 2 || two[0].distance >= two[1].distance * ratioThreshold) continue;
            vectors.push_back(features1.keypoints[static_cast<std::size_t>(two[0].trainIdx)].pt -
                              features2.keypoints[static_cast<std::size_t>(two[0].queryIdx)].pt);
        }
        std::vector<int> labels;
        cv::kmeans(vectors, 2, labels, cv::TermCriteria(3, 100, 1.0), 3, cv::KMEANS_PP_CENTERS);
        benchmark::DoNotOptimize(labels.data());
    }
}
BENCHMARK(MatchFloor)->Name("CalibrationMatchPointsForDualCam/floor")->Unit(benchmark::kMillisecond);

void MatchLibrary(benchmark::State& state) {
    const Pair& pair = Pictures();
    std::vector<cv::Point2f> points1;
    std::vector<cv::Point2f> points2;
    for (auto _ : state) {
        cv::setRNGSeed(1);
        CalibrationMatchPointsForDualCam(pair.delivered1, direction1, pair.views.overlap1, pair.delivered2, direction2,
                                         pair.views.overlap2, ratioThreshold, 3.0, 0.3, points1, points2);
    }
    state.counters["pairs"] = static_cast<double>(points1.size());
}
BENCHMARK(MatchLibrary)->Name("CalibrationMatchPointsForDualCam/library")->Unit(benchmark::kMillisecond);

void HomographyFloor(benchmark::State& state) {
    const Pair& pair = Pictures();
    for (auto _ : state) {
        std::vector<uchar> mask;
        const cv::Mat homography = cv::findHomography(pair.points1, pair.points2, cv::RANSAC, 3.0, mask, 2000, 0.995);
        std::vector<cv::Point2f> projected;
        cv::perspectiveTransform(pair.points1, projected, homography);
        benchmark::DoNotOptimize(projected.data());
    }
}
BENCHMARK(HomographyFloor)->Name("CreateHomography/floor")->Unit(benchmark::kMicrosecond);

void HomographyLibrary(benchmark::State& state) {
    const Pair& pair = Pictures();
    cv::Mat homography;
    double meanError = 0.0;
    for (auto _ : state) CreateHomography(pair.points1, pair.points2, homography, meanError, 3.0, 2000, 0.995);
}
BENCHMARK(HomographyLibrary)->Name("CreateHomography/library")->Unit(benchmark::kMicrosecond);

void PointFloor(benchmark::State& state) {
    const cv::Mat homography = Pictures().homography;
    for (auto _ : state) {
        const std::vector<cv::Point2f> points{{100.0f, 200.0f}};
        std::vector<cv::Point2f> mapped;
        cv::perspectiveTransform(points, mapped, homography);
        benchmark::DoNotOptimize(mapped.data());
    }
}
BENCHMARK(PointFloor)->Name("TransformPoint/floor");

void PointLibrary(benchmark::State& state) {
    const cv::Mat homography = Pictures().homography;
    cv::Point2f mapped;
    for (auto _ : state) {
        TransformPoint(homography, {100.0f, 200.0f}, mapped);
        benchmark::DoNotOptimize(mapped);
    }
}
BENCHMARK(PointLibrary)->Name("TransformPoint/library");

void MatchesImageFloor(benchmark::State& state) {
    const Pair& pair = Pictures();
    std::vector<cv::KeyPoint> keypoints1;
    std::vector<cv::KeyPoint> keypoints2;
    cv::KeyPoint::convert(pair.points1, keypoints1);
    cv::KeyPoint::convert(pair.points2, keypoints2);
    std::vector<cv::DMatch> matches;
    for (int i = 0; i < static_cast<int>(keypoints1.size()); ++i) matches.emplace_back(i, i, 0.0f);
    cv::Mat picture;
    for (auto _ : state) {
        const cv::Mat upright1 = Upright1();
        cv::Mat canvas;
        cv::drawMatches(upright1, keypoints1, Upright2(), keypoints2, matches, canvas, cv::Scalar::all(-1),
                        cv::Scalar::all(-1), {}, cv::DrawMatchesFlags::NOT_DRAW_SINGLE_POINTS);
        canvas.copyTo(picture);
        for (std::size_t i = 0; i < keypoints1.size(); ++i) {
            cv::line(picture, pair.points1[i], pair.points2[i] + cv::Point2f(static_cast<float>(upright1.cols), 0.0f),
                     cv::Scalar(0, 200, 0), 2, cv::LINE_8);
        }
    }
}
BENCHMARK(MatchesImageFloor)->Name("CreateMatchesImage/floor")->Unit(benchmark::kMillisecond);

void MatchesImageLibrary(benchmark::State& state) {
    const Pair& pair = Pictures();
    cv::Mat picture;
    for (auto _ : state) {
        CreateMatchesImage(pair.delivered1, direction1, pair.delivered2, direction2, pair.points1, pair.points2,
                           picture);
    }
}
BENCHMARK(MatchesImageLibrary)->Name("CreateMatchesImage/library")->Unit(benchmark::kMillisecond);

void BlendFloor(benchmark::State& state) {
    const Pair& pair = Pictures();
    double seamX = 0.0;
    cv::Mat joined;
    DoBlendingImageForDualCam(pair.delivered1, direction1, pair.delivered2, direction2, 1.0, 1.0, pair.homography,
                              seamX, joined);
    // Where the library puts things, to the pixel.
    const cv::Size size = joined.size();
    const int left = size.width - 1280;
    const int top = size.height - 960;
    const int seam = static_cast<int>(seamX) - left;
    const cv::Mat warp = (cv::Mat_<double>(3, 3) << 1, 0, left, 0, 1, top, 0, 0, 1) * pair.homography;
    for (auto _ : state) {
        const cv::Mat upright1 = Upright1();
        const cv::Mat upright2 = Upright2();
        cv::Mat canvas;
        cv::warpPerspective(upright1, canvas, warp, size);
        upright2.colRange(seam, 1280).copyTo(canvas(cv::Rect(left + seam, top, 1280 - seam, 960)));
        const cv::Mat strip = upright2.colRange(seam - 10, seam + 10);
        cv::Mat cloned;
        cv::seamlessClone(strip, canvas, cv::Mat(strip.size(), CV_8U, cv::Scalar(255)), {left + seam, top + 480},
                          cloned, cv::NORMAL_CLONE);
        cv::resize(cloned, joined, {size.width / 2, size.height / 2});
    }
}
BENCHMARK(BlendFloor)->Name("DoBlendingImageForDualCam/floor")->Unit(benchmark::kMillisecond);

void BlendLibrary(benchmark::State& state) {
    const Pair& pair = Pictures();
    double seamX = 0.0;
    cv::Mat joined;
    for (auto _ : state) {
        DoBlendingImageForDualCam(pair.delivered1, direction1, pair.delivered2, direction2, 0.5, 0.5, pair.homography,
                                  seamX, joined);
    }
}
BENCHMARK(BlendLibrary)->Name("DoBlendingImageForDualCam/library")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvane::CameraCalibration
