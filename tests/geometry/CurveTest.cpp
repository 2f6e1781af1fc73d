#include "geometry/Curve.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Curve FullCurve() {
    Curve curve;
    curve.measuredPoints = {{1, 2}};
    curve.curvePoints = {{3, 4}, {5, 6}};
    curve.reservedPointsA = {{7, 8}};
    curve.reservedPointsB = {{9, 10}};
    curve.reservedScalar = 11;
    curve.meanFitError = 12.5;
    return curve;
}

void ExpectFull(const Curve& curve) {
    EXPECT_THAT(curve.measuredPoints, ElementsAre(cv::Point2f(1, 2)));
    EXPECT_THAT(curve.curvePoints, ElementsAre(cv::Point2f(3, 4), cv::Point2f(5, 6)));
    EXPECT_THAT(curve.reservedPointsA, ElementsAre(cv::Point2f(7, 8)));
    EXPECT_THAT(curve.reservedPointsB, ElementsAre(cv::Point2f(9, 10)));
    EXPECT_EQ(curve.reservedScalar, 11);
    EXPECT_EQ(curve.meanFitError, 12.5);
}

TEST(Curve, IsEmptyAndZeroByDefault) {
    const Curve curve;
    EXPECT_THAT(curve.measuredPoints, IsEmpty());
    EXPECT_THAT(curve.curvePoints, IsEmpty());
    EXPECT_THAT(curve.reservedPointsA, IsEmpty());
    EXPECT_THAT(curve.reservedPointsB, IsEmpty());
    EXPECT_EQ(curve.reservedScalar, 0);
    EXPECT_EQ(curve.meanFitError, 0.0);
    EXPECT_FALSE(curve.isValid());
    EXPECT_THAT(curve.getCurvePoints(), IsEmpty());
}

TEST(Curve, GivesItsMeasuredPointsWhereItHasNoOthers) {
    Curve curve;
    curve.measuredPoints = {{1, 2}, {3, 4}};
    EXPECT_EQ(&curve.getCurvePoints(), &curve.measuredPoints);
    EXPECT_TRUE(curve.isValid());
    curve.curvePoints = {{5, 6}};
    EXPECT_EQ(&curve.getCurvePoints(), &curve.curvePoints);
    curve.measuredPoints.clear();
    EXPECT_TRUE(curve.isValid());
}

TEST(Curve, IsCopiedWhole) {
    const Curve curve = FullCurve();
    const Curve copy(curve);
    ExpectFull(copy);
    Curve assigned;
    assigned = curve;
    ExpectFull(assigned);
    ExpectFull(curve);
    const Curve& itself = assigned;
    assigned = itself;
    ExpectFull(assigned);
}

TEST(Curve, IsMovedWhole) {
    Curve moved(FullCurve());
    ExpectFull(moved);
    Curve assigned;
    assigned = std::move(moved);
    ExpectFull(assigned);
}

}  // namespace
}  // namespace Quorvane
