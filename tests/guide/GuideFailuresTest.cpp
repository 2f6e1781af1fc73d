// What the user's guide says of failures: each text that a page quotes is provoked, and each that is provoked is
// quoted.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#include <opencv2/features2d.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "QuorvaneVision.h"
#include "tests/guide/Pages.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ScratchFolder.h"

namespace Quorvane::TestSupport {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

namespace Calibration = Quorvane::CameraCalibration;

const cv::Mat plain(240, 320, CV_8UC3, cv::Scalar(30, 120, 60));

struct Failure {
    int status = 0;
    std::string text;
    cv::Mat destination;
};

Failure RunOf(const std::string& algorithm, const cv::Mat& picture,
              const std::function<void(Quorvane::Algorithm&)>& configure) {
    const std::unique_ptr<Quorvane::Algorithm> made(AlgorithmFactory().CreateAlgorithm(algorithm));
    configure(*made);
    Failure failure;
    failure.status = made->Execute(picture, failure.destination);
    made->GetErrorMsg(failure.text);
    return failure;
}

/// The page has a row of a table with this status and text.
void ExpectRow(const std::string& page, const Failure& failure) {
    EXPECT_THAT(page, HasSubstr("| " + std::to_string(failure.status) + " | \"" + failure.text + "\" |"));
}

/// The call fails, and the page quotes its text.
void ExpectQuoted(bool succeeded) {
    EXPECT_FALSE(succeeded);
    EXPECT_THAT(GuidePage("lens-and-boards"), HasSubstr("\"" + Calibration::GetLastError() + "\""));
}

}  // namespace

TEST(GuideFailures, OfLaserDots) {
    const Failure empty = RunOf("BinaryForLaserMachine", cv::Mat(), [](auto&) {});
    EXPECT_EQ(empty.status, 2);
    ExpectRow(GuidePage("laser-dots"), empty);
    for (const int channels : {2, 4}) {
        const Failure silent = RunOf("BinaryForLaserMachine", cv::Mat(40, 40, CV_8UC(channels)), [](auto&) {});
        EXPECT_EQ(silent.status, 0);
        EXPECT_TRUE(silent.destination.empty());
    }
    EXPECT_THROW(RunOf("BinaryForLaserMachine", plain, [](auto& laser) { laser.SetParameter("MaskSize", -5); }),
                 cv::Exception);
}

TEST(GuideFailures, OfMarks) {
    const std::string page = GuidePage("marks");
    ExpectRow(page, RunOf("FindMarkPoint", cv::Mat(), [](auto&) {}));
    ExpectRow(page, RunOf("FindMarkPoint", plain, [](auto& marks) { marks.SetParameter("Radius", 0); }));
    ExpectRow(page, RunOf("FindMarkPoint", plain,
                          [](auto& marks) { marks.SetParameter("MarkPointType", std::string("Cross")); }));
    EXPECT_EQ(RunOf("FindMarkPoint", plain, [](auto&) {}).status, 0);
    EXPECT_THROW(RunOf("FindMarkPoint", cv::Mat(40, 40, CV_8UC2), [](auto&) {}), cv::Exception);
}

TEST(GuideFailures, OfFilling) {
    const std::string page = GuidePage("filling");
    const auto job = [](double x, double y) {
        return [=](Quorvane::Algorithm& filling) {
            filling.SetParameter("TargetShapeCenter_X", x);
            filling.SetParameter("TargetShapeCenter_Y", y);
            filling.SetParameter("TargetShapePoints_X", std::vector<double>{x});
            filling.SetParameter("TargetShapePoints_Y", std::vector<double>{y});
        };
    };
    ExpectRow(page, RunOf("IntelligentFilling", plain, [](auto&) {}));
    ExpectRow(page, RunOf("IntelligentFilling", plain, job(-16.0, 120.0)));
    ExpectRow(page, RunOf("IntelligentFilling", cv::Mat(), job(160.0, 120.0)));
    ExpectRow(page, RunOf("IntelligentFilling", plain, job(160.0, 120.0)));
    const auto noNumber = [](auto& filling) { filling.SetParameter("SimilarityMin", std::string("much")); };
    EXPECT_THROW(RunOf("IntelligentFilling", plain, noNumber), std::invalid_argument);
}

