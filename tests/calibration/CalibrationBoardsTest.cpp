#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <limits>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <utility>

#include "calibration/CameraCalibration.h"
#include "calibration/CircleGrid.h"
#include "calibration/LastError.h"
#include "tests/support/Boards.h"
#include "tests/support/Matchers.h"
#include "tests/support/Scene.h"

namespace Quorvane::CameraCalibration {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using namespace TestSupport;

namespace {

const cv::Size pattern(7, 5);
const char* const untouched = "left from before";
const char* const takeAgain =
    "Quorvane::CameraCalibration::FindCalibrationBoard : Poor picture quality, Please re-shoot!";
const std::string fromTheLibrary = "[Quorvane::CameraCalibration::FindCalibrationBoard]OpenCV(";

/// A blob detector of the host's own, which remembers the pictures that it is shown.
class RememberingDetector : public cv::Feature2D {
public:
    void detect(cv::InputArray image, std::vector<cv::KeyPoint>& keypoints, cv::InputArray mask) override {
        pictures.push_back(image.getMat().clone());
        blobs->detect(image, keypoints, mask);
    }
    cv::Ptr<cv::Feature2D> blobs = cv::SimpleBlobDetector::create();
    std::vector<cv::Mat> pictures;
};

/// One search for a board and what it left.
struct Shot {
    bool found = false;
    std::vector<cv::Point2f> centers{{1.0f, 2.0f}};
    double quality = 42.0;
    std::string text;

