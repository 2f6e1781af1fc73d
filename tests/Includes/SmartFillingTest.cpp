#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "Includes/smartfilling.h"
#include "tests/Includes/FillingParts.h"
#include "tests/reference/PlainFilling.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"

namespace Quorvane {

using line2Dup::Detector;
using testing::IsEmpty;
using TestSupport::EqualsMat;
using TestSupport::FillingNotices;
using TestSupport::FirstPartOf;
using TestSupport::Listen;
using TestSupport::NearPoint;
using TestSupport::RandomInput;
using TestSupport::SmallTray;
using TestSupport::TemplateImage;

namespace {

const SmartFilling filling;

TEST(RotatePoint, TurnsFromTheXAxisTowardsTheYAxis) {
    EXPECT_THAT(RotatePoint({12, 20}, {10, 20}, 90.0), NearPoint(cv::Point2f(10, 22), 1e-6));
    EXPECT_THAT(RotatePoint({12, 20}, {10, 20}, -30.0), NearPoint(cv::Point2d(10 + std::sqrt(3.0), 19.0), 1e-6));
    EXPECT_EQ(RotatePoint({12.3f, 20.7f}, {12.3f, 20.7f}, 77.0), cv::Point2f(12.3f, 20.7f));
}

TEST(RotatePoint, IsTheInverseOfItsOppositeTurn) {
    RandomInput random(64);
    for (int i = 0; i < 100; ++i) {
        const cv::Point2f point(static_cast<float>(random.Real(0, 2000)), static_cast<float>(random.Real(0, 2000)));
        const cv::Point2f centre(static_cast<float>(random.Real(0, 2000)), static_cast<float>(random.Real(0, 2000)));
        const double angle = random.Real(-720.0, 720.0);
        EXPECT_THAT(RotatePoint(RotatePoint(point, centre, angle), centre, -angle), NearPoint(point, 1e-3));
    }
}

TEST(CreateMask, RefusesAnEmptyImage) {
    try {
        filling.CreateMask(cv::Mat(), true, 6, 0.6);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const cv::Exception& exception) {
        EXPECT_EQ(exception.code, cv::Error::StsAssert);
        EXPECT_EQ(exception.err, "!mRotated_img.empty()");
        EXPECT_EQ(exception.func, "SmartFilling::CreateMask");
        EXPECT_EQ(exception.file, "Includes\\smartfilling");
    }
}

TEST(CreateMask, TakesTheBrightPixelsByOtsu) {
    cv::Mat image(20, 30, CV_8U, cv::Scalar(40));
    image(cv::Rect(5, 5, 10, 8)).setTo(200);
    EXPECT_THAT(filling.CreateMask(image, false, 0, 0.6), EqualsMat(cv::Mat(image == 200)));
    EXPECT_THAT(filling.CreateMask(image, true, 0, 0.6), EqualsMat(cv::Mat(image == 200)));
    EXPECT_EQ(image.at<uchar>(0, 0), 40);
}

TEST(CreateMask, TurnsTheMaskAroundWhereWhiteIsMoreThanTheLimit) {
    cv::Mat image(10, 10, CV_8U, cv::Scalar(30));
    image(cv::Rect(0, 0, 10, 6)).setTo(220);
    EXPECT_THAT(filling.CreateMask(image, false, 0, 0.6), EqualsMat(cv::Mat(image == 220)));  // exactly the limit
    EXPECT_THAT(filling.CreateMask(image, false, 0, 0.59), EqualsMat(cv::Mat(image == 30)));
    image(cv::Rect(0, 6, 1, 1)).setTo(220);
    EXPECT_THAT(filling.CreateMask(image, false, 0, 0.6), EqualsMat(cv::Mat(image == 30)));
}

TEST(CreateMask, ConvertsColoursAsOpenCvDoes) {
    RandomInput random(65);
    const cv::Mat colour = random.Image({40, 30}, 3);
    cv::Mat gray;
    cv::cvtColor(colour, gray, cv::COLOR_BGR2GRAY);
    EXPECT_THAT(filling.CreateMask(colour, true, 3, 0.6), EqualsMat(filling.CreateMask(gray, true, 3, 0.6)));
    cv::Mat withAlpha;
    cv::cvtColor(colour, withAlpha, cv::COLOR_BGR2BGRA);
    EXPECT_THAT(filling.CreateMask(withAlpha, true, 3, 0.6), EqualsMat(filling.CreateMask(gray, true, 3, 0.6)));
    EXPECT_THROW(filling.CreateMask(random.Image({40, 30}, 2), true, 3, 0.6), cv::Exception);
}

TEST(CreateMask, ClosesAndWidensByADisc) {
    cv::Mat image = cv::Mat::zeros(60, 60, CV_8U);
    image(cv::Rect(20, 20, 8, 20)).setTo(255);
    image(cv::Rect(32, 20, 8, 20)).setTo(255);
    const cv::Mat disc = cv::getStructuringElement(cv::MORPH_ELLIPSE, {7, 7});
    cv::Mat expected;
    cv::morphologyEx(image, expected, cv::MORPH_CLOSE, disc);
    cv::dilate(expected, expected, disc);
    const cv::Mat mask = filling.CreateMask(image, false, 3, 0.6);
    EXPECT_THAT(mask, EqualsMat(expected));
    EXPECT_EQ(mask.at<uchar>(30, 30), 255);
    EXPECT_EQ(mask.at<uchar>(30, 17), 255);
    EXPECT_EQ(mask.at<uchar>(30, 16), 0);
    EXPECT_THAT(filling.CreateMask(image, false, -3, 0.6), EqualsMat(image));
}

TEST(CreateMask, MakesEightBitsOfSixteen) {
    cv::Mat image(20, 30, CV_16U, cv::Scalar(1000));
    image(cv::Rect(5, 5, 10, 8)).setTo(50000);
    const cv::Mat mask = filling.CreateMask(image, false, 0, 0.6);
    EXPECT_THAT(mask, EqualsMat(cv::Mat(image == 50000)));
}

TEST(ExtractTemplatePoints, GivesThePlacesOfFeaturesAndTellsTheirNumberTwice) {
    const TemplateImage part = FirstPartOf(SmallTray());
    std::vector<cv::Point2f> points;
    const auto console = Listen([&] { points = filling.ExtractTemplatePoints(part.image, part.target); });
    const std::string count = std::to_string(points.size());
    EXPECT_EQ(FillingNotices(console.out), count + "\n" + count + "\n");
    EXPECT_EQ(console.err, "");
    EXPECT_GT(points.size(), 20U);

    Detector detector(800, {1, 2}, 30.0f, 60.0f);
    const cv::Mat mask(part.image.size(), CV_8U, cv::Scalar(255));
    const int id = detector.addShapeTemplate(part.image, "any", mask, 0);
    const line2Dup::ShapeTemplate& finest = detector.templateLevels("any", id).at(0);
    ASSERT_EQ(points.size(), finest.features.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_EQ(points[i], cv::Point2f(static_cast<float>(finest.features[i].x + finest.tlX),
                                         static_cast<float>(finest.features[i].y + finest.tlY)));
    }
}

TEST(ExtractTemplatePoints, OfAFlatImageAreNone) {
    std::vector<cv::Point2f> points;
    const auto console = Listen([&] {
        points = filling.ExtractTemplatePoints(cv::Mat(60, 60, CV_8UC3, cv::Scalar(90, 90, 90)), {30, 30});
    });
    EXPECT_THAT(points, IsEmpty());
    EXPECT_EQ(console.out, "too few features, abort\n");
    EXPECT_EQ(console.err, "[Error] template_id out of range: -1, available = 0\n");
}

TEST(DrawMatchedShapes, DotsTheShapeTurnedAboutTheTargetAndShifted) {
    cv::Mat image = cv::Mat::zeros(60, 80, CV_8UC3);
    FillingMatch match{50.0f, 30.0f, 90.0f, 1.0f, 0, 90.0f};
    filling.DrawMatchedShapes({{30.0f, 20.0f}, {20.4f, 20.0f}}, {20.0f, 20.0f}, {match}, image);
    cv::Mat expected = cv::Mat::zeros(60, 80, CV_8UC3);
    cv::circle(expected, {50, 20}, 1, cv::Scalar(0, 0, 255), cv::FILLED);
    cv::circle(expected, {50, 30}, 1, cv::Scalar(0, 0, 255), cv::FILLED);
    EXPECT_THAT(image, EqualsMat(expected));
}

TEST(DrawMatchedShapes, StartsFromTheSamePointsForEachMatch) {
    const FillingMatch first{50.0f, 30.0f, 33.0f, 1.0f, 0, 90.0f};
    const FillingMatch second{12.0f, 40.0f, 200.0f, 1.0f, 0, 90.0f};
    const std::vector<cv::Point2f> points{{30.0f, 20.0f}, {20.0f, 26.5f}};
    cv::Mat together = cv::Mat::zeros(60, 80, CV_8UC3);
    filling.DrawMatchedShapes(points, {20.0f, 20.0f}, {first, second}, together);
    cv::Mat apart = cv::Mat::zeros(60, 80, CV_8UC3);
    filling.DrawMatchedShapes(points, {20.0f, 20.0f}, {second}, apart);
    filling.DrawMatchedShapes(points, {20.0f, 20.0f}, {first}, apart);
    EXPECT_THAT(together, EqualsMat(apart));
}

TEST(DrawMatchedShapes, OfNoPointsOrNoMatchesIsNothing) {
    cv::Mat image = cv::Mat::zeros(60, 80, CV_8UC3);
    const cv::Mat before = image.clone();
    filling.DrawMatchedShapes({}, {20.0f, 20.0f}, {FillingMatch{50.0f, 30.0f, 0.0f, 1.0f, 0, 90.0f}}, image);
    filling.DrawMatchedShapes({{1.0f, 2.0f}}, {20.0f, 20.0f}, {}, image);
    EXPECT_THAT(image, EqualsMat(before));
}

TEST(ExtractTemplatePoints, OfAnEmptyImageAreNone) {
    std::vector<cv::Point2f> points;
    const auto console = Listen([&] { points = filling.ExtractTemplatePoints(cv::Mat(), {30, 30}); });
    EXPECT_THAT(points, IsEmpty());
    EXPECT_EQ(console.out, "too few features, abort\n");
    EXPECT_EQ(console.err, "[Error] template_id out of range: -1, available = 0\n");
}
}  // namespace
}  // namespace Quorvane
