#include "geometry/Line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "tests/support/Matchers.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;
using UtilityFunctions::computeIntersection;
using UtilityFunctions::computeQuadrilateralCenterRobust;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
const float rootOfFive = std::sqrt(5.0f);

TEST(Line, IsTheXAxisByDefault) {
    const Line line;
    EXPECT_EQ(line.a, 0.0f);
    EXPECT_EQ(line.b, -1.0f);
    EXPECT_EQ(line.c, 0.0f);
    EXPECT_EQ(line.linePoint, cv::Point2f(0, 0));
    EXPECT_EQ(line.direction, cv::Point2f(1, 0));
    EXPECT_EQ(line.slope, 0.0f);
    EXPECT_EQ(line.intercept, 0.0f);
    EXPECT_FALSE(line.isVertical);
    EXPECT_EQ(line.toString(), "Line: y = 0.00x + 0.00");
}

TEST(Line, OfTwoPointsAboveEachOtherIsVertical) {
    const Line line(cv::Point2f(3, 1), cv::Point2f(3, 9));
    EXPECT_TRUE(line.isVertical);
    EXPECT_EQ(line.a, 1.0f);
    EXPECT_EQ(line.b, 0.0f);
    EXPECT_EQ(line.c, -3.0f);
    EXPECT_EQ(line.intercept, 3.0f);
    EXPECT_EQ(line.slope, infinity);
    EXPECT_EQ(line.linePoint, cv::Point2f(3, 1));
    EXPECT_EQ(line.toString(), "Vertical line: x = 3.00");
}

TEST(Line, VerticalOneAlwaysPointsDown) {
    const Line line(cv::Point2f(3, 9), cv::Point2f(3, 1));
    EXPECT_EQ(line.direction, cv::Point2f(0, 1));
    EXPECT_EQ(line.a, 1.0f);
    EXPECT_EQ(line.c, -3.0f);
    EXPECT_EQ(line.linePoint, cv::Point2f(3, 9));
}

TEST(Line, OfTwoPointsRunsFromTheFirstToTheSecond) {
    const Line line(cv::Point2f(1, 2), cv::Point2f(4, 6));
    EXPECT_THAT(line.direction, TestSupport::NearPoint(cv::Point2f(0.6f, 0.8f), 1e-7));
    EXPECT_FLOAT_EQ(line.slope, 4.0f / 3.0f);
    EXPECT_FLOAT_EQ(line.intercept, 2.0f - 4.0f / 3.0f);
    EXPECT_FLOAT_EQ(line.a, 0.8f);
    EXPECT_FLOAT_EQ(line.b, -0.6f);
    EXPECT_FLOAT_EQ(line.c, 0.4f);
    EXPECT_EQ(line.linePoint, cv::Point2f(1, 2));
    const Line reversed(cv::Point2f(4, 6), cv::Point2f(1, 2));
    EXPECT_THAT(reversed.direction, TestSupport::NearPoint(cv::Point2f(-0.6f, -0.8f), 1e-7));
}

TEST(Line, OfTwoEqualPointsIsVertical) { EXPECT_TRUE(Line(cv::Point2f(5, 5), cv::Point2f(5, 5)).isVertical); }

TEST(Line, MayRunFromAnotherPointToItsOwn) {
    Line line(cv::Point2f(4, 6), cv::Point2f(9, 7));
    line.fromTwoPoints(cv::Point2f(1, 2), line.linePoint);
    const Line expected(cv::Point2f(1, 2), cv::Point2f(4, 6));
    EXPECT_EQ(line.a, expected.a);
    EXPECT_EQ(line.b, expected.b);
    EXPECT_EQ(line.c, expected.c);
    EXPECT_EQ(line.linePoint, cv::Point2f(1, 2));
    EXPECT_EQ(line.intercept, expected.intercept);
}