    void ExpectNothingTouched() const {
        EXPECT_FALSE(found);
        EXPECT_THAT(centers, ElementsAre(cv::Point2f(1.0f, 2.0f)));
        EXPECT_EQ(quality, 42.0);
        EXPECT_EQ(text, untouched);
    }
    void ExpectRefusedWith(const std::string& start) const {
        EXPECT_FALSE(found);
        EXPECT_THAT(centers, IsEmpty());
        EXPECT_EQ(quality, -1.0);
        EXPECT_THAT(text, StartsWith(start));
    }
};

Shot Find(const cv::Mat& picture, const cv::Ptr<cv::Feature2D>& detector = cv::SimpleBlobDetector::create(),
          int flags = cv::CALIB_CB_SYMMETRIC_GRID, cv::Size boardPattern = pattern) {
    Shot shot;
    SetLastError(untouched);
    cv::setRNGSeed(1);  // the grid search draws from OpenCV's generator
    shot.found = FindCalibrationBoard(picture, boardPattern, shot.centers, shot.quality, flags, detector);
    shot.text = GetLastError();
    return shot;
}

Pose ObliquePose(const CameraModel& camera) { return PosesOverThePicture(camera, CircleBoard(pattern), 7.0)[3]; }

cv::Mat FisheyeShot() {
    static const cv::Mat shot = Photograph(FisheyeCamera(), CircleBoard(pattern), ObliquePose(FisheyeCamera()));
    return shot.clone();
}

/// The largest distance of a centre found to the true one, in whichever of its orders the grid was read.
double LargestError(const std::vector<cv::Point2f>& centers, const std::vector<cv::Point2d>& truth) {
    double largest = 0.0;
    for (const cv::Point2f& center : centers) {
        double nearest = 1e9;
        for (const cv::Point2d& point : truth) nearest = std::min(nearest, cv::norm(point - cv::Point2d(center)));
        largest = std::max(largest, nearest);
    }
    return largest;
}

TEST(FindCalibrationBoard, FindsTheCirclesAndRatesTheShot) {
    const CameraModel camera = FisheyeCamera();
    const Board board = CircleBoard(pattern);
    std::vector<Pose> poses = PosesOverThePicture(camera, board, 7.0);
    poses.erase(poses.begin());  // the one that looks at the board squarely: see below
    for (const Pose& pose : poses) {
        const Shot shot = Find(Photograph(camera, board, pose));
        ASSERT_TRUE(shot.found) << shot.text;
        EXPECT_EQ(shot.text, untouched);
        ASSERT_EQ(shot.centers.size(), 35u);
        const double error = LargestError(shot.centers, TruePoints(camera, board, pose));
        std::cout << "circles off by at most " << error << " px, rating " << shot.quality << " px\n";
        EXPECT_LT(error, 0.4) << "the centre of a circle's picture is not quite the picture of its centre";
        EXPECT_GT(shot.quality, 0.0);
        EXPECT_LT(shot.quality, 0.1);
    }
}

TEST(FindCalibrationBoard, RatesAViewFromTheFrontWorseThanAnObliqueOne) {
    // Seen squarely a board says little about the lens, and the calibration of that one view may end far off.
    const CameraModel camera = FisheyeCamera();
    const Board board = CircleBoard(pattern);
    const Shot frontal = Find(Photograph(camera, board, PosesOverThePicture(camera, board, 7.0)[0]));
    ASSERT_TRUE(frontal.found) << frontal.text;
    std::cout << "rating " << frontal.quality << " px from the front\n";
    EXPECT_GT(frontal.quality, Find(FisheyeShot()).quality);
}

TEST(FindCalibrationBoard, RatesABlurredAndNoisyShotWorse) {
    const double sharp = Find(FisheyeShot()).quality;
    const Shot noisy = Find(Scene(FisheyeShot()).Blur(1.0).Light(1.0, 0.8).Noise(3.0, 11).Gray());
    ASSERT_TRUE(noisy.found) << noisy.text;
    std::cout << "rating " << sharp << " px when sharp, " << noisy.quality << " px with blur 1 px and noise 3\n";
    EXPECT_GT(noisy.quality, 5.0 * sharp);
}

TEST(FindCalibrationBoard, TheRatingIsThatOfAFisheyeCalibrationOfTheOneShot) {
    const Shot shot = Find(FisheyeShot());
    cv::Mat K = cv::Mat::zeros(3, 3, CV_64F);
    cv::Mat D = cv::Mat::zeros(4, 1, CV_64F);
    const double expected =
        cv::fisheye::calibrate(std::vector<std::vector<cv::Point3f>>{GenerateActualPositions(7, 5, 1.0f)},
                               std::vector<std::vector<cv::Point2f>>{shot.centers}, cv::Size(640, 480), K, D,
                               cv::noArray(), cv::noArray(), cv::fisheye::CALIB_RECOMPUTE_EXTRINSIC,
                               cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 30, 1e-6));
    EXPECT_EQ(shot.quality, expected);
}

TEST(FindCalibrationBoard, ColourAndGrayPicturesGiveTheSame) {
    cv::Mat colour;
    cv::cvtColor(FisheyeShot(), colour, cv::COLOR_GRAY2BGR);
    const Shot shot = Find(colour);
    ASSERT_TRUE(shot.found);
    EXPECT_EQ(shot.centers, Find(FisheyeShot()).centers);
    EXPECT_EQ(shot.quality, Find(FisheyeShot()).quality);
}

TEST(FindCalibrationBoard, ShowsTheHostsDetectorTheGrayPictureAlone) {
    const auto detector = cv::makePtr<RememberingDetector>();
    const cv::Mat picture = FisheyeShot();
    ASSERT_TRUE(Find(picture, detector).found);
    ASSERT_EQ(detector->pictures.size(), 1u);
    EXPECT_THAT(detector->pictures[0], EqualsMat(FisheyeShot()));
    EXPECT_THAT(picture, EqualsMat(FisheyeShot()));
}

TEST(FindCalibrationBoard, ABoardThatOnlyTheEvenedPictureShowsIsRefused) {
    const cv::Mat dark = Scene(FisheyeShot()).Light(0.17, 0.17).Gray();
    std::vector<cv::Point2f> found;
    ASSERT_TRUE(cv::findCirclesGrid(EvenedImage(dark), pattern, found));
    const auto detector = cv::makePtr<RememberingDetector>();
    const Shot shot = Find(dark, detector);
    shot.ExpectRefusedWith(takeAgain);
    EXPECT_EQ(shot.text, takeAgain);
    ASSERT_EQ(detector->pictures.size(), 2u) << "the second search is made, and its result dropped";
    EXPECT_THAT(detector->pictures[0], EqualsMat(dark));
    EXPECT_THAT(detector->pictures[1], EqualsMat(EvenedImage(dark)));
}

TEST(FindCalibrationBoard, APictureWithoutABoardIsRefused) {
    const Shot shot = Find(cv::Mat(200, 300, CV_8UC1, cv::Scalar(200)));
    shot.ExpectRefusedWith(takeAgain);
    EXPECT_EQ(shot.text, takeAgain);
    Find(FisheyeShot(), cv::SimpleBlobDetector::create(), cv::CALIB_CB_SYMMETRIC_GRID, {0, 5})
        .ExpectRefusedWith(takeAgain);
}

TEST(FindCalibrationBoard, PatternsThatOpenCVsSearchDoesNotSurviveAreRefused) {
    // Circles on a line, of which the search for a single one is left with none.
    cv::Mat line(120, 300, CV_8UC1, cv::Scalar(225));
    for (const int x : {40, 90, 140, 190, 240, 270}) cv::circle(line, {x, 60}, 9, cv::Scalar(25), cv::FILLED);
    constexpr int most = std::numeric_limits<int>::max();
    const cv::Size grids[] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}, {most, 2}, {0, most}, {most, most}};
    for (const cv::Size& grid : grids) {
        for (const int flags : {+cv::CALIB_CB_SYMMETRIC_GRID, +cv::CALIB_CB_ASYMMETRIC_GRID}) {
            for (const cv::Mat& picture : {FisheyeShot(), line}) {
                const Shot shot = Find(picture, cv::SimpleBlobDetector::create(), flags, grid);
                shot.ExpectRefusedWith(takeAgain);
                EXPECT_EQ(shot.text, takeAgain);
            }
        }
    }
    Find(line, cv::SimpleBlobDetector::create(), cv::CALIB_CB_SYMMETRIC_GRID, {-1, 5})
        .ExpectRefusedWith(fromTheLibrary);
}

