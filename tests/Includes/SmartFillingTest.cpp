#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "Includes/smartfilling.h"
#include "tests/reference/PlainFilling.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ConsoleText.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Tray.h"

namespace Quorvane {

using line2Dup::Detector;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::EqualsMat;
using TestSupport::NearPoint;
using TestSupport::RandomInput;
using TestSupport::Tray;
using TestSupport::TraySettings;

namespace {

const SmartFilling filling;

Detector MakeDetector() { return Detector(64, {1, 2}, 30.0f, 60.0f); }

/// What an action writes to the two streams of a console.
struct Console {
    std::string out;
    std::string err;
};

template <typename Action>
Console Listen(Action action) {
    const TestSupport::CapturedStream out(std::cout);
    const TestSupport::CapturedStream err(std::cerr);
    action();
    return {out.Text(), err.Text()};
}

/// Times, and the matcher's own notice of a small template, are not part of what is looked at here.
std::string WithoutTimes(const std::string& text) {
    return TestSupport::WithoutTimes(TestSupport::WithoutLine(text, "have no enough features, exaustive mode"));
}

const std::string timeLine = "\nelasped time:#s\n\n";

Tray SmallTray() {
    TraySettings settings;
    settings.size = {333, 250};
    settings.partSize = 70.0;
    settings.columns = 3;
    settings.rows = 2;
    return TestSupport::RenderTray(settings);
}

/// The first part with its surroundings, the point that is looked for being at `target` in it.
struct Template {
    cv::Mat image;
    cv::Point2f target;
    cv::Point2f corner;
};

Template FirstPartOf(const Tray& tray, double partSize) {
    const cv::Point2d middle = tray.poses.front().middle;
    const cv::Point2d half(partSize / 2.0 + 6.0, partSize / 2.0 + 6.0);
    const cv::Rect box =
        cv::Rect(cv::Point(middle - half), cv::Point(middle + half)) & cv::Rect(cv::Point(), tray.picture.size());
    const cv::Point2d mark = tray.poses.front().Place(TestSupport::TrayPartMark(partSize));
    const cv::Point2f corner(box.tl());
    return {tray.picture(box).clone(), cv::Point2f(mark) - corner, corner};
}

std::vector<ShapeVariant> Train(const Template& part, Detector& detector, bool rotateFromFirst = true,
                                std::vector<float> angles = {0.0f, 360.0f}, float step = 0.2f) {
    return filling.TrainTemplateFromMat(part.image, detector, rotateFromFirst, true, part.target, std::move(angles),
                                        step, {1.0f}, 0.0f, 6);
}

bool SameMatches(const std::vector<FillingMatch>& a, const std::vector<FillingMatch>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const FillingMatch& m, const FillingMatch& n) {
        return m.x == n.x && m.y == n.y && m.angle == n.angle && m.scale == n.scale && m.templateId == n.templateId &&
               m.similarity == n.similarity;
    });
}

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

TEST(TrainTemplateFromMat, EqualsThePlainTraining) {
    const Template part = FirstPartOf(SmallTray(), 70.0);
    Detector detector = MakeDetector();
    std::vector<ShapeVariant> variants;
    Listen([&] { variants = Train(part, detector); });
    const Reference::TrainedTemplates plain = Reference::TrainAllAngles(part.image, part.target);
    ASSERT_EQ(variants.size(), plain.variants.size());
    EXPECT_THAT(variants, SizeIs(1800));
    for (std::size_t i = 0; i < variants.size(); ++i) {
        ASSERT_EQ(variants[i].angle, plain.variants[i].angle);
        ASSERT_EQ(variants[i].scale, 1.0f);
        ASSERT_EQ(variants[i].contour, plain.variants[i].contour);
        ASSERT_EQ(variants[i].targetOffset, part.target);
        ASSERT_EQ(variants[i].imageCentre, plain.variants[i].imageCentre);
        const auto& levels = detector.templateLevels("test", static_cast<int>(i));
        ASSERT_EQ(levels.size(), 2U);
        for (std::size_t l = 0; l < levels.size(); ++l) {
            const line2Dup::ShapeTemplate& expected = plain.templates.second[i][l];
            ASSERT_EQ(levels[l].tlX, expected.tlX) << i;
            ASSERT_EQ(levels[l].tlY, expected.tlY) << i;
            ASSERT_EQ(levels[l].width, expected.width) << i;
            ASSERT_EQ(levels[l].height, expected.height) << i;
            ASSERT_EQ(levels[l].features.size(), expected.features.size()) << i;
            for (std::size_t f = 0; f < expected.features.size(); ++f) {
                ASSERT_EQ(levels[l].features[f].x, expected.features[f].x) << i << ' ' << f;
                ASSERT_EQ(levels[l].features[f].y, expected.features[f].y) << i << ' ' << f;
                ASSERT_EQ(levels[l].features[f].label, expected.features[f].label) << i << ' ' << f;
                ASSERT_EQ(levels[l].features[f].theta, expected.features[f].theta) << i << ' ' << f;
            }
        }
    }
}

