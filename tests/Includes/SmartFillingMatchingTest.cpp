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
using testing::SizeIs;
using TestSupport::FillingDetector;
using TestSupport::FillingNotices;
using TestSupport::FirstPartOf;
using TestSupport::Listen;
using TestSupport::NearPoint;
using TestSupport::SmallTray;
using TestSupport::TemplateImage;
using TestSupport::timeLine;
using TestSupport::Train;

namespace {

const SmartFilling filling;

bool SameMatches(const std::vector<FillingMatch>& a, const std::vector<FillingMatch>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const FillingMatch& m, const FillingMatch& n) {
        return m.x == n.x && m.y == n.y && m.angle == n.angle && m.scale == n.scale && m.templateId == n.templateId &&
               m.similarity == n.similarity;
    });
}

TEST(MatchTemplates, EqualsThePlainSearch) {
    const TestSupport::Tray tray = SmallTray();
    const TemplateImage part = FirstPartOf(tray);
    Detector detector = FillingDetector();
    std::vector<FillingMatch> matches;
    Listen([&] { matches = filling.MatchTemplates(tray.picture, detector, Train(part, detector), 75); });
    const auto plain = Reference::MatchTemplates(tray.picture, Reference::TrainAllAngles(part.image, part.target), 75);
    EXPECT_TRUE(SameMatches(matches, plain)) << matches.size() << " against " << plain.size();
    EXPECT_THAT(matches, SizeIs(6));
}

TEST(MatchTemplates, FindsEachCopyWithItsPlaceAndItsTurn) {
    const TestSupport::Tray tray = SmallTray();
    const TemplateImage part = FirstPartOf(tray);
    Detector detector = FillingDetector();
    std::vector<FillingMatch> matches;
    Listen([&] { matches = filling.MatchTemplates(tray.picture, detector, Train(part, detector), 75); });
    ASSERT_THAT(matches, SizeIs(tray.poses.size()));
    for (const TestSupport::PartPose& pose : tray.poses) {
        const cv::Point2d place = pose.Place(TestSupport::TrayPartMark(TestSupport::smallPartSize));
        const auto match = std::min_element(matches.begin(), matches.end(), [&](const auto& a, const auto& b) {
            return cv::norm(cv::Point2d(a.x, a.y) - place) < cv::norm(cv::Point2d(b.x, b.y) - place);
        });
        EXPECT_THAT(cv::Point2f(match->x, match->y), NearPoint(place, 2.0));
        EXPECT_LT(std::abs(std::remainder(match->angle - pose.angle, 360.0)), 6.0) << pose.angle;
        EXPECT_EQ(match->scale, 1.0f);
    }
}

TEST(MatchTemplates, TellsTheCutSizeAndItsTime) {
    const TestSupport::Tray tray = SmallTray();
    Detector detector = FillingDetector();
    const auto console = Listen([&] {
        const auto variants = Train(FirstPartOf(tray), detector, true, {0.0f}, 1.0f);
        std::cout << "--" << std::endl;
        filling.MatchTemplates(tray.picture, detector, variants, 90);
    });
    const std::string heard = FillingNotices(console.out);
    EXPECT_EQ(heard.substr(heard.find("--")),
              "--\n匹配图尺寸: [320 x 240]\nconstruct response map" + timeLine + "templ match" + timeLine + timeLine);
}

TEST(MatchTemplates, WithoutTemplatesFindsNothing) {
    Detector detector = FillingDetector();
    std::vector<FillingMatch> matches{FillingMatch()};
    Listen([&] { matches = filling.MatchTemplates(SmallTray().picture, detector, {}, 80); });
    EXPECT_THAT(matches, IsEmpty());
}

TEST(MatchTemplates, AThresholdOfAHundredFindsNothing) {
    const TestSupport::Tray tray = SmallTray();
    Detector detector = FillingDetector();
    std::vector<FillingMatch> matches{FillingMatch()};
    Listen([&] {
        const auto variants = Train(FirstPartOf(tray), detector, true, {0.0f}, 1.0f);
        matches = filling.MatchTemplates(tray.picture, detector, variants, 100);
    });
    EXPECT_THAT(matches, IsEmpty());
}

TEST(MatchTemplates, LooksNoFartherThanItsCut) {
    // The same pixels with others beside them: a picture of its own and a part of a larger one give the same.
    const TestSupport::Tray tray = SmallTray();
    Detector detector = FillingDetector();
    std::vector<FillingMatch> whole;
    std::vector<FillingMatch> part;
    Listen([&] {
        const auto variants = Train(FirstPartOf(tray), detector, true, {0.0f, 360.0f}, 5.0f);
        const cv::Rect window(3, 2, 320, 240);
        whole = filling.MatchTemplates(tray.picture(window).clone(), detector, variants, 60);
        part = filling.MatchTemplates(tray.picture(window), detector, variants, 60);
    });
    EXPECT_FALSE(whole.empty());
    EXPECT_TRUE(SameMatches(whole, part));
}

