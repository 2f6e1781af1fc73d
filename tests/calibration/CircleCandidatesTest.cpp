#include "calibration/CircleCandidates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane::CameraCalibration {

using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;
using namespace TestSupport;

namespace {

struct Candidates {
    std::vector<cv::Point2f> centers;
    std::vector<double> radii;
};

Candidates Detect(const cv::Mat& image) {
    Candidates candidates;
    DetectCircleCandidates(image, candidates.centers, candidates.radii);
    return candidates;
}

/// The candidates of a gray picture, call by call, and whether it got the stronger blur.
Candidates DetectPlainly(const cv::Mat& picture, bool& busy) {
    cv::Mat gray = picture.clone();
    cv::Mat mean;
    cv::Mat deviation;
    cv::meanStdDev(gray, mean, deviation);
    busy = deviation.at<double>(0) > 15.0;
    const int k = busy ? 9 : 5;
    cv::GaussianBlur(gray, gray, {k, k}, 0, 0, cv::BORDER_DEFAULT);
    cv::Mat dx;
    cv::Mat dy;
    cv::Mat strength;
    cv::Sobel(gray, dx, CV_32F, 1, 0, 3, 1, 0, cv::BORDER_DEFAULT);
    cv::Sobel(gray, dy, CV_32F, 0, 1, 3, 1, 0, cv::BORDER_DEFAULT);
    cv::magnitude(dx, dy, strength);
    double weakest = 0.0;
    double strongest = 0.0;
    cv::minMaxLoc(strength, &weakest, &strongest);
    cv::Mat edges;
    cv::Canny(gray, edges, 50, 150, 3, false);
    const int larger = std::max(gray.rows, gray.cols);
    const int half = larger / 2;
    const int least = std::min(gray.rows, gray.cols) / 50;
    const int votes = cv::countNonZero(edges) / 1000 + 10;
    std::vector<cv::Vec3f> circles;
    cv::HoughCircles(gray, circles, cv::HOUGH_GRADIENT, 1.2, static_cast<int>(half * 1.5),
                     static_cast<int>(strongest * 0.7), votes, least, half);
    Candidates candidates;
    for (const cv::Vec3f& circle : circles) {
        candidates.centers.emplace_back(circle[0], circle[1]);
        candidates.radii.push_back(circle[2]);
    }
    return candidates;
}

void ExpectSameAsPlainly(const cv::Mat& gray, int& busyPictures) {
    bool busy = false;
    const Candidates expected = DetectPlainly(gray, busy);
    const Candidates found = Detect(gray);
    EXPECT_EQ(found.centers, expected.centers);
    EXPECT_EQ(found.radii, expected.radii);
    if (busy) ++busyPictures;
}

TEST(DetectCircleCandidates, EqualsItsStepsOnScenesAndPhotographs) {
    RandomInput random(81);
    constexpr int scenes = 24;
    int busyPictures = 0;
    for (int i = 0; i < scenes; ++i) {
        SCOPED_TRACE(i);
        const cv::Size size(random.Integer(60, 260), random.Integer(60, 260));
        const double contrast = random.Real(5.0, 120.0);
        Scene scene(size, 180.0);
        for (int k = random.Integer(1, 3); k > 0; --k) {
            const cv::Point2d center(random.Real(0.0, size.width), random.Real(0.0, size.height));
            scene.Paint(Ring(center, random.Real(8.0, 100.0), random.Real(2.0, 12.0)), 180.0 - contrast);
        }
        ExpectSameAsPlainly(scene.Blur(1.0).Noise(random.Real(0.0, 12.0), 100u + static_cast<unsigned>(i)).Gray(),
                            busyPictures);
    }
    EXPECT_GT(busyPictures, 3);
    EXPECT_LT(busyPictures, scenes - 3);
    for (const std::string& name : PictureNames()) {
        SCOPED_TRACE(name);
        cv::Mat small;
        cv::resize(LoadGrayPicture(name), small, {300, 200}, 0.0, 0.0, cv::INTER_AREA);
        ExpectSameAsPlainly(small, busyPictures);
    }
}

Scene DiscScene() { return Scene({320, 240}, 200.0).Paint(Disc({150.3, 118.8}, 60.0), 40.0).Blur(1.0); }

TEST(DetectCircleCandidates, FindsADiscToAboutTwoPixels) {
    const Candidates found = Detect(DiscScene().Gray());
    ASSERT_THAT(found.centers, SizeIs(1));
    EXPECT_THAT(found.centers[0], NearPoint(cv::Point2d(150.3, 118.8), 2.0));
    ASSERT_THAT(found.radii, SizeIs(1));
    EXPECT_NEAR(found.radii[0], 60.0, 2.0);
}

TEST(DetectCircleCandidates, ReplacesWhatTheListsHeld) {
    Candidates found{{{1.0f, 2.0f}, {3.0f, 4.0f}}, {5.0}};
    DetectCircleCandidates(DiscScene().Gray(), found.centers, found.radii);
    EXPECT_THAT(found.centers, SizeIs(1));
    EXPECT_THAT(found.radii, SizeIs(1));

    EXPECT_THROW(DetectCircleCandidates(cv::Mat(), found.centers, found.radii), cv::Exception);
    EXPECT_THAT(found.centers, IsEmpty());
    EXPECT_THAT(found.radii, IsEmpty());
}

TEST(DetectCircleCandidates, ConvertsColourWithAndWithoutAlpha) {
    const Scene scene = Scene({200, 160}, cv::Scalar(200, 120, 60)).Paint(Disc({90, 84}, 45.0), cv::Scalar(20, 60, 30));
    cv::Mat gray;
    cv::cvtColor(scene.Colour(), gray, cv::COLOR_BGR2GRAY);
    const Candidates expected = Detect(gray);
    ASSERT_THAT(expected.centers, SizeIs(1));
    for (const cv::Mat& picture : {scene.Colour(), scene.ColourWithAlpha()}) {
        EXPECT_EQ(Detect(picture).centers, expected.centers);
        EXPECT_EQ(Detect(picture).radii, expected.radii);
    }
}

TEST(DetectCircleCandidates, LeavesThePictureAlone) {
    const cv::Mat picture = DiscScene().Gray();
    const cv::Mat before = picture.clone();
    Detect(picture);
    EXPECT_THAT(picture, EqualsMat(before));
}

TEST(DetectCircleCandidates, SeesAViewAsItsCopy) {
    // A filter that read beyond the view's border would see the frame around it.
    cv::Mat framed(300, 380, CV_8UC1, cv::Scalar(0));
    cv::Mat view = framed({30, 30, 320, 240});
    DiscScene().Gray().copyTo(view);
    const Candidates expected = Detect(view.clone());
    EXPECT_EQ(Detect(view).centers, expected.centers);
    EXPECT_EQ(Detect(view).radii, expected.radii);
}

TEST(DetectCircleCandidates, HandsOnOpenCvsRefusalOfFlatPictures) {
    // The edge threshold would be 0.
    const cv::Mat flat(100, 100, CV_8UC1, cv::Scalar(7));
    try {
        Detect(flat);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const cv::Exception& failure) {
        EXPECT_EQ(failure.code, cv::Error::StsOutOfRange);
        EXPECT_EQ(failure.func, "HoughCircles");
    }
    EXPECT_THROW(Detect(cv::Mat(1, 1, CV_8UC1, cv::Scalar(7))), cv::Exception);
    EXPECT_THROW(Detect(cv::Mat(1, 50, CV_8UC1, cv::Scalar(7))), cv::Exception);
    EXPECT_THROW(Detect(cv::Mat(50, 1, CV_8UC3, cv::Scalar::all(7))), cv::Exception);
}

TEST(DetectCircleCandidates, HandsOnOpenCvsRefusalOfOtherPictures) {
    EXPECT_THROW(Detect(cv::Mat()), cv::Exception);
    EXPECT_THROW(Detect(cv::Mat(0, 0, CV_8UC3)), cv::Exception);
    EXPECT_THROW(Detect(cv::Mat(0, 0, CV_8UC4)), cv::Exception);
    EXPECT_THROW(Detect(RandomInput(3).Image({40, 40}, 2)), cv::Exception);
    for (const int depth : {CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F}) {
        SCOPED_TRACE(depth);
        cv::Mat picture;
        DiscScene().Gray().convertTo(picture, depth);
        EXPECT_THROW(Detect(picture), cv::Exception);
    }
}

TEST(DetectCircleCandidates, FindsNothingInASingleRowOrColumn) {
    cv::Mat row(1, 64, CV_8UC1, cv::Scalar(0));
    row.colRange(20, 40).setTo(255);
    EXPECT_THAT(Detect(row).centers, IsEmpty());
    EXPECT_THAT(Detect(row.t()).centers, IsEmpty());
}

// The middle of these pictures is (50, 40).
const cv::Size hundredByEighty(100, 80);

TEST(NearestCandidate, IsTheNearestWhateverTheSizes) {
    EXPECT_THAT(NearestCandidate(hundredByEighty, {{80, 40}, {45, 40}, {50, 60}}, {21.0, 30.0, 400.0}), Optional(1u));
}

TEST(NearestCandidate, PassesOverRadiiOfTwentyAndBelow) {
    EXPECT_EQ(NearestCandidate(hundredByEighty, {{50, 40}}, {20.0}), std::nullopt);
    EXPECT_THAT(NearestCandidate(hundredByEighty, {{50, 40}}, {std::nextafter(20.0, 21.0)}), Optional(0u));
    EXPECT_THAT(NearestCandidate(hundredByEighty, {{50, 40}, {0, 0}}, {20.0, 20.5}), Optional(1u));
}

TEST(NearestCandidate, TakesTheFirstOfATie) {
    EXPECT_THAT(NearestCandidate(hundredByEighty, {{90, 40}, {60, 40}, {40, 40}, {50, 50}}, {30, 30, 40, 50}),
                Optional(1u));
}

TEST(NearestCandidate, MustBeNearerThanTheLongerSide) {
    EXPECT_EQ(NearestCandidate(hundredByEighty, {{150, 40}}, {30.0}), std::nullopt);
    EXPECT_THAT(NearestCandidate(hundredByEighty, {{149.99f, 40}}, {30.0}), Optional(0u));
    EXPECT_THAT(NearestCandidate({80, 100}, {{40, 149}}, {30.0}), Optional(0u));
}

TEST(NearestCandidate, CountsFromTheMiddleOfWholePixels) {
    // The middle of 101 x 81 is (50, 40) and not (50.5, 40.5).
    EXPECT_THAT(NearestCandidate({101, 81}, {{50.6f, 40.6f}, {49.5f, 39.5f}}, {30.0, 30.0}), Optional(1u));
}

TEST(NearestCandidate, IsNoneOfNone) { EXPECT_EQ(NearestCandidate(hundredByEighty, {}, {}), std::nullopt); }

TEST(NearestCandidate, IsNeverOneThatIsNotANumber) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(NearestCandidate(hundredByEighty, {{nan, 40}, {50, 40}}, {30.0, nan}), std::nullopt);
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