TEST(FindCalibrationBoard, PassesTheFlagsOn) {
    EXPECT_TRUE(
        Find(FisheyeShot(), cv::SimpleBlobDetector::create(), cv::CALIB_CB_SYMMETRIC_GRID | cv::CALIB_CB_CLUSTERING)
            .found);
    // An asymmetric grid is another arrangement, which this board does not have.
    Find(FisheyeShot(), cv::SimpleBlobDetector::create(), cv::CALIB_CB_ASYMMETRIC_GRID).ExpectRefusedWith(takeAgain);
    // And no grid at all is refused by OpenCV.
    Find(FisheyeShot(), cv::SimpleBlobDetector::create(), 0).ExpectRefusedWith(fromTheLibrary);
}

/// Circles in rows that are shifted by half a step against each other, seen obliquely.
cv::Mat AsymmetricShot(cv::Size asymmetric) {
    constexpr int step = 40;
    cv::Mat print(480, 640, CV_8UC1, cv::Scalar(225));
    for (int row = 0; row < asymmetric.height; ++row) {
        for (int column = 0; column < asymmetric.width; ++column) {
            cv::circle(print, {120 + row * step, 100 + (2 * column + row % 2) * step}, 14, cv::Scalar(25), cv::FILLED,
                       cv::LINE_AA);
        }
    }
    const std::vector<cv::Point2f> from{{0, 0}, {640, 0}, {640, 480}, {0, 480}};
    const std::vector<cv::Point2f> to{{30, 20}, {600, 40}, {620, 450}, {20, 470}};
    cv::Mat shot;
    cv::warpPerspective(print, shot, cv::getPerspectiveTransform(from, to), print.size(), cv::INTER_AREA,
                        cv::BORDER_REPLICATE);
    return shot;
}