TEST(Line, CountsAsVerticalStrictlyBelowTheTolerance) {
    // The float nearest to 1e-7 lies above the double 1e-7; its lower neighbour lies below.
    const float above = 1e-7f;
    const float below = std::nextafter(above, 0.0f);
    EXPECT_GE(static_cast<double>(above), 1e-7);
    EXPECT_FALSE(Line(cv::Point2f(0, 0), cv::Point2f(above, 1)).isVertical);
    EXPECT_TRUE(Line(cv::Point2f(0, 0), cv::Point2f(below, 1)).isVertical);
    EXPECT_FALSE(Line(cv::Vec4f(above, 1, 0, 0)).isVertical);
    EXPECT_TRUE(Line(cv::Vec4f(below, 1, 0, 0)).isVertical);
    EXPECT_TRUE(Line(cv::Vec4f(-below, 1, 0, 0)).isVertical);
    EXPECT_FALSE(Line(1.0f, above, 0.0f).isVertical);
    EXPECT_TRUE(Line(1.0f, below, 0.0f).isVertical);
}

TEST(Line, OfSlopeAndInterceptKeepsBoth) {
    const Line line(2.0f, 1.0f);
    EXPECT_FLOAT_EQ(line.a, 2.0f / rootOfFive);
    EXPECT_FLOAT_EQ(line.b, -1.0f / rootOfFive);
    EXPECT_FLOAT_EQ(line.c, 1.0f / rootOfFive);
    EXPECT_EQ(line.slope, 2.0f);
    EXPECT_EQ(line.intercept, 1.0f);
    EXPECT_FALSE(line.isVertical);
    EXPECT_EQ(line.linePoint, cv::Point2f(0, 1));
    EXPECT_THAT(line.direction, TestSupport::NearPoint(cv::Point2f(1 / rootOfFive, 2 / rootOfFive), 1e-7));
    EXPECT_EQ(line.toString(), "Line: y = 2.00x + 1.00");
}

TEST(Line, OfASlopeThatIsNoNumberHasNoDirection) {
    const Line line(std::numeric_limits<float>::quiet_NaN(), 1.0f);
    EXPECT_TRUE(std::isnan(line.direction.x));
    EXPECT_TRUE(std::isnan(line.direction.y));
    EXPECT_FALSE(line.isVertical);
    EXPECT_EQ(line.linePoint, cv::Point2f(0, 1));
}

TEST(Line, ComesBackFromItsVectorUpToTheSign) {
    for (const Line& line : {Line(cv::Point2f(1, 2), cv::Point2f(4, 6)), Line(cv::Point2f(4, 6), cv::Point2f(1, 2)),
                             Line(cv::Point2f(3, 1), cv::Point2f(3, 9)), Line(-0.5f, 7.0f), Line(3.0f, -4.0f, 10.0f)}) {
        Line back;
        back.fromVec4f(line.toVec4f());
        const float sign = line.a * back.a + line.b * back.b > 0.0f ? 1.0f : -1.0f;
        EXPECT_NEAR(back.a, sign * line.a, 1e-6);
        EXPECT_NEAR(back.b, sign * line.b, 1e-6);
        EXPECT_NEAR(back.c, sign * line.c, 1e-5);
        EXPECT_EQ(back.direction, line.direction);
        EXPECT_EQ(back.linePoint, line.linePoint);
        EXPECT_EQ(back.isVertical, line.isVertical);
        EXPECT_NEAR(back.intercept, line.intercept, 1e-5);
    }
}

TEST(Line, OfAVectorKeepsADirectionOfAnyLength) {
    const Line line(cv::Vec4f(3, 4, 10, 20));
    EXPECT_EQ(line.direction, cv::Point2f(3, 4));
    EXPECT_EQ(line.linePoint, cv::Point2f(10, 20));
    EXPECT_FLOAT_EQ(line.a, -0.8f);
    EXPECT_FLOAT_EQ(line.b, 0.6f);
    EXPECT_FLOAT_EQ(line.c, (10.0f * 4.0f - 20.0f * 3.0f) / 5.0f);
    EXPECT_EQ(line.toVec4f(), cv::Vec4f(3, 4, 10, 20));
    EXPECT_FLOAT_EQ(line.distanceToPoint({10, 20}), 0.0f);
}