TEST(TrainTemplateFromMat, TellsItsTimeAndItsEnd) {
    const Template part = FirstPartOf(SmallTray(), 70.0);
    Detector detector = MakeDetector();
    const Console console = Listen([&] { Train(part, detector, true, {0.0f, 10.0f}, 5.0f); });
    EXPECT_EQ(WithoutTimes(console.out), timeLine + " TrainTemplateFromMat 完成\n\n");
    EXPECT_EQ(console.err, "");
}

TEST(TrainTemplateFromMat, CanTrainEachVariantFromItsOwnImage) {
    const Template part = FirstPartOf(SmallTray(), 70.0);
    Detector own = MakeDetector();
    Detector rotated = MakeDetector();
    Detector alone = MakeDetector();
    Listen([&] {
        EXPECT_THAT(Train(part, own, false, {0.0f, 40.0f}, 20.0f), SizeIs(3));
        EXPECT_THAT(Train(part, rotated, true, {0.0f, 40.0f}, 20.0f), SizeIs(3));
        EXPECT_THAT(Train(part, alone, true, {40.0f}, 20.0f), SizeIs(1));
    });
    const auto thetas = [](const Detector& detector, int id) {
        std::vector<float> values;
        for (const auto& feature : detector.templateLevels("test", id).at(0).features) values.push_back(feature.theta);
        return values;
    };
    EXPECT_EQ(thetas(own, 0), thetas(rotated, 0));
    EXPECT_EQ(thetas(own, 2), thetas(alone, 0));
    EXPECT_NE(thetas(own, 2), thetas(rotated, 2));
}

TEST(TrainTemplateFromMat, RotatesByTheDifferenceToTheFirstAngle) {
    const Template part = FirstPartOf(SmallTray(), 70.0);
    Detector detector = MakeDetector();
    Listen([&] { Train(part, detector, true, {30.0f, 60.0f}, 30.0f); });
    const auto& first = detector.templateLevels("test", 0).at(0).features;
    const auto& second = detector.templateLevels("test", 1).at(0).features;
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        const float turned = first[i].theta - 30.0f;
        EXPECT_FLOAT_EQ(second[i].theta, turned < 0.0f ? turned + 360.0f : turned);
    }
}

TEST(TrainTemplateFromMat, UsesTheWholeImageWithoutAMask) {
    const Template part = FirstPartOf(SmallTray(), 70.0);
    Detector detector = MakeDetector();
    std::vector<ShapeVariant> variants;
    Listen([&] {
        variants =
            filling.TrainTemplateFromMat(part.image, detector, true, false, part.target, {0.0f}, 1.0f, {1.0f}, 0.0f, 6);
    });
    ASSERT_THAT(variants, SizeIs(1));
    EXPECT_EQ(cv::boundingRect(variants[0].contour), cv::Rect(cv::Point(), part.image.size()));
}

TEST(TrainTemplateFromMat, TooFewFeaturesAreToldAndGiveNothing) {
    const Template flat{cv::Mat(60, 60, CV_8UC3, cv::Scalar(90, 90, 90)), {30, 30}, {}};
    Detector detector = MakeDetector();
    std::vector<ShapeVariant> variants;
    const Console console = Listen([&] { variants = Train(flat, detector); });
    EXPECT_THAT(variants, IsEmpty());
    EXPECT_EQ(console.out, "too few features, abort\n");
    EXPECT_EQ(console.err,
              "[Error] template_id out of range: -1, available = 0\n"
              "[异常] 模板添加失败，angle = 0，错误信息: first template has no features\n");
}