TEST(GuideFailures, OfTheLens) {
    cv::Mat K;
    cv::Mat D;
    cv::Mat straight;
    double rms = 0.0;
    ExpectQuoted(Calibration::CalibrateDistortedCamera({plain}, {7, 5}, K, D, rms));
    ExpectQuoted(Calibration::UnDistortedImage(cv::Mat(), K, D, 1.0, 1.0, straight));
    ExpectQuoted(Calibration::UnDistortedImage(plain, K, D, 1.0, 1.0, straight));
    K = cv::Mat::eye(2, 2, CV_64F);
    D = cv::Mat::zeros(1, 4, CV_64F);
    ExpectQuoted(Calibration::UnDistortedImage(plain, K, D, 1.0, 1.0, straight));
    K = cv::Mat::eye(3, 3, CV_64F);
    EXPECT_FALSE(Calibration::UnDistortedImage(plain, K, D, 1.0, 1.0, straight));
    EXPECT_THAT(GuidePage("lens-and-boards"), HasSubstr("\"" + Calibration::GetLastError() + "\" (a row"));
    for (const int length : {5, 8}) {
        D = cv::Mat::zeros(length, 1, CV_64F);
        EXPECT_FALSE(Calibration::UnDistortedImage(plain, K, D, 1.0, 1.0, straight));
        EXPECT_THAT(Calibration::GetLastError(), StartsWith("[Quorvane::CameraCalibration::UnDistortedImage]"));
    }
}

TEST(GuideFailures, OfBoards) {
    std::vector<cv::Point2f> points;
    std::vector<cv::Point3f> objectPoints;
    std::vector<int> ids;
    double quality = 0.0;
    cv::Mat drawn;
    ExpectQuoted(Calibration::FindCalibrationBoard(plain, {7, 5}, points, quality, cv::CALIB_CB_SYMMETRIC_GRID,
                                                   cv::SimpleBlobDetector::create()));
    EXPECT_EQ(quality, -1.0);
    for (const cv::Mat& picture : {cv::Mat(), plain}) {
        ExpectQuoted(Calibration::FindChArUcoBoard(picture, 7, 5, 20.0F, 15.0F, false, points, objectPoints, ids,
                                                   quality, drawn, true));
    }
    points.assign(3, {});
    EXPECT_FALSE(Calibration::FindCalibrationBoard(plain, {0, 0}, points, quality = 7.0, cv::CALIB_CB_SYMMETRIC_GRID,
                                                   cv::SimpleBlobDetector::create()));
    EXPECT_THAT(points, IsEmpty());
    EXPECT_EQ(quality, -1.0);
}

TEST(GuideFailures, OfTwoCameras) {
    const std::string page = GuidePage("two-cameras");
    const Calibration::ImageDirFlags upright(-1, false, false);
    const cv::Rect all({0, 0}, plain.size());
    std::vector<cv::Point2f> points1;
    std::vector<cv::Point2f> points2;
    cv::Mat picture;
    double seamX = 7.0;
    EXPECT_FALSE(Calibration::CalibrationMatchPointsForDualCam(cv::Mat(), upright, all, plain, upright, all, 0.75, 4.0,
                                                               0.3, points1, points2));
    EXPECT_THAT(page, HasSubstr("\"" + Calibration::GetLastError() + "\""));
    cv::Mat homography = cv::Mat::eye(3, 3, CV_64F);
    EXPECT_FALSE(Calibration::CreateMatchesImage(plain, upright, cv::Mat(), upright, {}, {}, picture));
    EXPECT_THAT(page, HasSubstr("\"" + Calibration::GetLastError() + "\""));
    EXPECT_FALSE(Calibration::DoBlendingImageForDualCam(plain, upright, cv::Mat(), upright, 1.0, 1.0, homography, seamX,
                                                        picture));
    EXPECT_EQ(seamX, 7.0);
    EXPECT_TRUE(Calibration::CalibrationMatchPointsForDualCam(plain, upright, all, plain, upright, all, 0.75, 4.0, 0.3,
                                                              points1, points2));
    EXPECT_THAT(points1, IsEmpty());
    double meanError = 7.0;
    EXPECT_FALSE(Calibration::CreateHomography(points1, points2, homography, meanError, 3.0, 2000, 0.995));
    EXPECT_EQ(meanError, -1.0);
    cv::Point2f transformed(3, 4);
    EXPECT_FALSE(Calibration::TransformPoint(cv::Mat(), {1, 1}, transformed));
    EXPECT_EQ(transformed, cv::Point2f(3, 4));
}