TEST(Line, OfTheGeneralFormIsNormalised) {
    const Line line(3.0f, -4.0f, 10.0f);
    EXPECT_FLOAT_EQ(line.a, 0.6f);
    EXPECT_FLOAT_EQ(line.b, -0.8f);
    EXPECT_FLOAT_EQ(line.c, 2.0f);
    EXPECT_THAT(line.direction, TestSupport::NearPoint(cv::Point2f(-0.8f, -0.6f), 1e-7));
    EXPECT_THAT(line.linePoint, TestSupport::NearPoint(cv::Point2f(0.0f, 2.5f), 1e-6));
    EXPECT_FLOAT_EQ(line.slope, 0.75f);
    EXPECT_FLOAT_EQ(line.intercept, 2.5f);
    const Line steep(4.0f, 3.0f, 10.0f);
    EXPECT_THAT(steep.linePoint, TestSupport::NearPoint(cv::Point2f(-2.5f, 0.0f), 1e-6));
    const Line diagonal(1.0f, 1.0f, -2.0f);  // as steep as it is flat: the point lies on the x axis
    EXPECT_THAT(diagonal.linePoint, TestSupport::NearPoint(cv::Point2f(2.0f, 0.0f), 1e-6));
}

TEST(Line, OfNoGeneralFormAtAllHasNoPlace) {
    const Line line(0.0f, 0.0f, 5.0f);
    EXPECT_EQ(line.a, 0.0f);
    EXPECT_EQ(line.b, 0.0f);
    EXPECT_EQ(line.c, 5.0f);
    EXPECT_EQ(line.direction, cv::Point2f(0, 0));
    EXPECT_FALSE(std::isfinite(line.linePoint.x));
    EXPECT_FALSE(std::isfinite(line.intercept));
    EXPECT_TRUE(std::isnan(Line(0.0f, 0.0f, 0.0f).intercept));
}

TEST(Line, MeasuresDistances) {
    EXPECT_FLOAT_EQ(Line(cv::Point2f(3, 1), cv::Point2f(3, 9)).distanceToPoint({-4, 100}), 7.0f);
    EXPECT_FLOAT_EQ(Line(2.0f, 1.0f).distanceToPoint({0, 0}), 1.0f / rootOfFive);
}

TEST(Line, HasEndPointsOnEitherSideOfItsPoint) {
    cv::Point2f p1;
    cv::Point2f p2;
    Line(cv::Point2f(3, 1), cv::Point2f(3, 9)).getEndPoints(p1, p2, 1000.0f);
    EXPECT_EQ(p1, cv::Point2f(3, -999));
    EXPECT_EQ(p2, cv::Point2f(3, 1001));
}

TEST(Line, CrossesTheBordersTopBottomLeftRight) {
    // Through (20, 0) and (60, 80): left and right borders are met outside the picture.
    EXPECT_THAT(Line(cv::Point2f(20, 0), cv::Point2f(60, 80)).getIntersectionWithImage({100, 80}),
                ElementsAre(TestSupport::NearPoint(cv::Point2f(20, 0), 1e-4),
                            TestSupport::NearPoint(cv::Point2f(60, 80), 1e-4)));
    // Left and right only; the right border is the width itself.
    EXPECT_THAT(Line(0.25f, 10.0f).getIntersectionWithImage({100, 80}),
                ElementsAre(TestSupport::NearPoint(cv::Point2f(0, 10), 1e-4),
                            TestSupport::NearPoint(cv::Point2f(100, 35), 1e-4)));
}

TEST(Line, MergesCrossingsAtACornerIntoTheEarlierOne) {
    const std::vector<cv::Point2f> crossings =
        Line(cv::Point2f(0, 0), cv::Point2f(64, 64)).getIntersectionWithImage({64, 64});
    EXPECT_THAT(crossings, ElementsAre(TestSupport::NearPoint(cv::Point2f(0, 0), 1e-4),
                                       TestSupport::NearPoint(cv::Point2f(64, 64), 1e-4)));
}

TEST(Line, KeepsTwoCrossingsHoweverNear) {
    // Cuts off a corner of less than a pixel: the crossings of the top and of the left border.
    const std::vector<cv::Point2f> crossings =
        Line(cv::Point2f(0.25f, 0), cv::Point2f(0, 0.25f)).getIntersectionWithImage({64, 48});
    ASSERT_EQ(crossings.size(), 2u);
    EXPECT_LT(cv::norm(crossings[0] - crossings[1]), 1.0);
}