TEST(TrainTemplateFromMat, NamesTheAngleThatFailed) {
    const Template flat{cv::Mat(60, 60, CV_8UC3, cv::Scalar(90, 90, 90)), {30, 30}, {}};
    Detector detector = MakeDetector();
    const Console console = Listen([&] { Train(flat, detector, true, {12.5f, 360.0f}); });
    EXPECT_THAT(console.err, testing::HasSubstr("angle = 12.5，错误信息: first template"));
}

TEST(TrainTemplateFromMat, ExceptionsOfTheTrainingAreToldAndGiveNothing) {
    const cv::Mat sixteenBit(60, 60, CV_16UC3, cv::Scalar(900, 900, 900));
    Detector detector = MakeDetector();
    std::vector<ShapeVariant> variants{ShapeVariant()};
    const Console console = Listen([&] {
        variants =
            filling.TrainTemplateFromMat(sixteenBit, detector, true, false, {0, 0}, {0.0f}, 1.0f, {1.0f}, 0.0f, 6);
    });
    EXPECT_THAT(variants, IsEmpty());
    EXPECT_THAT(console.err, testing::HasSubstr("[异常] 模板添加失败，angle = 0，错误信息: "));
    EXPECT_EQ(console.out.find("TrainTemplateFromMat"), std::string::npos);
}

TEST(TrainTemplateFromMat, WhatCannotEvenBeTurnedReachesTheCaller) {
    Detector detector = MakeDetector();
    EXPECT_THROW(filling.TrainTemplateFromMat(cv::Mat(60, 60, CV_32SC3, cv::Scalar(9, 9, 9)), detector, true, false,
                                              {0, 0}, {0.0f}, 1.0f, {1.0f}, 0.0f, 6),
                 cv::Exception);
    EXPECT_THROW(Train({cv::Mat(), {0, 0}, {}}, detector), cv::Exception);
}

TEST(TrainTemplateFromMat, WithoutVariantsComesToItsEnd) {
    const Template part = FirstPartOf(SmallTray(), 70.0);
    Detector detector = MakeDetector();
    const Console console = Listen([&] {
        EXPECT_THAT(Train(part, detector, true, {0.0f, 1.0f, 2.0f}, 1.0f), IsEmpty());
    });
    EXPECT_EQ(WithoutTimes(console.out), timeLine + " TrainTemplateFromMat 完成\n\n");
}

TEST(ExtractTemplatePoints, GivesThePlacesOfFeaturesAndTellsTheirNumberTwice) {
    const Template part = FirstPartOf(SmallTray(), 70.0);
    std::vector<cv::Point2f> points;
    const Console console = Listen([&] { points = filling.ExtractTemplatePoints(part.image, part.target); });
    const std::string count = std::to_string(points.size());
    EXPECT_EQ(WithoutTimes(console.out), count + "\n" + count + "\n");
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
    const Console console = Listen([&] {
        points = filling.ExtractTemplatePoints(cv::Mat(60, 60, CV_8UC3, cv::Scalar(90, 90, 90)), {30, 30});
    });
    EXPECT_THAT(points, IsEmpty());
    EXPECT_EQ(console.out, "too few features, abort\n");
    EXPECT_EQ(console.err, "[Error] template_id out of range: -1, available = 0\n");
}

TEST(MatchTemplates, EqualsThePlainSearch) {
    const Tray tray = SmallTray();
    const Template part = FirstPartOf(tray, 70.0);
    Detector detector = MakeDetector();
    std::vector<FillingMatch> matches;
    Listen([&] { matches = filling.MatchTemplates(tray.picture, detector, Train(part, detector), 75); });
    const auto plain = Reference::MatchTemplates(tray.picture, Reference::TrainAllAngles(part.image, part.target), 75);
    EXPECT_TRUE(SameMatches(matches, plain)) << matches.size() << " against " << plain.size();
    EXPECT_THAT(matches, SizeIs(6));
}

