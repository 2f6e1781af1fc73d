#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <numeric>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect/aruco_dictionary.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/LastError.h"
#include "calibration/ShotQuality.h"
#include "tests/support/Boards.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"
#include "tests/support/ScratchFolder.h"

namespace Quorvane::CameraCalibration {

using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using namespace TestSupport;

namespace {

const char* const untouched = "left from before";
const char* const takeAgain = "Quorvane::CameraCalibration::FindChArUcoBoard : Poor picture quality, Please re-shoot!";
const std::string fromTheLibrary = "[Quorvane::CameraCalibration::FindChArUcoBoard]OpenCV(";

constexpr float squareLength = 20.0f;  // millimetres
constexpr float markerLength = 15.0f;

/// One search for a board and what it left.
struct Shot {
    bool found = false;
    std::vector<cv::Point2f> imagePoints{{1.0f, 2.0f}};
    std::vector<cv::Point3f> objectPoints{{1.0f, 2.0f, 3.0f}};
    std::vector<int> ids{77};
    double quality = 42.0;
    cv::Mat shown = cv::Mat::ones(2, 2, CV_8U);
    std::string text;

    void ExpectRefusedWith(const std::string& start) const {
        EXPECT_FALSE(found);
        EXPECT_EQ(quality, -1.0);
        EXPECT_THAT(text, StartsWith(start));
    }
};

Shot Find(const cv::Mat& picture, cv::Size squares, bool fisheyeModel = false, bool refineMarkers = false) {
    Shot shot;
    SetLastError(untouched);
    shot.found =
        FindChArUcoBoard(picture, squares.width, squares.height, squareLength, markerLength, fisheyeModel,
                         shot.imagePoints, shot.objectPoints, shot.ids, shot.quality, shot.shown, refineMarkers);
    shot.text = GetLastError();
    return shot;
}

cv::Mat Colour(const cv::Mat& gray) {
    cv::Mat colour;
    cv::cvtColor(gray, colour, cv::COLOR_GRAY2BGR);
    return colour;
}

const cv::Size squares(7, 5);
constexpr std::size_t markerCount = 17;

Board Print(cv::Size boardSquares = squares) { return CharucoBoardPrint(boardSquares, squareLength); }

Pose ObliquePose(const CameraModel& camera, const Board& board) {
    return PoseOf(
        board.centre,
        cv::Vec3d(camera.Ray({camera.size.width * 0.5, camera.size.height * 0.48})) * 190.0 * camera.K(0, 0) / 704.0,
        20.0, -18.0, 5.0);
}

cv::Mat PhotographOf(const CameraModel& camera, const Board& board) {
    return Photograph(camera, board, ObliquePose(camera, board));
}

/// The pinhole camera's picture of the whole board; a copy, as the search overwrites gray pictures.
cv::Mat PinholeShot() {
    static const cv::Mat shot = PhotographOf(PinholeCamera(), Print());
    return shot.clone();
}

/// The largest distance of a marker corner found to the true one.
double LargestError(const Shot& shot, const CameraModel& camera, const Pose& pose) {
    double largest = 0.0;
    for (std::size_t i = 0; i < shot.imagePoints.size(); ++i) {
        const cv::Point2d onBoard(shot.objectPoints[i].x * 1000.0, shot.objectPoints[i].y * 1000.0);
        largest =
            std::max(largest, cv::norm(camera.Project(pose.ToCamera(onBoard)) - cv::Point2d(shot.imagePoints[i])));
    }
    return largest;
}

TEST(FindChArUcoBoard, FindsTheWholeBoardAndRatesTheShot) {
    for (const CameraModel& camera : {FisheyeCamera({960, 720}), PinholeCamera()}) {
        const Board board = Print();
        const Shot shot = Find(Colour(PhotographOf(camera, board)), squares, camera.fisheye);
        ASSERT_TRUE(shot.found) << shot.text;
        EXPECT_EQ(shot.text, untouched);
        EXPECT_THAT(shot.imagePoints, SizeIs(4 * markerCount));
        EXPECT_THAT(shot.objectPoints, SizeIs(4 * markerCount));
        std::vector<int> everyCorner(24);
        std::iota(everyCorner.begin(), everyCorner.end(), 0);
        EXPECT_EQ(shot.ids, everyCorner);
        const double error = LargestError(shot, camera, ObliquePose(camera, board));
        std::cout << (camera.fisheye ? "fisheye" : "pinhole") << " shot: marker corners off by at most " << error
                  << " px, rating " << shot.quality << " px\n";
        EXPECT_LT(error, 1.4) << "the corners are looked for in a picture of two levels";
        EXPECT_GT(shot.quality, 0.0);
        EXPECT_LT(shot.quality, 0.5);
    }
}

TEST(FindChArUcoBoard, FindsTheBoardInBlurredNoisyAndUnevenlyLitShots) {
    const Shot shot = Find(Scene(PinholeShot()).Blur(0.8).Light(1.0, 0.5).Noise(4.0, 3).Colour(), squares);
    ASSERT_TRUE(shot.found) << shot.text;
    const double error = LargestError(shot, PinholeCamera(), ObliquePose(PinholeCamera(), Print()));
    std::cout << "blur 0.8 px, light down to 50 %, noise 4: " << shot.imagePoints.size() / 4 << " of " << markerCount
              << " markers, corners off by at most " << error << " px, rating " << shot.quality << " px\n";
    EXPECT_LT(error, 1.8);
    EXPECT_LT(shot.quality, 0.7);
}

TEST(FindChArUcoBoard, ObjectPointsAreMetresAndFollowTheMarkersOrder) {
    const Shot shot = Find(PinholeShot(), squares);
    ASSERT_TRUE(shot.found) << shot.text;
    const float margin = (squareLength - markerLength) / 2.0f / 1000.0f;
    const float side = markerLength / 1000.0f;
    for (std::size_t i = 0; i < shot.objectPoints.size(); i += 4) {
        const cv::Point3f first = shot.objectPoints[i];
        const float column = (first.x - margin) / 0.02f;
        const float row = (first.y - margin) / 0.02f;
        EXPECT_NEAR(column, std::round(column), 1e-4f);
        EXPECT_NEAR(row, std::round(row), 1e-4f);
        EXPECT_NEAR(shot.objectPoints[i + 1].x - first.x, side, 1e-6f);
        EXPECT_NEAR(shot.objectPoints[i + 2].y - first.y, side, 1e-6f);
        EXPECT_NEAR(shot.objectPoints[i + 3].x, first.x, 1e-6f);
        EXPECT_EQ(first.z, 0.0f);
    }
}

TEST(FindChArUcoBoard, TheRatingIsThatOfTheChosenModel) {
    for (const bool fisheyeModel : {false, true}) {
        const Shot shot = Find(PinholeShot(), squares, fisheyeModel);
        ASSERT_TRUE(shot.found) << shot.text;
        const auto rate = fisheyeModel ? FisheyeShotQuality : PinholeShotQuality;
        EXPECT_EQ(shot.quality, rate(shot.objectPoints, shot.imagePoints, {640, 480}));
    }
}

TEST(PinholeShotQuality, IsTheSecondPassOnTheFirstOnesCamera) {
    const Shot shot = Find(PinholeShot(), squares);
    const std::vector<std::vector<cv::Point3f>> objectPoints{shot.objectPoints};
    const std::vector<std::vector<cv::Point2f>> imagePoints{shot.imagePoints};
    cv::Mat K = cv::Mat::eye(3, 3, CV_64F);
    cv::Mat D = cv::Mat::zeros(12, 1, CV_64F);
    const cv::TermCriteria criteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 30, 1e-6);
    cv::calibrateCamera(objectPoints, imagePoints, {640, 480}, K, D, cv::noArray(), cv::noArray(), 0x11f802, criteria);
    EXPECT_EQ(PinholeShotQuality(shot.objectPoints, shot.imagePoints, {640, 480}),
              cv::calibrateCamera(objectPoints, imagePoints, {640, 480}, K, D, cv::noArray(), cv::noArray(), 0x10c002,
                                  criteria));
}

TEST(FindChArUcoBoard, RefiningWithoutCandidatesChangesNothing) {
    const Shot plain = Find(PinholeShot(), squares, false, false);
    const Shot refined = Find(PinholeShot(), squares, false, true);
    ASSERT_TRUE(refined.found) << refined.text;
    EXPECT_EQ(refined.imagePoints, plain.imagePoints);
    EXPECT_EQ(refined.ids, plain.ids);
    EXPECT_EQ(refined.quality, plain.quality);
}

/// The picture that the markers are looked for in, from its definition.
cv::Mat MarkerImageOf(const cv::Mat& gray) {
    cv::Mat locallyBright;
    cv::adaptiveThreshold(gray, locallyBright, 255, cv::ADAPTIVE_THRESH_GAUSSIAN_C, cv::THRESH_BINARY, 21, 7);
    cv::Mat bright;
    cv::threshold(gray, bright, 0, 255, cv::THRESH_OTSU);
    return locallyBright & bright;
}

/// Where two pictures differ, in whichever channel.
int DifferentPixels(const cv::Mat& a, const cv::Mat& b) {
    cv::Mat difference;
    cv::absdiff(a, b, difference);
    cv::Mat flat = difference.reshape(1, difference.rows * difference.cols);
    cv::Mat largest;
    cv::reduce(flat, largest, 1, cv::REDUCE_MAX);
    return cv::countNonZero(largest);
}

TEST(FindChArUcoBoard, OverwritesAGrayPictureWithTheMarkerImageAndShowsThat) {
    const cv::Mat picture = PinholeShot();
    const cv::Mat markerImage = MarkerImageOf(PinholeShot());
    const Shot shot = Find(picture, squares);
    ASSERT_TRUE(shot.found) << shot.text;
    EXPECT_THAT(picture, EqualsMat(markerImage));
    ASSERT_EQ(shot.shown.type(), CV_8UC1);
    const int drawn = DifferentPixels(shot.shown, markerImage);
    EXPECT_GT(drawn, 24 * 10);
    EXPECT_LT(drawn, static_cast<int>(markerImage.total()) / 4);
    cv::Mat darker = shot.shown < markerImage;
    EXPECT_EQ(cv::countNonZero(darker), 0) << "of the colour only its first component, white, is left";
}

TEST(FindChArUcoBoard, AGrayPictureIsOverwrittenAlsoWhereNoBoardIsFound) {
    const cv::Mat picture = Photograph(PinholeCamera(), CircleBoard({7, 5}),
                                       PosesOverThePicture(PinholeCamera(), CircleBoard({7, 5}), 7.0)[0]);
    const cv::Mat markerImage = MarkerImageOf(picture);
    Find(picture, squares).ExpectRefusedWith(takeAgain);
    EXPECT_THAT(picture, EqualsMat(markerImage));
}

TEST(FindChArUcoBoard, MayShowTheCornersInTheGrayPictureItself) {
    const Shot apart = Find(PinholeShot(), squares);
    Shot same;
    const cv::Mat picture = PinholeShot();
    same.shown = picture;
    ASSERT_TRUE(FindChArUcoBoard(picture, squares.width, squares.height, squareLength, markerLength, false,
                                 same.imagePoints, same.objectPoints, same.ids, same.quality, same.shown, false));
    EXPECT_EQ(same.shown.data, picture.data);
    EXPECT_THAT(same.shown, EqualsMat(apart.shown));
    EXPECT_EQ(same.quality, apart.quality);
}

TEST(FindChArUcoBoard, OfARegionOfAPictureOverwritesTheRegionAlone) {
    const cv::Rect region(30, 20, 640, 480);
    cv::Mat large(520, 700, CV_8UC1, cv::Scalar(77));
    PinholeShot().copyTo(large(region));
    const Shot shot = Find(large(region), squares);
    ASSERT_TRUE(shot.found) << shot.text;
    EXPECT_THAT(shot.shown, EqualsMat(Find(PinholeShot(), squares).shown));
    cv::Mat expected(large.size(), CV_8UC1, cv::Scalar(77));
    MarkerImageOf(PinholeShot()).copyTo(expected(region));
    EXPECT_THAT(large, EqualsMat(expected));
}

TEST(FindChArUcoBoard, TakesAPictureInAnyArrayOfOpenCV) {
    const Shot expected = Find(PinholeShot(), squares);
    cv::UMat picture;
    PinholeShot().copyTo(picture);
    Shot shot;
    cv::UMat shown;
    ASSERT_TRUE(FindChArUcoBoard(picture, squares.width, squares.height, squareLength, markerLength, false,
                                 shot.imagePoints, shot.objectPoints, shot.ids, shot.quality, shown, false));
    EXPECT_EQ(shot.imagePoints, expected.imagePoints);
    EXPECT_EQ(shot.quality, expected.quality);
    EXPECT_THAT(shown.getMat(cv::ACCESS_READ).clone(), EqualsMat(expected.shown));
}

// A photograph of a printed board whose markers are of another set.
TEST(FindChArUcoBoard, RefusesAPhotographOfABoardWithMarkersOfAnotherSet) {
    const cv::Mat colour = LoadColourPicture("charuco.jpg");
    const cv::Mat before = colour.clone();
    const Shot shot = Find(colour, {5, 7});
    shot.ExpectRefusedWith(takeAgain);
    EXPECT_THAT(shot.imagePoints, IsEmpty());
    EXPECT_THAT(colour, EqualsMat(before));
    const cv::Mat gray = LoadGrayPicture("charuco.jpg");
    Find(gray, {5, 7}).ExpectRefusedWith(takeAgain);
    EXPECT_THAT(gray, EqualsMat(MarkerImageOf(LoadGrayPicture("charuco.jpg"))));
}

TEST(FindChArUcoBoard, LeavesAColourPictureAloneAndDrawsTheCornersInBlue) {
    const cv::Mat picture = Colour(PinholeShot());
    const Shot shot = Find(picture, squares);
    ASSERT_TRUE(shot.found) << shot.text;
    EXPECT_THAT(picture, EqualsMat(Colour(PinholeShot())));
    ASSERT_EQ(shot.shown.type(), CV_8UC3);
    // The marks are drawn anti-aliased, so their pixels are more or less blue.
    cv::Mat channels[3];
    cv::split(shot.shown, channels);
    const cv::Mat blue = channels[0] > channels[1] + 60;
    EXPECT_GT(cv::countNonZero(blue), 24 * 10);
    EXPECT_LT(DifferentPixels(shot.shown, picture), static_cast<int>(picture.total()) / 4);
    // The marks stand where the inner corners are.
    const std::vector<cv::Point2d> corners =
        TruePoints(PinholeCamera(), Print(), ObliquePose(PinholeCamera(), Print()));
    for (const cv::Point2d& corner : corners) {
        const cv::Rect around(cvRound(corner.x) - 5, cvRound(corner.y) - 5, 11, 11);
        EXPECT_GE(cv::countNonZero(blue(around)), 12) << corner;
    }
}

/// The board with the first markers of a 5 by 7 board covered, in the order of their numbers.
Board WithMarkersCovered(int covered) {
    Board board = Print({5, 7});
    for (int row = 0; row < 7; ++row) {
        for (int column = 0; column < 5; ++column) {
            if (column % 2 == row % 2 || covered-- <= 0) continue;
            const cv::Point2d corner(column * 20.0, row * 20.0);
            board = Covered(board, corner, corner + cv::Point2d(20.0, 20.0));
        }
    }
    return board;
}

cv::Mat UprightShot(const Board& board) {
    return Photograph(PinholeCamera(), board, PoseOf(board.centre, {0.0, 0.0, 250.0}, 12.0, 10.0, 2.0));
}

TEST(FindChArUcoBoard, AFiveBySevenBoardNeedsThirteenMarkers) {
    const Shot enough = Find(UprightShot(WithMarkersCovered(4)), {5, 7});
    EXPECT_TRUE(enough.found) << enough.text;
    EXPECT_THAT(enough.imagePoints, SizeIs(4 * 13));

    const Shot tooFew = Find(UprightShot(WithMarkersCovered(5)), {5, 7});
    tooFew.ExpectRefusedWith(takeAgain);
    EXPECT_EQ(tooFew.text, takeAgain);
    EXPECT_THAT(tooFew.imagePoints, IsEmpty());
    EXPECT_THAT(tooFew.objectPoints, IsEmpty());
    EXPECT_THAT(tooFew.ids, IsEmpty());
    EXPECT_THAT(tooFew.shown, EqualsMat(cv::Mat(cv::Mat::ones(2, 2, CV_8U))));
}

TEST(FindChArUcoBoard, ATwoByTwoBoardPassesWithAMarkerButHasTooFewCorners) {
    const Board board = Print({2, 2});
    const Pose pose = PoseOf(board.centre, {0.0, 0.0, 150.0}, 10.0, 8.0, 0.0);
    const Shot both = Find(Photograph(PinholeCamera(), board, pose), {2, 2});
    both.ExpectRefusedWith(takeAgain);
    EXPECT_EQ(both.text, takeAgain);
    EXPECT_THAT(both.imagePoints, SizeIs(8)) << "the marker corners stay";
    EXPECT_THAT(both.objectPoints, SizeIs(8));
    EXPECT_THAT(both.ids, SizeIs(1));

    // One marker covered: still one of the two, and no chessboard corner.
    const Board half = Covered(board, {20.0, 0.0}, {40.0, 20.0});
    const Shot one = Find(Photograph(PinholeCamera(), half, pose), {2, 2});
    one.ExpectRefusedWith(takeAgain);
    EXPECT_THAT(one.imagePoints, SizeIs(4));
    const Board none = Covered(half, {0.0, 20.0}, {20.0, 40.0});
    EXPECT_THAT(Find(Photograph(PinholeCamera(), none, pose), {2, 2}).imagePoints, IsEmpty());
}

TEST(FindChArUcoBoard, AMarkerThatIsNotOnTheBoardMakesTheListsUnequalAndTheRatingFail) {
    cv::Mat picture = PinholeShot();
    cv::Mat stranger;
    cv::aruco::getPredefinedDictionary(cv::aruco::DICT_7X7_250).generateImageMarker(200, 72, stranger);
    cv::Rect place(545, 380, 90, 90);
    picture(place).setTo(225);
    stranger.copyTo(picture(cv::Rect(place.x + 9, place.y + 9, 72, 72)));
    const Shot shot = Find(picture, squares);
    shot.ExpectRefusedWith(fromTheLibrary);
    EXPECT_THAT(shot.imagePoints, SizeIs(4 * (markerCount + 1)));
    EXPECT_THAT(shot.objectPoints, SizeIs(4 * markerCount));
    EXPECT_GT(shot.shown.cols, 2) << "the corners have been drawn by then";
}

TEST(FindChArUcoBoard, AnEmptyPictureClearsTheListsAlone) {
    const Shot shot = Find(cv::Mat(), squares);
    EXPECT_FALSE(shot.found);
    EXPECT_EQ(shot.text, "[FindChArUcoBoard] : Image is empty!");
    EXPECT_EQ(shot.quality, 42.0);
    EXPECT_THAT(shot.imagePoints, IsEmpty());
    EXPECT_THAT(shot.objectPoints, IsEmpty());
    EXPECT_THAT(shot.ids, IsEmpty());
    EXPECT_THAT(shot.shown, EqualsMat(cv::Mat(cv::Mat::ones(2, 2, CV_8U))));
}

TEST(FindChArUcoBoard, ReportsExceptionsOfTheLibrary) {
    Find(cv::Mat(100, 100, CV_8UC4, cv::Scalar::all(7)), squares).ExpectRefusedWith(fromTheLibrary);
    Find(cv::Mat(100, 100, CV_16UC1, cv::Scalar::all(7)), squares).ExpectRefusedWith(fromTheLibrary);
    Find(PinholeShot(), {1, 5}).ExpectRefusedWith(fromTheLibrary);
    Find(PinholeShot(), {-7, 5}).ExpectRefusedWith(fromTheLibrary);
}

TEST(FindChArUcoBoard, FindsWhatGenerateChArUcoBoardDraws) {
    const ScratchFolder folder;
    cv::aruco::Dictionary dictionary;
    cv::aruco::CharucoBoard board(cv::Size(2, 2), 2.0f, 1.0f,
                                  cv::aruco::getPredefinedDictionary(cv::aruco::DICT_4X4_50));
    const cv::Mat drawn = GenerateChArUcoBoard(folder.File("board.png"), squares.width, squares.height, squareLength,
                                               markerLength, dictionary, board, 100);
    cv::Mat onPaper;
    cv::copyMakeBorder(drawn, onPaper, 40, 40, 40, 40, cv::BORDER_CONSTANT, cv::Scalar(255));
    // Seen squarely from the front a single view leaves the lens undetermined; a slight tilt does not.
    const std::vector<cv::Point2f> from{{0, 0}, {631, 0}, {631, 473}, {0, 473}};
    const std::vector<cv::Point2f> to{{25, 18}, {600, 40}, {620, 450}, {10, 470}};
    cv::Mat tilted;
    cv::warpPerspective(onPaper, tilted, cv::getPerspectiveTransform(from, to), onPaper.size(), cv::INTER_AREA,
                        cv::BORDER_REPLICATE);
    const Shot shot = Find(tilted, squares);
    EXPECT_TRUE(shot.found) << shot.text;
    EXPECT_THAT(shot.ids, SizeIs(24));
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