TEST(FindCalibrationBoard, FindsAnAsymmetricGridAndRatesItAgainstTheSymmetricOne) {
    const cv::Size asymmetric(4, 11);
    const Shot shot =
        Find(AsymmetricShot(asymmetric), cv::SimpleBlobDetector::create(), cv::CALIB_CB_ASYMMETRIC_GRID, asymmetric);
    ASSERT_TRUE(shot.found) << shot.text;
    EXPECT_EQ(shot.centers.size(), 44u);
    EXPECT_EQ(shot.text, untouched);
    EXPECT_GT(shot.quality, 10.0) << "the rating knows one arrangement alone, and hosts know that";
}

/// Finds circles where it is told to, or throws what it is told to.
class ScriptedDetector : public cv::Feature2D {
public:
    using Script = std::function<std::vector<cv::KeyPoint>(std::size_t call)>;
    explicit ScriptedDetector(Script script) : script_(std::move(script)) {}
    void detect(cv::InputArray /*image*/, std::vector<cv::KeyPoint>& keypoints, cv::InputArray /*mask*/) override {
        keypoints = script_(++calls_);
    }

private:
    Script script_;
    std::size_t calls_ = 0;
};

TEST(FindCalibrationBoard, AnExceptionOfTheSecondSearchIsReported) {
    const auto detector = cv::makePtr<ScriptedDetector>([](std::size_t call) {
        if (call == 2) CV_Error(cv::Error::StsError, "the second search");
        return std::vector<cv::KeyPoint>();
    });
    const Shot shot = Find(FisheyeShot(), detector);
    shot.ExpectRefusedWith(fromTheLibrary);
    EXPECT_THAT(shot.text, testing::HasSubstr("the second search"));
}

TEST(FindCalibrationBoard, AnExceptionAfterTheCentresWereFoundTakesThemBack) {
    // Circles beyond the picture make a grid, but cannot be refined.
    const auto detector = cv::makePtr<ScriptedDetector>([](std::size_t /*call*/) {
        std::vector<cv::KeyPoint> circles;
        for (const cv::Point3f& place : GenerateActualPositions(7, 5, 20.0f)) {
            circles.emplace_back(cv::Point2f(50.0f + place.x, 40.0f + place.y), 10.0f);
        }
        return circles;
    });
    const cv::Mat small(100, 100, CV_8UC1, cv::Scalar(200));
    std::vector<cv::Point2f> centers;
    ASSERT_TRUE(cv::findCirclesGrid(small, pattern, centers, cv::CALIB_CB_SYMMETRIC_GRID, detector));
    Find(small, detector).ExpectRefusedWith(fromTheLibrary);
}

TEST(FindCalibrationBoard, ExceptionsOfOthersPass) {
    const auto detector = cv::makePtr<ScriptedDetector>(
        [](std::size_t /*call*/) -> std::vector<cv::KeyPoint> { throw std::runtime_error("the host's own"); });
    std::vector<cv::Point2f> centers{{1.0f, 2.0f}};
    double quality = 42.0;
    SetLastError(untouched);
    EXPECT_THROW(FindCalibrationBoard(FisheyeShot(), pattern, centers, quality, cv::CALIB_CB_SYMMETRIC_GRID, detector),
                 std::runtime_error);
    EXPECT_EQ(GetLastError(), untouched);
    EXPECT_EQ(quality, 42.0);
}

TEST(FindCalibrationBoard, EmptyPicturesAndOtherChannelCountsChangeNothing) {
    Find(cv::Mat()).ExpectNothingTouched();
    Find(cv::Mat(100, 100, CV_8UC4, cv::Scalar::all(9))).ExpectNothingTouched();
    Find(cv::Mat(100, 100, CV_8UC2, cv::Scalar::all(9))).ExpectNothingTouched();
    const int sizes[] = {3, 100, 100};
    Find(cv::Mat(3, sizes, CV_8UC2, cv::Scalar::all(9))).ExpectNothingTouched();
}

TEST(FindCalibrationBoard, ReportsExceptionsOfTheLibrary) {
    cv::Mat deep;
    FisheyeShot().convertTo(deep, CV_16U, 256.0);
    Find(deep).ExpectRefusedWith(fromTheLibrary);
    Find(FisheyeShot(), cv::Ptr<cv::Feature2D>()).ExpectRefusedWith(fromTheLibrary);
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