TEST(MatchTemplates, FindsEachCopyWithItsPlaceAndItsTurn) {
    const Tray tray = SmallTray();
    const Template part = FirstPartOf(tray, 70.0);
    Detector detector = MakeDetector();
    std::vector<FillingMatch> matches;
    Listen([&] { matches = filling.MatchTemplates(tray.picture, detector, Train(part, detector), 75); });
    ASSERT_THAT(matches, SizeIs(tray.poses.size()));
    for (const TestSupport::PartPose& pose : tray.poses) {
        const cv::Point2d place = pose.Place(TestSupport::TrayPartMark(70.0));
        const auto match = std::min_element(matches.begin(), matches.end(), [&](const auto& a, const auto& b) {
            return cv::norm(cv::Point2d(a.x, a.y) - place) < cv::norm(cv::Point2d(b.x, b.y) - place);
        });
        EXPECT_THAT(cv::Point2f(match->x, match->y), NearPoint(place, 2.0));
        EXPECT_LT(std::abs(std::remainder(match->angle - pose.angle, 360.0)), 6.0) << pose.angle;
        EXPECT_EQ(match->scale, 1.0f);
    }
}

TEST(MatchTemplates, TellsTheCutSizeAndItsTime) {
    const Tray tray = SmallTray();
    Detector detector = MakeDetector();
    const Console console = Listen([&] {
        const auto variants = Train(FirstPartOf(tray, 70.0), detector, true, {0.0f}, 1.0f);
        std::cout << "--" << std::endl;
        filling.MatchTemplates(tray.picture, detector, variants, 90);
    });
    const std::string heard = WithoutTimes(console.out);
    EXPECT_EQ(heard.substr(heard.find("--")),
              "--\n匹配图尺寸: [320 x 240]\nconstruct response map" + timeLine + "templ match" + timeLine + timeLine);
}

TEST(MatchTemplates, WithoutTemplatesFindsNothing) {
    Detector detector = MakeDetector();
    std::vector<FillingMatch> matches{FillingMatch()};
    Listen([&] { matches = filling.MatchTemplates(SmallTray().picture, detector, {}, 80); });
    EXPECT_THAT(matches, IsEmpty());
}

TEST(MatchTemplates, AThresholdOfAHundredFindsNothing) {
    const Tray tray = SmallTray();
    Detector detector = MakeDetector();
    std::vector<FillingMatch> matches{FillingMatch()};
    Listen([&] {
        const auto variants = Train(FirstPartOf(tray, 70.0), detector, true, {0.0f}, 1.0f);
        matches = filling.MatchTemplates(tray.picture, detector, variants, 100);
    });
    EXPECT_THAT(matches, IsEmpty());
}

TEST(MatchTemplates, LooksNoFartherThanItsCut) {
    // The same pixels with others beside them: a picture of its own and a part of a larger one give the same.
    const Tray tray = SmallTray();
    Detector detector = MakeDetector();
    std::vector<FillingMatch> whole;
    std::vector<FillingMatch> part;
    Listen([&] {
        const auto variants = Train(FirstPartOf(tray, 70.0), detector, true, {0.0f, 360.0f}, 5.0f);
        const cv::Rect window(3, 2, 320, 240);
        whole = filling.MatchTemplates(tray.picture(window).clone(), detector, variants, 60);
        part = filling.MatchTemplates(tray.picture(window), detector, variants, 60);
    });
    EXPECT_FALSE(whole.empty());
    EXPECT_TRUE(SameMatches(whole, part));
}

TEST(MatchTemplates, AnImageSmallerThanABlockIsOpenCvsToRefuse) {
    Detector detector = MakeDetector();
    Listen([&] {
        EXPECT_THROW(filling.MatchTemplates(cv::Mat(15, 200, CV_8UC3, cv::Scalar(1, 2, 3)), detector, {}, 80),
                     cv::Exception);
    });
}

TEST(MatchTemplates, VariantsThatAreNotThoseOfTheTrainingAreRefused) {
    const Tray tray = SmallTray();
    Detector detector = MakeDetector();
    Listen([&] {
        Train(FirstPartOf(tray, 70.0), detector, true, {0.0f}, 1.0f);
        EXPECT_THROW(filling.MatchTemplates(tray.picture, detector, {}, 60), std::out_of_range);
    });
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

}  // namespace
}  // namespace Quorvane
