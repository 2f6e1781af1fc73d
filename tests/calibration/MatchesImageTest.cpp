#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/LastError.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/TwoCameras.h"

namespace Quorvane::CameraCalibration {

using testing::StartsWith;
using namespace TestSupport;

namespace {

const char* const untouched = "left from before";
const ImageDirFlags upright(-1, false, false);

/// A drawing and its arguments.
struct Drawing {
    cv::Mat image1 = cv::Mat(60, 80, CV_8UC3, cv::Scalar(10, 20, 30));
    cv::Mat image2 = cv::Mat(50, 90, CV_8UC3, cv::Scalar(40, 50, 60));
    ImageDirFlags dir1 = upright;
    ImageDirFlags dir2 = upright;
    std::vector<cv::Point2f> points1;
    std::vector<cv::Point2f> points2;
    cv::Mat picture = cv::Mat::ones(2, 2, CV_8U);

    bool Run(int seed = 1) {
        SetLastError(untouched);
        cv::setRNGSeed(seed);
        return CreateMatchesImage(image1, dir1, image2, dir2, points1, points2, picture);
    }
    void ExpectPictureUntouched() const { EXPECT_THAT(picture, EqualsMat(cv::Mat::ones(2, 2, CV_8U))); }
    void ExpectRefusedByOpenCV() {
        EXPECT_FALSE(Run());
        EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::CreateMatchesImage]OpenCV("));
        ExpectPictureUntouched();
    }
};

/// The colours in the order of the pairs.
std::vector<cv::Vec3b> Colours(int count) {
    cv::RNG random(12345);
    std::vector<cv::Vec3b> colours;
    for (int i = 0; i < count; ++i) {
        cv::Vec3b colour;
        for (const int component : {2, 1, 0}) colour[component] = static_cast<uchar>(random.uniform(0, 255));
        colours.push_back(colour);
    }
    return colours;
}

TEST(CreateMatchesImage, WithoutPairsShowsThePicturesSideBySide) {
    Drawing drawing;
    ASSERT_TRUE(drawing.Run());
    EXPECT_EQ(GetLastError(), untouched);
    cv::Mat expected = cv::Mat::zeros(60, 170, CV_8UC3);
    drawing.image1.copyTo(expected(cv::Rect(0, 0, 80, 60)));
    drawing.image2.copyTo(expected(cv::Rect(80, 0, 90, 50)));
    EXPECT_THAT(drawing.picture, EqualsMat(expected));
}

TEST(CreateMatchesImage, DrawsALineForEachPairInColoursThatRepeat) {
    for (int seed = 1; seed <= 3; ++seed) {
        Drawing drawing;
        drawing.points1 = {{10.0f, 10.0f}, {12.0f, 25.0f}, {14.4f, 39.6f}};
        drawing.points2 = {{70.0f, 10.0f}, {60.0f, 25.0f}, {50.4f, 39.6f}};
        ASSERT_TRUE(drawing.Run(seed));
        const std::vector<cv::Vec3b> colours = Colours(3);
        EXPECT_EQ(drawing.picture.at<cv::Vec3b>(10, 100), colours[0]);
        EXPECT_EQ(drawing.picture.at<cv::Vec3b>(25, 100), colours[1]);
        EXPECT_EQ(drawing.picture.at<cv::Vec3b>(40, 100), colours[2]) << "ends are rounded to whole pixels";
        EXPECT_EQ(drawing.picture.at<cv::Vec3b>(17, 100), cv::Vec3b(40, 50, 60)) << "nothing between the lines";
        EXPECT_EQ(drawing.picture.at<cv::Vec3b>(10, 80 + 75), cv::Vec3b(40, 50, 60))
            << "and nothing beyond an end but the circle of the thin line";
    }
}

TEST(CreateMatchesImage, ThinLinesOfOpenCVLieUnderTheThickOnes) {
    Drawing drawing;
    drawing.image1 = LoadColourPicture("coffee.png");
    drawing.image2 = LoadColourPicture("gravel.png");
    RandomInput random(3);
    std::vector<cv::KeyPoint> keypoints1;
    std::vector<cv::KeyPoint> keypoints2;
    std::vector<cv::DMatch> matches;
    for (int i = 0; i < 25; ++i) {
        drawing.points1.emplace_back(static_cast<float>(random.Real(-20.0, 620.0)),
                                     static_cast<float>(random.Real(0.0, 400.0)));
        drawing.points2.emplace_back(static_cast<float>(random.Real(0.0, 512.0)),
                                     static_cast<float>(random.Real(0.0, 512.0)));
        keypoints1.emplace_back(drawing.points1.back(), 1.0f);
        keypoints2.emplace_back(drawing.points2.back(), 1.0f);
        matches.emplace_back(i, i, 0.0f);
    }
    cv::setRNGSeed(8);
    cv::Mat expected;
    cv::drawMatches(drawing.image1, keypoints1, drawing.image2, keypoints2, matches, expected, cv::Scalar::all(-1),
                    cv::Scalar::all(-1), {}, cv::DrawMatchesFlags::NOT_DRAW_SINGLE_POINTS);
    const std::vector<cv::Vec3b> colours = Colours(25);
    for (std::size_t i = 0; i < 25; ++i) {
        const cv::Point from(cvRound(drawing.points1[i].x), cvRound(drawing.points1[i].y));
        const cv::Point to(cvRound(drawing.points2[i].x + 600.0f), cvRound(drawing.points2[i].y));
        cv::line(expected, from, to, cv::Scalar(colours[i][0], colours[i][1], colours[i][2], 0.0), 2, cv::LINE_8);
    }
    ASSERT_TRUE(drawing.Run(8));
    EXPECT_THAT(drawing.picture, EqualsMat(expected));
    const cv::Mat first = drawing.picture.clone();
    ASSERT_TRUE(drawing.Run(8));
    EXPECT_THAT(drawing.picture, EqualsMat(first)) << "the same again in the same picture";
}

TEST(CreateMatchesImage, EndsAreRoundedAfterTheShift) {
    // Halves go to the even number: 10.5 to 10, but 81 + 10.5 to 92.
    const cv::Point2f point(10.5f, 20.5f);
    Drawing drawing;
    drawing.image1 = cv::Mat(60, 81, CV_8UC3, cv::Scalar(10, 20, 30));
    drawing.points1 = drawing.points2 = {point};
    ASSERT_TRUE(drawing.Run(8));
    const auto withThickLineTo = [&](const cv::Point& end) {
        const std::vector<cv::KeyPoint> keypoints{{point, 1.0f}};
        cv::Mat picture;
        cv::setRNGSeed(8);
        cv::drawMatches(drawing.image1, keypoints, drawing.image2, keypoints, {{0, 0, 0.0f}}, picture,
                        cv::Scalar::all(-1), cv::Scalar::all(-1), {}, cv::DrawMatchesFlags::NOT_DRAW_SINGLE_POINTS);
        cv::line(picture, {10, 20}, end, Colours(1)[0], 2, cv::LINE_8);
        return picture;
    };
    EXPECT_THAT(drawing.picture, EqualsMat(withThickLineTo({92, 20})));
    EXPECT_FALSE(MatsAreEqual(drawing.picture, withThickLineTo({91, 20})));
}

TEST(CreateMatchesImage, PointsAreThoseOfTheOrientedPictures) {
    Drawing straight;
    straight.image1 = RandomInput(1).Image({80, 60}, 3);
    straight.image2 = RandomInput(2).Image({90, 50}, 3);
    straight.points1 = {{10.0f, 10.0f}};
    straight.points2 = {{20.0f, 30.0f}};
    ASSERT_TRUE(straight.Run());
    for (int rotate = -1; rotate <= 2; ++rotate) {
        for (const bool flip : {false, true}) {
            Drawing mounted = straight;
            mounted.picture = cv::Mat();
            mounted.image1 = Mounted(straight.image1, rotate, flip, !flip);
            mounted.dir1 = ImageDirFlags(rotate, flip, !flip);
            mounted.image2 = Mounted(straight.image2, 1 - rotate, flip, flip);
            mounted.dir2 = ImageDirFlags(1 - rotate, flip, flip);
            const cv::Mat before1 = mounted.image1.clone();
            ASSERT_TRUE(mounted.Run());
            EXPECT_THAT(mounted.picture, EqualsMat(straight.picture));
            EXPECT_THAT(mounted.image1, EqualsMat(before1));
        }
    }
}

TEST(CreateMatchesImage, GrayPicturesBecomeColoured) {
    Drawing drawing;
    drawing.image1 = cv::Mat(60, 80, CV_8UC1, cv::Scalar(77));
    ASSERT_TRUE(drawing.Run()) << GetLastError();
    EXPECT_EQ(drawing.picture.at<cv::Vec3b>(5, 5), cv::Vec3b(77, 77, 77));
    EXPECT_EQ(drawing.picture.at<cv::Vec3b>(5, 85), cv::Vec3b(40, 50, 60));
}

TEST(CreateMatchesImage, ListsOfDifferentLengthFailFirstAndWithoutAText) {
    Drawing drawing;
    drawing.image1 = cv::Mat();
    drawing.points1 = {{1.0f, 1.0f}};
    EXPECT_FALSE(drawing.Run());
    EXPECT_EQ(GetLastError(), untouched);
    drawing.ExpectPictureUntouched();
}

TEST(CreateMatchesImage, AnEmptyPictureIsToldInTheLastError) {
    for (const bool first : {true, false}) {
        Drawing drawing;
        (first ? drawing.image1 : drawing.image2) = cv::Mat();
        EXPECT_FALSE(drawing.Run());
        EXPECT_EQ(GetLastError(), "Could not open or find the images!");
        drawing.ExpectPictureUntouched();
    }
}

TEST(CreateMatchesImage, PicturesThatOpenCVDoesNotDrawAreRefused) {
    Drawing drawing;
    drawing.image1 = cv::Mat(60, 80, CV_16UC3, cv::Scalar::all(9));
    drawing.ExpectRefusedByOpenCV();
    Drawing two;
    two.image2 = cv::Mat(60, 80, CV_8UC2, cv::Scalar::all(9));
    two.ExpectRefusedByOpenCV();
}

TEST(CreateMatchesImage, PointsFarOutsideDoNoHarm) {
    Drawing drawing;
    const float infinite = std::numeric_limits<float>::infinity();
    drawing.points1 = {{-1e9f, 5.0f}, {infinite, 5.0f}, {std::numeric_limits<float>::quiet_NaN(), 1.0f}};
    drawing.points2 = {{1e9f, 1e9f}, {5.0f, -infinite}, {2.0f, 2.0f}};
    EXPECT_TRUE(drawing.Run()) << GetLastError();
    EXPECT_EQ(drawing.picture.size(), cv::Size(170, 60));
}

TEST(CreateMatchesImage, MayOverwriteOneOfItsPictures) {
    Drawing expected;
    expected.points1 = expected.points2 = {{10.0f, 20.0f}};
    ASSERT_TRUE(expected.Run());
    Drawing drawing;
    drawing.points1 = drawing.points2 = {{10.0f, 20.0f}};
    cv::setRNGSeed(1);
    ASSERT_TRUE(CreateMatchesImage(drawing.image1, upright, drawing.image2, upright, drawing.points1, drawing.points2,
                                   drawing.image1));
    EXPECT_THAT(drawing.image1, EqualsMat(expected.picture));
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