TEST(Line, MergesOneCornerOutOfThreeCrossings) {
    // y = x/2 through the corner (0, 0): found at the top and at the left, merged, and met on the right at (64, 32).
    EXPECT_THAT(Line(0.5f, 0.0f).getIntersectionWithImage({64, 64}),
                ElementsAre(TestSupport::NearPoint(cv::Point2f(0, 0), 1e-4),
                            TestSupport::NearPoint(cv::Point2f(64, 32), 1e-4)));
}

TEST(Line, MergesCrossingsStrictlyNearerThanOnePixel) {
    // Products below the least float vanish, which lets a line that is all but upright, or all but level, meet three
    // borders of a picture without width or height at any distance from each other.
    Line line;
    line.a = 1e10f;
    line.b = std::numeric_limits<float>::denorm_min();
    line.c = 0.0f;
    EXPECT_THAT(line.getIntersectionWithImage({0, 1}), ElementsAre(cv::Point2f(0, 0), cv::Point2f(0, 1)))
        << "top and bottom are exactly one pixel apart; left and right are those of the top";
    line.a = 2.0f * std::numeric_limits<float>::denorm_min();
    line.b = 1e10f;
    line.c = -std::numeric_limits<float>::denorm_min();
    EXPECT_THAT(line.getIntersectionWithImage({1, 0}), ElementsAre(cv::Point2f(0.5f, 0)))
        << "left and right are half a pixel away";
}

TEST(Line, CrossesNoBorderWhenItIsHorizontalOrVertical) {
    EXPECT_THAT(Line(cv::Point2f(30, 0), cv::Point2f(30, 9)).getIntersectionWithImage({100, 80}), IsEmpty());
    EXPECT_THAT(Line(cv::Point2f(0, 30), cv::Point2f(9, 30)).getIntersectionWithImage({100, 80}), IsEmpty());
    EXPECT_THAT(Line(0.0f, 40.0f).getIntersectionWithImage({100, 80}), IsEmpty());
    EXPECT_THAT(Line().getIntersectionWithImage({100, 80}), IsEmpty());
}

TEST(Line, IsCopiedWhole) {
    const Line line(cv::Vec4f(3, 4, 10, 20));
    Line copy;
    copy = line;
    EXPECT_EQ(copy.direction, line.direction);
    EXPECT_EQ(copy.linePoint, line.linePoint);
    EXPECT_EQ(copy.a, line.a);
    EXPECT_EQ(copy.b, line.b);
    EXPECT_EQ(copy.c, line.c);
    EXPECT_EQ(copy.slope, line.slope);
    EXPECT_EQ(copy.intercept, line.intercept);
    EXPECT_EQ(copy.isVertical, line.isVertical);
    copy = Line(cv::Point2f(3, 1), cv::Point2f(3, 9));
    EXPECT_TRUE(copy.isVertical);
    static_assert(std::is_standard_layout_v<Line> && !std::is_polymorphic_v<Line>);
}

TEST(Line, WritesLongNumbersWhole) {
    const Line line(std::numeric_limits<float>::max(), -std::numeric_limits<float>::max());
    const std::string text = line.toString();
    EXPECT_THAT(text, testing::StartsWith("Line: y = 340282346638528859811704183484516925440.00x + -3402823466"));
}

TEST(ComputeIntersection, OfCrossingLinesIsTheirPoint) {
    cv::Point2f point;
    EXPECT_TRUE(computeIntersection(Line(1.0f, 0.0f), Line(-1.0f, 10.0f), point, 1e-7f));
    EXPECT_THAT(point, TestSupport::NearPoint(cv::Point2f(5, 5), 1e-5));
    EXPECT_TRUE(computeIntersection(Line(cv::Point2f(3, 0), cv::Point2f(3, 1)), Line(), point));
    EXPECT_THAT(point, TestSupport::NearPoint(cv::Point2f(3, 0), 1e-6));
}

