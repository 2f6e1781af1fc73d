#include "geometry/FirstEdgeSearch.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <string>

#include "tests/reference/PlainEdgeCaliper.h"
#include "tests/reference/PlainMeasurement.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using TestSupport::RandomInput;
using UtilityFunctions::CaliperPlace;
using UtilityFunctions::FirstEdgeSearch;

namespace {

/// Runs many calipers of one search, as the measurements do, each one also plainly.
int CompareCalipers(RandomInput& random, const cv::Mat& gray, int count) {
    const double halfWidth = random.Integer(0, 1) == 0 ? 2.5 : 5.0;
    const double sigma = random.Integer(0, 2) == 0 ? 1.0 : random.Real(0.0, 6.0);
    const double threshold = random.Integer(0, 4) == 0 ? 0.0 : random.Real(0.0, 80.0);
    const auto polarity = static_cast<EdgePolarity>(random.Integer(0, 2));
    const std::vector<std::string> transitions{"all", "positive", "negative"};
    const std::string transition = transitions[static_cast<std::size_t>(polarity)];
    FirstEdgeSearch search(gray, halfWidth, sigma, threshold, polarity);
    int found = 0;
    for (int k = 0; k < count; ++k) {
        const double reach = random.Integer(0, 1) == 0 ? -5.0 : 40.0;
        const CaliperPlace place{
            random.Real(-reach, gray.rows + reach), random.Real(-reach, gray.cols + reach),
            random.Integer(0, 1) == 0 ? random.Integer(-2, 2) * CV_PI / 2.0 : random.Real(-7.0, 7.0),
            random.Integer(0, 1) == 0 ? random.Integer(0, 200) / 2.0 : random.Real(0.0, 150.0)};
        Reference::EdgeCaliper plain;
        plain.configure(place.row, place.column, place.angle, place.halfLength, halfWidth, "bilinear");
        std::vector<double> rows, columns, amplitudes, distances;
        const bool expected =
            plain.measure(gray, sigma, threshold, transition, "first", rows, columns, amplitudes, distances);
        cv::Point2f edge(-1, -2);
        EXPECT_EQ(search.Find(place, edge), expected);
        if (expected) {
            EXPECT_EQ(edge, cv::Point2f(static_cast<float>(columns[0]), static_cast<float>(rows[0])));
            ++found;
        } else {
            EXPECT_EQ(edge, cv::Point2f(-1, -2));
        }
        if (testing::Test::HasFailure()) return found;
    }
    return found;
}

TEST(FirstEdgeSearch, EqualsThePlainCaliperOnRandomImages) {
    RandomInput random(40);
    int found = 0;
    for (int i = 0; i < 600 && !HasFailure(); ++i) {
        SCOPED_TRACE("image " + std::to_string(i));
        cv::Mat image = random.Image({random.Integer(1, 160), random.Integer(1, 120)});
        const std::vector<int> depths{CV_8U, CV_8U, CV_16U, CV_32F, CV_64F, CV_32S};
        image.convertTo(image, depths[static_cast<std::size_t>(random.Integer(0, 5))], random.Real(0.5, 1.0));
        found += CompareCalipers(random, image, 40);
    }
    EXPECT_GT(found, 5000) << "the comparison must have something to compare";
}

TEST(FirstEdgeSearch, EqualsThePlainCaliperOnSmoothScenes) {
    RandomInput random(41);
    int found = 0;
    for (int i = 0; i < 25 && !HasFailure(); ++i) {
        SCOPED_TRACE("scene " + std::to_string(i));
        TestSupport::Scene scene({320, 240}, random.Real(0.0, 255.0));
        for (int k = 0; k < 6; ++k) {
            scene.Paint(TestSupport::Disc({random.Real(0.0, 320.0), random.Real(0.0, 240.0)}, random.Real(5.0, 90.0)),
                        random.Real(0.0, 255.0));
        }
        scene.Blur(random.Real(0.5, 2.0)).Noise(random.Real(0.0, 4.0), static_cast<std::uint32_t>(i));
        found += CompareCalipers(random, scene.Gray(), 300);
    }
    EXPECT_GT(found, 1500);
}

TEST(FirstEdgeSearch, EqualsThePlainCaliperOnPictures) {
    RandomInput random(42);
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat picture = TestSupport::LoadGrayPicture(name);
        for (int i = 0; i < 10 && !HasFailure(); ++i) {
            SCOPED_TRACE(name + ", search " + std::to_string(i));
            CompareCalipers(random, picture, 100);
        }
    }
}