TEST(MatchTemplates, AnImageSmallerThanABlockIsOpenCvsToRefuse) {
    Detector detector = FillingDetector();
    Listen([&] {
        EXPECT_THROW(filling.MatchTemplates(cv::Mat(15, 200, CV_8UC3, cv::Scalar(1, 2, 3)), detector, {}, 80),
                     cv::Exception);
    });
}

TEST(MatchTemplates, VariantsThatAreNotThoseOfTheTrainingAreRefused) {
    const TestSupport::Tray tray = SmallTray();
    Detector detector = FillingDetector();
    Listen([&] {
        Train(FirstPartOf(tray), detector, true, {0.0f}, 1.0f);
        EXPECT_THROW(filling.MatchTemplates(tray.picture, detector, {}, 60), std::out_of_range);
    });
}

/// Matches of variants that were changed after the training, which must be those of the plain search.
class ChangedVariants {
public:
    ChangedVariants() : tray_(SmallTray()), plain_(TrainPlain()) {
        Listen([&] { variants_ = Train(FirstPartOf(tray_), detector_); });
    }

    template <typename Change>
    std::vector<FillingMatch> Match(Change change) {
        std::vector<ShapeVariant> variants = variants_;
        Reference::TrainedTemplates plain = plain_;
        for (ShapeVariant& variant : variants) change(variant);
        for (ShapeVariant& variant : plain.variants) change(variant);
        std::vector<FillingMatch> matches;
        Listen([&] { matches = filling.MatchTemplates(tray_.picture, detector_, variants, 80); });
        EXPECT_TRUE(SameMatches(matches, Reference::MatchTemplates(tray_.picture, plain, 80)));
        return matches;
    }

private:
    Reference::TrainedTemplates TrainPlain() const {
        const TemplateImage part = FirstPartOf(tray_);
        return Reference::TrainAllAngles(part.image, part.target);
    }

    TestSupport::Tray tray_;
    Reference::TrainedTemplates plain_;
    Detector detector_ = FillingDetector();
    std::vector<ShapeVariant> variants_;
};

TEST(MatchTemplates, SuppressesByTheSizeOfTheOutline) {
    ChangedVariants variants;
    EXPECT_THAT(variants.Match([](ShapeVariant&) {}), SizeIs(6));
    // Larger than the picture: all boxes are one.
    EXPECT_THAT(variants.Match([](ShapeVariant& v) {
        v.contour = {{0, 0}, {5000, 0}, {5000, 5000}, {0, 5000}};
    }),
                SizeIs(1));
    // Parts are 100 to 125 pixels apart. Boxes of 200 pixels then overlap by less than 0.4, those of 283 by more. An
    // outline that stands on its corner has the size of its sides and not that of its upright box.
    const auto standing = variants.Match([](ShapeVariant& v) {
        v.contour = {{141, 0}, {282, 141}, {141, 282}, {0, 141}};
    });
    EXPECT_THAT(standing, SizeIs(6));
    const auto upright = variants.Match([](ShapeVariant& v) { v.contour = {{0, 0}, {282, 0}, {282, 282}, {0, 282}}; });
    EXPECT_LT(upright.size(), 6U);
}

TEST(MatchTemplates, BoxesWithoutAreaAreAllOne) {
    ChangedVariants variants;
    const auto noScale = variants.Match([](ShapeVariant& v) { v.scale = 0.0f; });
    ASSERT_THAT(noScale, SizeIs(1));
    EXPECT_EQ(noScale[0].scale, 0.0f);
    EXPECT_THAT(variants.Match([](ShapeVariant& v) { v.contour = {{3, 4}}; }), SizeIs(1));
}

TEST(MatchTemplates, HitsWithoutAnOutlineAreOpenCvsToRefuse) {
    ChangedVariants variants;
    EXPECT_THROW(variants.Match([](ShapeVariant& v) { v.contour.clear(); }), cv::Exception);
}

TEST(MatchTemplates, TheScaleOfAVariantWidensItsBox) {
    ChangedVariants variants;
    const auto matches = variants.Match([](ShapeVariant& v) { v.scale = 40.0f; });
    ASSERT_THAT(matches, SizeIs(1));
    EXPECT_EQ(matches[0].scale, 40.0f);
}

TEST(MatchTemplates, OutlinesMayDifferFromVariantToVariant) {
    ChangedVariants variants;
    const auto matches = variants.Match([](ShapeVariant& v) {
        if (static_cast<int>(v.angle * 5.0f) % 2 == 0) v.contour = {{0, 0}, {9, 0}, {9, 9}, {0, 9}};
    });
    EXPECT_GE(matches.size(), 6U);
}
}  // namespace
}  // namespace Quorvane