TEST(GuideFailures, OfScaleAndCross) {
    const cv::Mat light(240, 320, CV_8UC1, cv::Scalar(200));
    cv::Mat speck = light.clone();
    speck.at<uchar>(120, 160) = 30;
    cv::Point2f center(3, 4);
    double radius = 5.0;
    double scale = 6.0;
    EXPECT_FALSE(Calibration::CalScalePixToMmUseCircle(speck, 8.0, 0.0, center, radius, scale));
    EXPECT_EQ(scale, -1.0);
    EXPECT_FALSE(Calibration::FindCircleCross(speck, center, radius));
    EXPECT_EQ(center, cv::Point2f(3, 4));
    EXPECT_EQ(radius, 5.0);
    EXPECT_FALSE(Calibration::CalScalePixToMmUseCircle(cv::Mat(50, 50, CV_8UC2), 8.0, 0.0, center, radius, scale));
    EXPECT_THROW(Calibration::CalScalePixToMmUseCircle(light, 8.0, 0.0, center, radius, scale), cv::Exception);
    EXPECT_THROW(Calibration::CalScalePixToMmUseCircle(cv::Mat(), 8.0, 0.0, center, radius, scale), cv::Exception);
}

TEST(GuideFailures, OfCalibrationFiles) {
    const std::string page = GuidePage("lens-and-boards");
    const ScratchFolder folder;
    cv::Mat homography = cv::Mat::eye(3, 3, CV_64F);
    const auto expectPrefix = [&](bool succeeded, const std::string& file) {
        EXPECT_FALSE(succeeded);
        const std::string text = Calibration::GetLastError();
        ASSERT_THAT(text, HasSubstr(file));
        EXPECT_THAT(page, HasSubstr("\"" + text.substr(0, text.find(file)) + "\" and the name"));
    };
    const std::string nowhere = folder.File("no-folder/file.yml");
    const std::string lens = folder.File("lens.yml");
    ASSERT_TRUE(Calibration::SaveCameraParameters(lens, homography, homography, 0.5));
    expectPrefix(Calibration::SaveHomography(nowhere, homography), nowhere);
    expectPrefix(Calibration::LoadHomography(nowhere, homography), nowhere);
    expectPrefix(Calibration::LoadHomography(lens, homography), lens);
}

