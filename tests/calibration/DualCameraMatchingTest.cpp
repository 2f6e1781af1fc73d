#include "calibration/DualCameraMatching.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/ImageOrientation.h"
#include "calibration/LastError.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/TwoCameras.h"

namespace Quorvane::CameraCalibration {

using testing::IsEmpty;
using testing::StartsWith;
using namespace TestSupport;

namespace {

const char* const untouched = "left from before";
const ImageDirFlags upright(-1, false, false);

/// A search for pairs and what came of it.
struct Search {
    cv::Mat image1;
    cv::Mat image2;
    cv::Rect roi1;
    cv::Rect roi2;
    ImageDirFlags dir1 = upright;
    ImageDirFlags dir2 = upright;
    double ratioThreshold = 0.75;
    double yDeviationFactor = 3.0;
    double lengthTolerance = 0.3;
    std::vector<cv::Point2f> points1{{1.0f, 2.0f}};
    std::vector<cv::Point2f> points2{{3.0f, 4.0f}, {5.0f, 6.0f}};

    Search() = default;
    explicit Search(const TwoViews& views)
        : image1(views.picture1), image2(views.picture2), roi1(views.overlap1), roi2(views.overlap2) {}

    bool Run(int seed = 1) {
        SetLastError(untouched);
        cv::setRNGSeed(seed);
        return CalibrationMatchPointsForDualCam(image1, dir1, roi1, image2, dir2, roi2, ratioThreshold,
                                                yDeviationFactor, lengthTolerance, points1, points2);
    }
    void ExpectNothingFound() const {
        EXPECT_THAT(points1, IsEmpty());
        EXPECT_THAT(points2, IsEmpty());
    }
    void ExpectRefusedByOpenCV() {
        EXPECT_FALSE(Run());
        EXPECT_THAT(GetLastError(),
                    StartsWith("[Quorvane::CameraCalibration::CalibrationMatchPointsForDualCam]OpenCV("));
        ExpectNothingFound();
    }
};

TwoCameras SmallCameras() {
    TwoCameras cameras;
    cameras.view = {220, 240};
    cameras.overlap = 100.0;
    return cameras;
}

TwoViews Views(const std::string& picture = "gravel.png", const TwoCameras& cameras = SmallCameras()) {
    return Photograph(cameras, LoadColourPicture(picture));
}

/// The steps one by one, with OpenCV's calls and their arguments as hosts know them.
Search Expected(const Search& search, int seed) {
    const auto features = [](const cv::Mat& image, const ImageDirFlags& direction, const cv::Rect& roi,
                             std::vector<cv::KeyPoint>& keypoints) {
        cv::Mat gray;
        cv::cvtColor(OrientImage(image, direction), gray, cv::COLOR_RGB2GRAY);
        cv::Mat mask = cv::Mat::zeros(gray.size(), CV_8U);
        mask(roi & cv::Rect({}, gray.size())).setTo(255);
        cv::Mat descriptors;
        cv::AKAZE::create(cv::AKAZE::DESCRIPTOR_MLDB, 0, 3, 0.001f, 4, 4, cv::KAZE::DIFF_PM_G2, -1)
            ->detectAndCompute(gray, mask, keypoints, descriptors);
        return descriptors;
    };
    cv::setRNGSeed(seed);
    std::vector<cv::KeyPoint> keypoints1;
    std::vector<cv::KeyPoint> keypoints2;
    const cv::Mat descriptors1 = features(search.image1, search.dir1, search.roi1, keypoints1);
    const cv::Mat descriptors2 = features(search.image2, search.dir2, search.roi2, keypoints2);
    std::vector<std::vector<cv::DMatch>> nearest;
    cv::FlannBasedMatcher(cv::makePtr<cv::flann::LshIndexParams>(12, 20, 2),
                          cv::makePtr<cv::flann::SearchParams>(32, 0.0f, true))
        .knnMatch(descriptors2, descriptors1, nearest, 2);

    double lengths = 0.0;
    float heights = 0.0f;
    int count = 0;
    const auto pass = [&](const auto& visit) {
        for (const std::vector<cv::DMatch>& two : nearest) {
            if (two.size() < 2 || !(two[0].distance < two[1].distance * search.ratioThreshold)) continue;
            const cv::Point2f d = keypoints2[static_cast<std::size_t>(two[0].queryIdx)].pt -
                                  keypoints1[static_cast<std::size_t>(two[0].trainIdx)].pt;
            visit(two[0], std::abs(d.y), std::sqrt(static_cast<double>(d.x) * d.x + static_cast<double>(d.y) * d.y));
        }
    };
    pass([&](const cv::DMatch&, float height, double length) {
        lengths += length;
        heights += height;
        ++count;
    });
    const double meanLength = count > 0 ? lengths / count : 0.0;
    const float meanHeight = count > 0 ? heights / static_cast<float>(count) : 0.0f;
    std::vector<cv::DMatch> kept;
    pass([&](const cv::DMatch& match, float height, double length) {
        if (height <= static_cast<float>(search.yDeviationFactor) * meanHeight &&
            length <= (1.0 + search.lengthTolerance) * meanLength &&
            length >= (1.0 - search.lengthTolerance) * meanLength) {
            kept.push_back(match);
        }
    });
    Search expected = search;
    expected.points1.clear();
    expected.points2.clear();
    for (const cv::DMatch& match : FilterMatches_VectorKMeansCluster(kept, keypoints1, keypoints2, 2)) {
        expected.points1.push_back(keypoints1[static_cast<std::size_t>(match.trainIdx)].pt);
        expected.points2.push_back(keypoints2[static_cast<std::size_t>(match.queryIdx)].pt);
    }
    return expected;
}

TEST(CalibrationMatchPointsForDualCam, TakesTheStepsInOrderWithTheExactArguments) {
    TwoCameras turned = SmallCameras();
    turned.turn = 2.0;
    turned.shiftDown = 9.0;
    turned.noise = 2.0;
    for (const TwoViews& views :
         {Views("gravel.png", turned), Views("photographer.png"), Views("coffee.png", turned)}) {
        for (const double ratio : {0.6, 1.0, 1.5}) {
            for (const double yFactor : {0.5, 2.5}) {
                for (const double tolerance : {0.0, 0.1, 1.5}) {
                    Search search(views);
                    search.ratioThreshold = ratio;
                    search.yDeviationFactor = yFactor;
                    search.lengthTolerance = tolerance;
                    const Search expected = Expected(search, 7);
                    ASSERT_TRUE(search.Run(7)) << GetLastError();
                    EXPECT_EQ(search.points1, expected.points1);
                    EXPECT_EQ(search.points2, expected.points2);
                }
            }
        }
    }
}

TEST(CalibrationMatchPointsForDualCam, PairsShowTheSamePlace) {
    for (const double down : {0.0, 15.0}) {
        TwoCameras cameras = SmallCameras();
        cameras.shiftDown = down;
        const TwoViews views = Views("gravel.png", cameras);
        Search search(views);
        ASSERT_TRUE(search.Run());
        EXPECT_EQ(GetLastError(), untouched);
        ASSERT_GT(search.points1.size(), 50u);
        ASSERT_EQ(search.points1.size(), search.points2.size());
        for (std::size_t i = 0; i < search.points1.size(); ++i) {
            EXPECT_THAT(search.points2[i],
                        NearPoint(search.points1[i] + cv::Point2f(-120.0f, static_cast<float>(down)), 1.0));
            EXPECT_TRUE(cv::Rect2f(views.overlap1).contains(search.points1[i]));
            EXPECT_TRUE(cv::Rect2f(views.overlap2).contains(search.points2[i]));
        }
    }
}

TEST(CalibrationMatchPointsForDualCam, IsRepeatableWithASeededGeneratorInEveryMounting) {
    const TwoViews views = Views();
    Search straight(views);
    ASSERT_TRUE(straight.Run());
    for (int rotate = -1; rotate <= 2; ++rotate) {
        for (const bool horizontal : {false, true}) {
            for (const bool vertical : {false, true}) {
                SCOPED_TRACE(testing::Message() << rotate << " " << horizontal << " " << vertical);
                Search mounted(views);
                mounted.image1 = Mounted(views.picture1, rotate, horizontal, vertical);
                mounted.dir1 = ImageDirFlags(rotate, horizontal, vertical);
                mounted.image2 = Mounted(views.picture2, 1 - rotate, vertical, !horizontal);
                mounted.dir2 = ImageDirFlags(1 - rotate, vertical, !horizontal);
                ASSERT_TRUE(mounted.Run()) << GetLastError();
                EXPECT_EQ(mounted.points1, straight.points1);
                EXPECT_EQ(mounted.points2, straight.points2);
            }
        }
    }
}

TEST(CalibrationMatchPointsForDualCam, SeesBlueAsRed) {
    // A texture in blue that the red channel makes up for: even for the usual conversion, but not for one that takes
    // blue for red.
    const TwoViews views = Views();
    const auto tinted = [](const cv::Mat& picture) {
        constexpr double usualBlueToRed = 0.114 / 0.299;
        cv::Mat channel[3];
        cv::split(picture, channel);
        channel[1].setTo(100);
        cv::threshold(channel[0], channel[0], 120.0, 255.0, cv::THRESH_BINARY);
        channel[0].convertTo(channel[2], CV_8U, -usualBlueToRed, 128.0 + 128.0 * usualBlueToRed);
        cv::Mat merged;
        cv::merge(channel, 3, merged);
        return merged;
    };
    Search search(views);
    search.image1 = tinted(views.picture1);
    search.image2 = tinted(views.picture2);
    ASSERT_TRUE(search.Run());
    EXPECT_GT(search.points1.size(), 10u);
    cv::Mat usual;
    cv::cvtColor(search.image1, usual, cv::COLOR_BGR2GRAY);
    double least = 0.0;
    double most = 0.0;
    cv::minMaxLoc(usual, &least, &most);
    EXPECT_LE(most - least, 2.0) << "nothing to see for the usual conversion";
}

TEST(CalibrationMatchPointsForDualCam, RefusesGrayPicturesAndTakesFourChannels) {
    const TwoViews views = Views();
    Search gray(views);
    cv::cvtColor(views.picture1, gray.image1, cv::COLOR_BGR2GRAY);
    gray.ExpectRefusedByOpenCV();
    Search otherGray(views);
    cv::cvtColor(views.picture2, otherGray.image2, cv::COLOR_BGR2GRAY);
    otherGray.ExpectRefusedByOpenCV();

    Search three(views);
    ASSERT_TRUE(three.Run());
    Search four(views);
    cv::cvtColor(views.picture1, four.image1, cv::COLOR_BGR2BGRA);
    ASSERT_TRUE(four.Run()) << GetLastError();
    EXPECT_EQ(four.points1, three.points1);
}

TEST(CalibrationMatchPointsForDualCam, AnEmptyPictureEmptiesTheLists) {
    for (const bool first : {true, false}) {
        Search search(Views());
        (first ? search.image1 : search.image2) = cv::Mat();
        EXPECT_FALSE(search.Run());
        EXPECT_EQ(GetLastError(), "Could not open or find the images!");
        search.ExpectNothingFound();
    }
}

TEST(CalibrationMatchPointsForDualCam, NothingPassesARatioOfZeroAndThatIsASuccess) {
    Search search(Views());
    search.ratioThreshold = 0.0;
    EXPECT_TRUE(search.Run());
    EXPECT_EQ(GetLastError(), untouched);
    search.ExpectNothingFound();
}

TEST(CalibrationMatchPointsForDualCam, ALengthToleranceAboveOneHasNoLowerBound) {
    // Somewhat more than half of the picture did not move, the rest did by 40 pixels: the mean is below 20.
    const cv::Mat scene = LoadColourPicture("gravel.png");
    Search search;
    search.image1 = scene(cv::Rect(100, 100, 240, 240)).clone();
    search.image2 = search.image1.clone();
    scene(cv::Rect(140, 240, 240, 100)).copyTo(search.image2(cv::Rect(0, 140, 240, 100)));
    search.roi1 = search.roi2 = cv::Rect({}, search.image1.size());
    search.yDeviationFactor = 1000.0;
    search.lengthTolerance = 0.9;
    EXPECT_TRUE(search.Run());
    search.ExpectNothingFound();

    search.lengthTolerance = 1.6;
    EXPECT_TRUE(search.Run());
    ASSERT_GT(search.points1.size(), 20u);
    for (std::size_t i = 0; i < search.points1.size(); ++i) {
        EXPECT_THAT(search.points2[i], NearPoint(search.points1[i], 1.0));
    }
}

TEST(CalibrationMatchPointsForDualCam, APictureMatchesItself) {
    // All displacements are exactly zero, and so are their means: the bounds themselves pass.
    Search search(Views());
    search.image2 = search.image1;
    search.roi2 = search.roi1;
    ASSERT_TRUE(search.Run());
    EXPECT_GT(search.points1.size(), 50u);
    EXPECT_EQ(search.points1, search.points2);
}

TEST(CalibrationMatchPointsForDualCam, ClipsRectanglesAtThePicture) {
    const TwoViews views = Views();
    Search exact(views);
    ASSERT_TRUE(exact.Run());
    Search beyond(views);
    beyond.roi1.width += 500;
    beyond.roi1.height = std::numeric_limits<int>::max();
    beyond.roi2.height += 1;
    ASSERT_TRUE(beyond.Run());
    EXPECT_EQ(beyond.points1, exact.points1);
    // The corner moves, the size stays.
    Search moved(views);
    moved.roi2.x = -5000;
    moved.roi2.y = -1;
    ASSERT_TRUE(moved.Run());
    EXPECT_EQ(moved.points1, exact.points1);
}

TEST(CalibrationMatchPointsForDualCam, RefusesARectangleBehindThePicture) {
    for (const cv::Point corner :
         {cv::Point(221, 0), cv::Point(0, 241), cv::Point(std::numeric_limits<int>::max(), 0)}) {
        Search search(Views());
        search.roi1 = cv::Rect(corner, cv::Size(10, 10));
        search.ExpectRefusedByOpenCV();
        Search other(Views());
        other.roi2 = cv::Rect(corner, cv::Size(10, 10));
        other.ExpectRefusedByOpenCV();
    }
    Search negative(Views());
    negative.roi1.width = -1;
    negative.ExpectRefusedByOpenCV();
}

TEST(CalibrationMatchPointsForDualCam, FindsNothingInARectangleOfNoSize) {
    for (const cv::Rect& none : {cv::Rect(220, 0, 10, 10), cv::Rect(0, 240, 10, 10), cv::Rect(5, 5, 0, 10)}) {
        Search search(Views());
        search.roi2 = none;
        EXPECT_TRUE(search.Run()) << GetLastError();
        search.ExpectNothingFound();
        // OpenCV makes no hash tables of nothing.
        Search first(Views());
        first.roi1 = none;
        first.ExpectRefusedByOpenCV();
        Search both(Views());
        both.roi1 = both.roi2 = none;
        EXPECT_TRUE(both.Run()) << GetLastError();
        both.ExpectNothingFound();
    }
}

TEST(CalibrationMatchPointsForDualCam, PicturesWithoutFeaturesGiveNoPairs) {
    Search flat(Views());
    flat.image2 = cv::Mat(240, 220, CV_8UC3, cv::Scalar(90, 90, 90));
    EXPECT_TRUE(flat.Run()) << GetLastError();
    flat.ExpectNothingFound();
    std::swap(flat.image1, flat.image2);
    std::swap(flat.roi1, flat.roi2);
    flat.ExpectRefusedByOpenCV();
    for (const cv::Size& tiny : {cv::Size(1, 1), cv::Size(2, 40), cv::Size(9, 9)}) {
        Search small(Views());
        small.image1 = RandomInput(4).Image(tiny, 3);
        small.image2 = RandomInput(5).Image(tiny, 3);
        small.roi1 = small.roi2 = cv::Rect({}, tiny);
        small.Run();  // some are refused by OpenCV
        small.ExpectNothingFound();
    }
}

TEST(CalibrationMatchPointsForDualCam, OneFeatureInPictureOneIsTooFew) {
    Search search(Views());
    search.image1 = cv::Mat(60, 60, CV_8UC3, cv::Scalar::all(0));
    cv::circle(search.image1, {30, 30}, 5, cv::Scalar::all(255), cv::FILLED);
    std::vector<cv::KeyPoint> keypoints;
    cv::Mat gray;
    cv::cvtColor(search.image1, gray, cv::COLOR_RGB2GRAY);
    cv::AKAZE::create()->detect(gray, keypoints);
    ASSERT_EQ(keypoints.size(), 1u);
    search.roi1 = cv::Rect({}, gray.size());
    search.ExpectRefusedByOpenCV();
}

TEST(CalibrationMatchPointsForDualCam, FloatPicturesOfHardlyAnyContrastShowNothing) {
    const TwoViews views = Views();
    for (const double brightness : {1e-7, 1e-16, 1e-18, 1e-20, 1e-21, 1e-22, 1e-23, 1e-30, 1e-45}) {
        Search faint(views);
        views.picture2.convertTo(faint.image2, CV_32F, brightness / 255.0);
        EXPECT_TRUE(faint.Run()) << GetLastError();
        faint.ExpectNothingFound();
    }
}

TEST(CalibrationMatchPointsForDualCam, RefusesAnArrayOfThreeDimensions) {
    Search search(Views());
    search.image2 = cv::Mat({4, 50, 60}, CV_8UC3, cv::Scalar::all(9));
    search.ExpectRefusedByOpenCV();
}

TEST(CalibrationMatchPointsForDualCam, LeavesThePicturesAlone) {
    const TwoViews views = Views();
    Search search(views);
    search.image1 = views.picture1.clone();
    search.image2 = views.picture2.clone();
    search.dir1 = ImageDirFlags(1, true, false);
    search.dir2 = ImageDirFlags(-1, true, true);
    search.Run();
    EXPECT_THAT(search.image1, EqualsMat(views.picture1));
    EXPECT_THAT(search.image2, EqualsMat(views.picture2));
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