TEST(ComputeIntersection, OfParallelLinesLeavesThePointAlone) {
    cv::Point2f point(7, 8);
    EXPECT_FALSE(computeIntersection(Line(2.0f, 0.0f), Line(2.0f, 5.0f), point, 1e-7f));
    EXPECT_EQ(point, cv::Point2f(7, 8));
}

TEST(ComputeIntersection, AcceptsADeterminantOfExactlyEpsilon) {
    cv::Point2f point(7, 8);
    // The x axis (a 0, b -1) and a vertical line (a 1, b 0): the determinant is exactly 1.
    const Line vertical(cv::Point2f(3, 0), cv::Point2f(3, 1));
    EXPECT_TRUE(computeIntersection(Line(), vertical, point, 1.0f));
    EXPECT_EQ(point, cv::Point2f(3, 0));
    EXPECT_FALSE(computeIntersection(Line(), vertical, point, std::nextafter(1.0f, 2.0f)));
}

TEST(ComputeIntersection, OfParallelLinesWithEpsilonZeroIsNowhere) {
    cv::Point2f point(7, 8);
    EXPECT_TRUE(computeIntersection(Line(0.0f, 0.0f), Line(0.0f, 5.0f), point, 0.0f));
    EXPECT_FALSE(std::isfinite(point.x));
    EXPECT_FALSE(std::isfinite(point.y));
}

TEST(ComputeQuadrilateralCenter, IsTheMeanOfTheCorners) {
    const Line left(cv::Point2f(10, 0), cv::Point2f(10, 1));
    const Line right(cv::Point2f(30, 0), cv::Point2f(30, 1));
    const Line top(0.0f, 20.0f);
    const Line bottom(0.0f, 60.0f);
    cv::Point2f center;
    EXPECT_TRUE(computeQuadrilateralCenterRobust(left, right, top, bottom, center));
    EXPECT_THAT(center, TestSupport::NearPoint(cv::Point2f(20, 40), 1e-5));
    // A trapezium: corners (0, 0), (100, 0), (30, 60), (70, 60).
    EXPECT_TRUE(computeQuadrilateralCenterRobust(Line(cv::Point2f(0, 0), cv::Point2f(30, 60)),
                                                 Line(cv::Point2f(100, 0), cv::Point2f(70, 60)), Line(0.0f, 0.0f),
                                                 Line(0.0f, 60.0f), center));
    EXPECT_THAT(center, TestSupport::NearPoint(cv::Point2f(50, 30), 1e-4));
}

TEST(ComputeQuadrilateralCenter, NeedsEveryCorner) {
    const Line l1(1.0f, 0.0f);
    const Line l2(-1.0f, 10.0f);
    const Line parallelToL1(1.0f, 50.0f);
    const Line l4(-0.5f, 80.0f);
    cv::Point2f center(7, 8);
    EXPECT_FALSE(computeQuadrilateralCenterRobust(l1, l2, parallelToL1, l4, center));
    EXPECT_FALSE(computeQuadrilateralCenterRobust(l1, l2, l4, parallelToL1, center));
    EXPECT_FALSE(computeQuadrilateralCenterRobust(l2, l1, l4, parallelToL1, center));
    EXPECT_FALSE(computeQuadrilateralCenterRobust(Line(), Line(), Line(), Line(), center));
    EXPECT_EQ(center, cv::Point2f(7, 8));
}

TEST(ComputeQuadrilateralCenter, TakesSidesOfExactlyTheLeastAngle) {
    // Every corner has this determinant: that of (1, 0) with (0, b).
    const auto found = [](float determinant, cv::Point2f& center) {
        Line upright(1.0f, 0.0f, -3.0f);
        Line level;
        level.b = determinant;
        return computeQuadrilateralCenterRobust(level, level, upright, upright, center);
    };
    cv::Point2f center(7, 8);
    EXPECT_FALSE(found(std::nextafter(1e-7f, 0.0f), center));
    EXPECT_EQ(center, cv::Point2f(7, 8));
    EXPECT_TRUE(found(1e-7f, center));
    EXPECT_THAT(center, TestSupport::NearPoint(cv::Point2f(3, 0), 1e-6));
}

}  // namespace
}  // namespace Quorvane