TEST(GuideFailures, OfTheMachineMap) {
    const std::string page = GuidePage("machine-mapping");
    Calibration::CameraCalibrator calibrator;
    double maxError = 7.0;
    EXPECT_FALSE(calibrator.Calibrate({{1, 1}, {2, 2}}, {{1, 1}, {2, 2}}, 640, 480, maxError));
    EXPECT_EQ(maxError, 7.0);
    const std::vector<cv::Point2f> oneLine{{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {7, 7}};
    EXPECT_FALSE(calibrator.Calibrate(oneLine, oneLine, 640, 480, maxError));
    EXPECT_EQ(calibrator.ImageToMachine({3, 4}), cv::Point2f(-1, -1));
    EXPECT_EQ(calibrator.MachineToImage({3, 4}), cv::Point2f(-1, -1));
    EXPECT_EQ(calibrator.WarpPerspectivePoint({3, 4}, 2), cv::Point2f(-1, -1));
    EXPECT_EQ(calibrator.ImageToMachine_Distance(5.0, {3, 4}, Calibration::CameraCalibrator::Diagonal), -1.0);
    EXPECT_EQ(calibrator.CalcMaxError({}, {}), 0.0);

    // A good map, and then points that have none.
    const std::vector<cv::Point2f> grid = calibrator.GenerateCailbratePointGrid(100.0, 80.0, 3);
    ASSERT_TRUE(calibrator.Calibrate(grid, grid, 640, 480, maxError));
    EXPECT_EQ(calibrator.CalcMaxError({}, {}), -1.0);
    const std::vector<cv::Point2f> onePoint(6, cv::Point2f(1, 1));
    if (!calibrator.Calibrate(onePoint, onePoint, 640, 480, maxError) &&
        calibrator.ImageToMachine({3, 4}) == cv::Point2f(-1, -1)) {
        const CapturedStream errors(std::cerr);
        EXPECT_EQ(calibrator.MachineToImage({3, 4}), cv::Point2f(0, 0));
        EXPECT_TRUE(calibrator.IsCalibrateVaild());
        EXPECT_EQ(calibrator.CalcMaxError(grid, grid), -1.0);
        EXPECT_EQ(calibrator.WarpPerspectiveImage(plain, 2).size(), plain.size());
        EXPECT_EQ(calibrator.ImageToMachine_Distance(5.0, {3, 4}, Calibration::CameraCalibrator::Diagonal), 0.0);
        EXPECT_THAT(page, HasSubstr("\"" + errors.Text().substr(0, errors.Text().find('\n')) + "\""));
    } else {
        ADD_FAILURE() << "six equal points have a map";
    }
}

TEST(GuideFailures, OfMeasurements) {
    Line line({5, 5}, {9, 9});
    UtilityFunctions::MeasureLine(plain, {160, 120}, 100, 50, line, EdgePolarity::All, SearchDirection::LeftToRight,
                                  1.0, 30.0, 1.0);
    EXPECT_EQ(line.toString(), Line().toString());
    EXPECT_THAT(Line().getIntersectionWithImage(plain.size()), IsEmpty());
    cv::Point2f center(3, 4);
    double radius = 5.0;
    double score = -1.0;
    const CapturedStream errors(std::cerr);
    UtilityFunctions::MeasureCircle(plain, {160, 120}, 50, center, radius, score, EdgePolarity::All,
                                    SearchDirection::Outward, 1.0, 30.0, 0.0);
    EXPECT_EQ(score, -1.0);
    EXPECT_EQ(center, cv::Point2f(3, 4));
    EXPECT_THAT(GuidePage("measuring"), HasSubstr("\"" + errors.Text().substr(0, errors.Text().find('\n')) + "\""));
}

TEST(GuideFailures, OfContours) {
    using namespace Quorvane::UtilityFunctions;
    cv::Point2f offset;
    cv::Point2f center;
    double angle = 7.0;
    AlignPoints({{0, 0}, {1, 0}}, {{0, 0}}, offset, center, angle);
    EXPECT_EQ(angle, 0.0);
    AlignPoints({{0, 0}, {1, 0}}, {{0, 0}, {0, 1}}, offset, center, angle);
    EXPECT_NEAR(angle, 90.0, 1e-4);
    AlignPoints({{0, 0}, {1, 0}, {3, 1}}, {{0, 0}, {0, 1}, {-1, 3}}, offset, center, angle);
    EXPECT_NEAR(angle, -90.0, 1e-4);
    EXPECT_EQ(CalPerimeterOfContour({}), 0.0);
    EXPECT_TRUE(std::isnan(CalculateAverageAngle({})));
    cv::Point2f first(3, 4);
    cv::Point2f second(5, 6);
    float distance = 7.0F;
    FindFarthestPairPointInContour({{1, 1}}, first, second, distance);
    EXPECT_EQ(first, cv::Point2f(3, 4));
    EXPECT_EQ(second, cv::Point2f(5, 6));
    EXPECT_EQ(distance, 0.0F);
    EXPECT_EQ(GetRotateRectConner({{5, 5}, {4, 2}, 0}, 6), GetRotateRectConner({{5, 5}, {4, 2}, 0}, 2));
    EXPECT_TRUE(CalculateExpansionHomography(cv::Mat::eye(2, 3, CV_64F), 2.0).empty());
    EXPECT_TRUE(CutImageBasePoint(cv::Mat(), {5, 5}, 4, 4, false).empty());
    EXPECT_THROW(CutImageBasePoint(plain, {2000, 5}, 4, 4, false), cv::Exception);
    EXPECT_THROW(CutImageBasePoint(plain, {5, 5}, -4, 4, false), cv::Exception);
    EXPECT_EQ(CutImageBasePoint(plain, {2, 2}, 40, 40, false).size(), cv::Size(40, 40));
    EXPECT_EQ(CutImageBasePoint(plain, {310, 230}, 40, 40, false).size(), cv::Size(30, 30));
}

TEST(GuideFailures, OfImageOperators) {
    using namespace Quorvane::UtilityFunctions;
    cv::Mat result;
    EXPECT_THROW(ApplySketchFilter(cv::Mat(), result, 50), cv::Exception);
    EXPECT_TRUE(fillHolesMorphologicalEnhanced(cv::Mat(), 10, 100, 3, 3).empty());
    EXPECT_EQ(findDominantLABColorPointInContour(cv::Mat(), {{0, 0}}), cv::Point(-1, -1));
    EXPECT_THROW(fillHolesMorphologicalEnhanced(cv::Mat(20, 20, CV_8UC1), 10, 100, 3, 3), cv::Exception);
    EXPECT_THROW(fillHolesMorphologicalEnhanced(plain, 10, 100, -3, 3), cv::Exception);
    EXPECT_THROW(findDominantLABColorPointInContour(cv::Mat(20, 20, CV_8UC1), {{0, 0}, {9, 0}, {9, 9}}), cv::Exception);

    std::vector<cv::Mat> regions;
    std::vector<cv::Point2f> centers;
    ThresholdAndFindAllRegionCenter(cv::Mat(20, 20, CV_8UC2), 0, 255, regions, centers);
    EXPECT_THAT(centers, IsEmpty());
    ThresholdAndFindAllRegionCenter(cv::Mat(20, 20, CV_16UC1, cv::Scalar(9)), 0, 255, regions, centers);
    EXPECT_THAT(centers, Not(IsEmpty()));
    const CapturedStream errors(std::cerr);
    ThresholdAndFindAllRegionCenter(cv::Mat(), 0, 255, regions, centers);
    EXPECT_THAT(GuidePage("image-operators"),
                HasSubstr("\"" + errors.Text().substr(0, errors.Text().find('\n')) + "\""));
}

TEST(GuideFailures, OfChangeDetection) {
    using namespace Quorvane::UtilityFunctions;
    const cv::Mat smaller(10, 10, CV_8UC3, cv::Scalar::all(0));
    const cv::Mat twoChannels(240, 320, CV_8UC2, cv::Scalar::all(0));
    EXPECT_FALSE(IsMatChanged_GrayDiff(cv::Mat(), cv::Mat()));
    EXPECT_TRUE(IsMatChanged_GrayDiff(cv::Mat(), plain));
    EXPECT_THROW(IsMatChanged_GrayDiff(smaller, plain), cv::Exception);
    EXPECT_THROW(IsMatChanged_GrayDiff(twoChannels, plain), cv::Exception);
    EXPECT_THROW(IsMatChanged_HammingDistance(cv::Mat(), cv::Mat(), 5), cv::Exception);
    EXPECT_THROW(IsMatChanged_HammingDistance(cv::Mat(), plain, 5), cv::Exception);
    EXPECT_FALSE(IsMatChanged_HammingDistance(smaller, plain, 5));
    const CapturedStream errors(std::cerr);
    EXPECT_FALSE(IsMatChanged_HammingDistance(twoChannels, plain, 5));
    EXPECT_THAT(GuidePage("change-detection"),
                HasSubstr("\"" + errors.Text().substr(0, errors.Text().find('\n')) + "\""));
    EXPECT_THROW(IsMatChanged_GrayDiff(plain, twoChannels), cv::Exception);
    EXPECT_THROW(IsMatChanged_GrayDiff(twoChannels, twoChannels), cv::Exception);
    cv::Mat halfLight = plain.clone();
    halfLight.colRange(160, 320) = cv::Scalar::all(255);
    EXPECT_FALSE(IsMatChanged_HammingDistance(halfLight, twoChannels, 32));
    EXPECT_TRUE(IsMatChanged_HammingDistance(halfLight, twoChannels, 31));
}

}  // namespace Quorvane::TestSupport