TEST(FirstEdgeSearch, ScansAlongZeroesOfEitherSign) {
    // A sine or cosine of minus zero turns the infinities of a division round.
    cv::Mat image(40, 60, CV_8UC1, cv::Scalar(20));
    image.colRange(30, 60).setTo(200);
    FirstEdgeSearch search(image, 2.5, 1.0, 30.0, EdgePolarity::All);
    for (const double angle : {0.0, -0.0}) {
        cv::Point2f edge(-1, -2);
        EXPECT_TRUE(search.Find({20.0, 30.0, angle, 15.0}, edge)) << angle;
        EXPECT_NEAR(edge.x, 29.5, 1e-5);
        EXPECT_FALSE(search.Find({90.0, 30.0, angle, 15.0}, edge)) << angle;
        EXPECT_FALSE(search.Find({-50.0, 30.0, angle, 15.0}, edge)) << angle;
    }
}

bool SameNumber(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

TEST(FirstEdgeSearch, EqualsThePlainCaliperWherePixelsAreNotFinite) {
    RandomInput random(47);
    int found = 0;
    for (int i = 0; i < 1500 && !HasFailure(); ++i) {
        SCOPED_TRACE("case " + std::to_string(i));
        cv::Mat image = random.Image({80, 60});
        image.convertTo(image, CV_32F);
        for (int k = 0; k < 4; ++k) {
            const std::array<float, 3> values{std::numeric_limits<float>::quiet_NaN(),
                                              std::numeric_limits<float>::infinity(),
                                              -std::numeric_limits<float>::infinity()};
            image.at<float>(random.Integer(0, 59), random.Integer(0, 79)) =
                values[static_cast<std::size_t>(random.Integer(0, 2))];
        }
        const CaliperPlace place{random.Real(0.0, 60.0), random.Real(0.0, 80.0), random.Real(-7.0, 7.0),
                                 random.Real(3.0, 40.0)};
        const double threshold = random.Real(0.0, 150.0);
        Reference::EdgeCaliper plain;
        plain.configure(place.row, place.column, place.angle, place.halfLength, 2.5, "bilinear");
        std::vector<double> rows, columns, amplitudes, distances;
        const bool expected =
            plain.measure(image, 1.0, threshold, "all", "first", rows, columns, amplitudes, distances);
        cv::Point2f edge;
        ASSERT_EQ(FirstEdgeSearch(image, 2.5, 1.0, threshold, EdgePolarity::All).Find(place, edge), expected);
        if (!expected) continue;
        EXPECT_TRUE(SameNumber(edge.x, static_cast<float>(columns[0])));
        EXPECT_TRUE(SameNumber(edge.y, static_cast<float>(rows[0])));
        ++found;
    }
    EXPECT_GT(found, 300);
}

TEST(FirstEdgeSearch, ReadsASubImageInPlace) {
    RandomInput random(43);
    const cv::Mat whole = random.Image({200, 150});
    CompareCalipers(random, whole(cv::Rect(31, 17, 120, 90)), 300);
}

/// One measurement of each kind, fast and plain. Lines, circles and curves must agree to the last bit.
void CompareMeasurements(RandomInput& random, const cv::Mat& image) {
    const cv::Point2f center(static_cast<float>(random.Real(-10.0, image.cols + 10.0)),
                             static_cast<float>(random.Real(-10.0, image.rows + 10.0)));
    const double width = random.Real(0.0, 90.0);
    const double height = random.Real(0.0, 90.0);
    const double sigma = random.Real(0.0, 3.0);
    const double threshold = random.Real(0.0, 60.0);
    const double step = random.Real(0.4, 5.0);
    const auto polarity = static_cast<EdgePolarity>(random.Integer(0, 3));
    const auto direction = static_cast<SearchDirection>(random.Integer(0, 6));

    Line line;
    Line plainLine;
    UtilityFunctions::MeasureLine(image, center, width, height, line, polarity, direction, sigma, threshold, step);
    Reference::MeasureLine(image, center, width, height, plainLine, polarity, direction, sigma, threshold, step);
    EXPECT_EQ(line.toVec4f(), plainLine.toVec4f());
    EXPECT_EQ(line.c, plainLine.c);

    cv::Point2f foundCenter, plainCenter;
    double foundRadius = 0.0, plainRadius = 0.0, score = 0.0, plainScore = 0.0;
    UtilityFunctions::MeasureCircle(image, center, height, foundCenter, foundRadius, score, polarity, direction, sigma,
                                    threshold, step);
    Reference::MeasureCircle(image, center, height, plainCenter, plainRadius, plainScore, polarity, direction, sigma,
                             threshold, step);
    EXPECT_EQ(foundCenter, plainCenter);
    EXPECT_EQ(foundRadius, plainRadius);
    EXPECT_EQ(score, plainScore);

    Curve curve;
    Curve plainCurve;
    UtilityFunctions::MeasureCurve(image, center, width, height, curve, polarity, direction, sigma, threshold, step, 0);
    Reference::MeasureCurve(image, center, width, height, plainCurve, polarity, direction, sigma, threshold, step);
    EXPECT_EQ(curve.measuredPoints, plainCurve.measuredPoints);
    EXPECT_EQ(curve.curvePoints, plainCurve.curvePoints);
    EXPECT_EQ(curve.meanFitError, plainCurve.meanFitError);
}

TEST(Measurements, EqualThePlainOnesOnScenes) {
    RandomInput random(44);
    for (int i = 0; i < 150 && !HasFailure(); ++i) {
        SCOPED_TRACE("scene " + std::to_string(i));
        TestSupport::Scene scene({140, 110}, random.Real(0.0, 255.0));
        scene.Paint(TestSupport::Disc({random.Real(20.0, 120.0), random.Real(20.0, 90.0)}, random.Real(5.0, 50.0)),
                    random.Real(0.0, 255.0));
        scene.Paint(
            TestSupport::HalfPlane({random.Real(20.0, 120.0), random.Real(20.0, 90.0)}, random.Real(0.0, 360.0)),
            random.Real(0.0, 255.0));
        scene.Blur(random.Real(0.5, 1.5)).Noise(random.Real(0.0, 3.0), static_cast<std::uint32_t>(i));
        CompareMeasurements(random, i % 2 == 0 ? scene.Gray() : scene.Colour());
    }
}

TEST(Measurements, EqualThePlainOnesOnPictures) {
    RandomInput random(45);
    for (const std::string& name : TestSupport::PictureNames()) {
        for (const cv::Mat& picture : {TestSupport::LoadColourPicture(name), TestSupport::LoadGrayPicture(name)}) {
            for (int i = 0; i < 4 && !HasFailure(); ++i) {
                SCOPED_TRACE(name + ", measurement " + std::to_string(i));
                CompareMeasurements(random, picture);
            }
        }
    }
}

TEST(Measurements, EqualThePlainOnesInFloatColour) {
    RandomInput random(46);
    for (int i = 0; i < 60 && !HasFailure(); ++i) {
        SCOPED_TRACE("image " + std::to_string(i));
        cv::Mat image = random.Image({random.Integer(20, 120), random.Integer(20, 90)}, random.Integer(3, 4));
        image.convertTo(image, i % 2 == 0 ? CV_32F : CV_16U, 0.77);
        CompareMeasurements(random, image);
    }
}

}  // namespace
}  // namespace Quorvane
