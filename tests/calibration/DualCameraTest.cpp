// Two cameras from their pictures to the joined one, against cameras that are known.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <opencv2/imgproc.hpp>

#include "calibration/CameraCalibration.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TwoCameras.h"

namespace Quorvane::CameraCalibration {

using namespace TestSupport;

namespace {

const ImageDirFlags upright(-1, false, false);

/// Cut from the photograph at its own size.
const cv::Mat& Gravel() {
    static const cv::Mat picture = LoadColourPicture("gravel.png");
    return picture;
}

TwoCameras Cameras() {
    TwoCameras cameras;
    cameras.view = {300, 380};
    cameras.overlap = 130.0;
    return cameras;
}

/// The mapping that was found, and its errors in pixels.
struct Mapping {
    std::size_t pairs = 0;
    cv::Mat homography;
    double meanError = 0.0;
    double inOverlap = 0.0;  ///< The largest error there.
    double inPicture = 0.0;  ///< The largest over all of picture 1.
};

Mapping FindMapping(const std::string& name, const TwoCameras& cameras, const cv::Mat& scene = Gravel()) {
    const TwoViews views = Photograph(cameras, scene);
    Mapping mapping;
    std::vector<cv::Point2f> points1;
    std::vector<cv::Point2f> points2;
    cv::setRNGSeed(1);
    EXPECT_TRUE(CalibrationMatchPointsForDualCam(views.picture1, upright, views.overlap1, views.picture2, upright,
                                                 views.overlap2, 0.75, 4.0, 0.3, points1, points2))
        << GetLastError();
    EXPECT_TRUE(CreateHomography(points1, points2, mapping.homography, mapping.meanError, 3.0, 2000, 0.995))
        << GetLastError();
    if (mapping.homography.empty()) return mapping;
    mapping.pairs = points1.size();
    const cv::Matx33d found(mapping.homography);
    mapping.inOverlap = LargestDistance(found, views.homography, cv::Rect2d(views.overlap1));
    mapping.inPicture = LargestDistance(found, views.homography, {cv::Point2d(), cv::Size2d(cameras.view)});
    std::cout << name << ": " << mapping.pairs << " pairs, mean error " << mapping.meanError << " px, mapping off by "
              << mapping.inOverlap << " px in the overlap, " << mapping.inPicture << " px in all of picture 1\n";
    return mapping;
}

TEST(TwoCameras, ShiftedCamerasAreMappedToAFewHundredthsOfAPixel) {
    for (const double down : {0.0, 12.0, -25.0}) {
        TwoCameras cameras = Cameras();
        cameras.shiftDown = down;
        const Mapping mapping = FindMapping("shifted, " + std::to_string(down) + " px down", cameras);
        EXPECT_GT(mapping.pairs, 150u);
        EXPECT_LT(mapping.inOverlap, 0.05);
        EXPECT_LT(mapping.inPicture, 0.15);
        EXPECT_LT(mapping.meanError, 0.03);
    }
}

TEST(TwoCameras, SmallTurnsAndTiltsAreMappedToAPixelOrSo) {
    for (const double turn : {0.5, 1.0, 2.0, 5.0}) {
        TwoCameras cameras = Cameras();
        cameras.turn = turn;
        cameras.shiftDown = 12.0;
        const Mapping mapping = FindMapping("turned by " + std::to_string(turn) + " degrees", cameras);
        EXPECT_GT(mapping.pairs, 50u);
        EXPECT_LT(mapping.inOverlap, 2.5);
        EXPECT_LT(mapping.meanError, 0.2);
    }
    for (const double perspective : {0.02, 0.05}) {
        TwoCameras cameras = Cameras();
        cameras.perspective = perspective;
        const Mapping mapping = FindMapping("tilted, scale changes by " + std::to_string(perspective), cameras);
        EXPECT_GT(mapping.pairs, 50u);
        EXPECT_LT(mapping.inOverlap, 0.5);
        EXPECT_LT(mapping.inPicture, 1.0);
    }
}

TEST(TwoCameras, LightAndNoiseCostLittle) {
    TwoCameras cameras = Cameras();
    cameras.shiftDown = 12.0;
    cameras.light1 = 0.7;
    const Mapping darker = FindMapping("picture 1 at 70 % light", cameras);
    EXPECT_LT(darker.inOverlap, 0.3);
    cameras.noise = 5.0;
    const Mapping noisy = FindMapping("picture 1 at 70 % light, noise of 5 levels", cameras);
    EXPECT_GT(noisy.pairs, 50u);
    EXPECT_LT(noisy.inOverlap, 1.0);
}

TEST(TwoCameras, AnEnlargedPhotographGivesMorePairs) {
    cv::Mat large;
    cv::resize(Gravel(), large, {}, 2.0, 2.0, cv::INTER_CUBIC);
    TwoCameras cameras = Cameras();
    cameras.view *= 2;
    cameras.overlap *= 2.0;
    cameras.turn = 1.0;
    const Mapping mapping = FindMapping("enlarged, turned by 1 degree", cameras, large);
    EXPECT_GT(mapping.pairs, 300u);
    EXPECT_LT(mapping.inOverlap, 0.3);
}

/// The mean and the largest difference of two pictures, in gray levels.
struct Difference {
    double mean = 0.0;
    double largest = 0.0;
};

Difference Compare(const cv::Mat& a, const cv::Mat& b) {
    cv::Mat difference;
    cv::absdiff(a, b, difference);
    Difference result;
    cv::minMaxLoc(difference.reshape(1), nullptr, &result.largest);
    result.mean = cv::mean(difference.reshape(1))[0];
    return result;
}

/// How far the homography sends picture 1 beyond the upper left corner of picture 2.
cv::Point2d Overhang(const cv::Mat& homography, cv::Size picture) {
    const auto w = static_cast<float>(picture.width);
    const auto h = static_cast<float>(picture.height);
    std::vector<cv::Point2f> corners{{0, 0}, {w, 0}, {w, h}, {0, h}};
    cv::perspectiveTransform(corners, corners, homography);
    cv::Point2d overhang;
    for (const cv::Point2f& corner : corners) {
        overhang.x = std::max(overhang.x, -static_cast<double>(corner.x));
        overhang.y = std::max(overhang.y, -static_cast<double>(corner.y));
    }
    return overhang;
}

/// Joins the pictures of a scene by the homography that was found and compares the result, where both pictures show
/// it, with the scene: over everything and along 40 columns about the seam. Picture 2 is placed at whole pixels,
/// picture 1 is not; how far they are apart by that is printed.
void JoinAndCompare(const std::string& name, const TwoCameras& cameras, double meanAtSeam) {
    const TwoViews views = Photograph(cameras, Gravel());
    const Mapping mapping = FindMapping(name, cameras);
    cv::Mat joined;
    double seamX = 0.0;
    ASSERT_TRUE(DoBlendingImageForDualCam(views.picture1, upright, views.picture2, upright, 1.0, 1.0,
                                          mapping.homography, seamX, joined))
        << GetLastError();
    const cv::Point2d overhang = Overhang(mapping.homography, cameras.view);
    const cv::Point place2(static_cast<int>(overhang.x), static_cast<int>(overhang.y));
    constexpr int margin = 20;  // what the turned picture 1 leaves black
    const cv::Rect inside(margin, place2.y + margin, joined.cols - 2 * margin, cameras.view.height - 2 * margin);
    const cv::Rect strip(cvRound(seamX) - 20, inside.y, 40, inside.height);
    const cv::Point toScene = views.inScene2.tl() - place2;
    const Difference all = Compare(joined(inside), Gravel()(inside + toScene));
    const Difference seam = Compare(joined(strip), Gravel()(strip + toScene));
    std::cout << name << ": pictures apart by " << overhang.x - place2.x << ", " << overhang.y - place2.y
              << " px, joined picture off by " << all.mean << " levels in the mean, along the seam " << seam.mean
              << " (largest " << seam.largest << ")\n";
    EXPECT_LT(seam.mean, meanAtSeam);
}

TEST(TwoCameras, TheJoinedPictureIsTheScene) {
    TwoCameras cameras = Cameras();
    JoinAndCompare("shifted", cameras, 1.5);
    cameras.turn = 1.0;
    JoinAndCompare("turned by 1 degree", cameras, 10.0);
    cameras.turn = 0.0;
    cameras.perspective = 0.02;
    JoinAndCompare("tilted, scale changes by 2 %", cameras, 12.0);
}

TEST(TwoCameras, TheChainGoesThroughAFileAndMapsPoints) {
    const TwoViews views = Photograph(Cameras(), Gravel());
    const Mapping mapping = FindMapping("shifted", Cameras());
    const ScratchFolder folder;
    const std::string file = folder.File("homography.yml");
    ASSERT_TRUE(SaveHomography(file, mapping.homography));
    cv::Mat homography;
    ASSERT_TRUE(LoadHomography(file, homography));
    EXPECT_THAT(homography, EqualsMat(mapping.homography));
    cv::Point2f point;
    ASSERT_TRUE(TransformPoint(homography, {200.0f, 100.0f}, point));
    EXPECT_THAT(point, NearPoint(cv::Point2f(30.0f, 100.0f), 0.1));
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
