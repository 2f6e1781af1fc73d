#include "geometry/ContourGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "geometry/PointDistance.h"
#include "tests/support/Matchers.h"
#include "tests/support/PointLists.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::UtilityFunctions {

using TestSupport::EqualsMat;
using TestSupport::NearPoint;
using TestSupport::RandomInput;
using TestSupport::Turned;

namespace {

using Points = std::vector<cv::Point2f>;

constexpr float largestFloat = std::numeric_limits<float>::max();
constexpr float leastNormalFloat = std::numeric_limits<float>::min();

/// Clockwise in the image, from the top left.
Points UnitSquare() { return {{0, 0}, {1, 0}, {1, 1}, {0, 1}}; }

Points RandomPoints(RandomInput& random, int count, double least, double most) {
    Points points;
    for (int i = 0; i < count; ++i) {
        points.emplace_back(static_cast<float>(random.Real(least, most)), static_cast<float>(random.Real(least, most)));
    }
    return points;
}

TEST(AlignPoints, TranslationGivesTheOffsetBackToTheSource) {
    const Points source{{10, 20}, {30, 20}, {30, 50}, {5, 40}};
    Points target = source;
    for (cv::Point2f& point : target) point += cv::Point2f(5, -2);
    cv::Point2f offset;
    cv::Point2f center;
    double angle = 99.0;
    AlignPoints(source, target, offset, center, angle);
    EXPECT_EQ(offset, cv::Point2f(-5, 2));
    EXPECT_EQ(center, cv::Point2f(18.75f, 32.5f));
    EXPECT_NEAR(angle, 0.0, 1e-4);
}

TEST(AlignPoints, AngleOfThreePointsAndMoreRunsAgainstTheTurn) {
    const Points source{{10, 20}, {30, 20}, {30, 50}, {5, 40}};
    cv::Point2f offset;
    cv::Point2f center;
    double angle = 0.0;
    AlignPoints(source, Turned(source, 25.0), offset, center, angle);
    EXPECT_NEAR(angle, -25.0, 1e-3);
}

TEST(AlignPoints, OutputsMayBePointsOfTheLists) {
    const std::vector<cv::Point2f> source{{10, 10}, {50, 12}, {48, 40}, {12, 44}};
    const std::vector<cv::Point2f> target = Turned(source, 25.0);
    cv::Point2f offset;
    cv::Point2f center;
    double angle = 0.0;
    AlignPoints(source, target, offset, center, angle);
    std::vector<cv::Point2f> list = source;
    double angleOfList = 0.0;
    AlignPoints(list, target, list[0], list[1], angleOfList);
    EXPECT_EQ(list[0], offset);
    EXPECT_EQ(list[1], center);
    EXPECT_EQ(angleOfList, angle);
}

TEST(AlignPoints, AngleOfTwoPointsFollowsTheTurn) {
    const Points source{{10, 20}, {30, 20}};
    cv::Point2f offset;
    cv::Point2f center;
    double angle = 0.0;
    AlignPoints(source, {{1, 2}, {1, 22}}, offset, center, angle);
    EXPECT_EQ(angle, 90.0);
    EXPECT_EQ(center, cv::Point2f(20, 20));
    EXPECT_EQ(offset, cv::Point2f(19, 8));
}

TEST(AlignPoints, ListsOfDifferentLengthHaveCentresButNoAngle) {
    cv::Point2f offset;
    cv::Point2f center;
    double angle = 99.0;
    AlignPoints({{0, 0}, {2, 0}, {4, 3}}, {{1, 1}, {3, 1}}, offset, center, angle);
    EXPECT_EQ(angle, 0.0);
    EXPECT_EQ(center, cv::Point2f(2, 1));
    EXPECT_EQ(offset, cv::Point2f(0, 0));
}

TEST(AlignPoints, EmptyListsHaveNoCentre) {
    cv::Point2f offset;
    cv::Point2f center;
    double angle = 99.0;
    AlignPoints({}, {}, offset, center, angle);
    EXPECT_TRUE(std::isnan(center.x) && std::isnan(center.y));
    EXPECT_TRUE(std::isnan(offset.x) && std::isnan(offset.y));
    EXPECT_EQ(angle, 0.0);
}

TEST(PointDistance, IsEuclidean) {
    EXPECT_EQ(pointDistance({1, 2}, {4, 6}), 5.0f);
    EXPECT_EQ(pointDistance({4, 6}, {1, 2}), 5.0f);
    EXPECT_EQ(pointDistance({7, 7}, {7, 7}), 0.0f);
}

TEST(PointDistance, SquaresInDoubleSoThatLargeFloatsDoNotOverflow) {
    EXPECT_FLOAT_EQ(pointDistance({0, 0}, {3e30f, 4e30f}), 5e30f);
}

TEST(CalPerimeterOfContour, CountsTheClosingEdge) {
    EXPECT_EQ(CalPerimeterOfContour(UnitSquare()), 4.0);
    EXPECT_EQ(CalPerimeterOfContour({{0, 0}, {3, 4}}), 10.0);
}

TEST(CalPerimeterOfContour, OfNothingAndOfOnePointIsZero) {
    EXPECT_EQ(CalPerimeterOfContour({}), 0.0);
    EXPECT_EQ(CalPerimeterOfContour({{3, 4}}), 0.0);
}

TEST(CalPerimeterOfContour, SumsNarrowedDistancesInDouble) {
    RandomInput random(41);
    const Points contour = RandomPoints(random, 300, -500.0, 500.0);
    double sum = 0.0;
    double sumOfWideDistances = 0.0;
    for (std::size_t i = 0; i < contour.size(); ++i) {
        const cv::Point2f edge = contour[(i + 1) % contour.size()] - contour[i];
        const double length = std::sqrt(std::pow(edge.y, 2) + std::pow(edge.x, 2));
        sum += static_cast<float>(length);
        sumOfWideDistances += length;
    }
    EXPECT_EQ(CalPerimeterOfContour(contour), sum);
    EXPECT_NE(sum, sumOfWideDistances);
}

TEST(CalculateAverageAngle, SquareClockwiseFromTopLeftIsFortyFive) {
    EXPECT_FLOAT_EQ(CalculateAverageAngle(UnitSquare()), 45.0f);
}

TEST(CalculateAverageAngle, IsAPlainMeanAcrossTheWrap) {
    // There and back again: 0 and 180 degrees.
    EXPECT_FLOAT_EQ(CalculateAverageAngle({{0, 0}, {1, 0}}), 90.0f);
    // Almost 180 and almost -0: a circular mean would tell something else.
    EXPECT_NEAR(CalculateAverageAngle({{0, 0}, {-100, 1}}), (179.427f - 0.573f) / 2.0f, 1e-2);
}

TEST(CalculateAverageAngle, SumsInFloatWhatItConvertsInDouble) {
    RandomInput random(46);
    for (int i = 0; i < 50; ++i) {
        const Points contour = RandomPoints(random, random.Integer(1, 200), -500.0, 500.0);
        float sum = 0.0f;
        for (std::size_t k = 0; k < contour.size(); ++k) {
            const cv::Point2f& next = contour[(k + 1) % contour.size()];
            const double radians = std::atan2(next.y - contour[k].y, next.x - contour[k].x);
            sum += static_cast<float>(radians * 180.0 / CV_PI);
        }
        ASSERT_EQ(CalculateAverageAngle(contour), sum / static_cast<float>(contour.size())) << "contour " << i;
    }
}

TEST(CalculateAverageAngle, OfOnePointIsZeroAndOfNothingIsNotANumber) {
    EXPECT_EQ(CalculateAverageAngle({{3, 4}}), 0.0f);
    EXPECT_TRUE(std::isnan(CalculateAverageAngle({})));
}

TEST(CalculateExpansionHomography, ScalesTheFirstTwoRows) {
    const cv::Mat homography = (cv::Mat_<double>(3, 3) << 1, 2, 3, 4, 5, 6, 7, 8, 9);
    const cv::Mat before = homography.clone();
    const cv::Mat expected = (cv::Mat_<double>(3, 3) << 2.5, 5, 7.5, 10, 12.5, 15, 7, 8, 9);
    EXPECT_THAT(CalculateExpansionHomography(homography, 2.5), EqualsMat(expected));
    EXPECT_THAT(homography, EqualsMat(before));
}

TEST(CalculateExpansionHomography, KeepsTheBitsOfTheThirdRow) {
    const cv::Mat homography = (cv::Mat_<double>(3, 3) << 1, 0, 0, 0, 1, 0, -0.0, 1e-310, 1);
    EXPECT_THAT(CalculateExpansionHomography(homography, 3.0).row(2), EqualsMat(homography.row(2)));
}

TEST(CalculateExpansionHomography, OfAnyOtherSizeIsEmpty) {
    EXPECT_TRUE(CalculateExpansionHomography(cv::Mat(), 2.0).empty());
    EXPECT_TRUE(CalculateExpansionHomography(cv::Mat::eye(2, 3, CV_64F), 2.0).empty());
    EXPECT_TRUE(CalculateExpansionHomography(cv::Mat::eye(4, 4, CV_64F), 2.0).empty());
    EXPECT_TRUE(CalculateExpansionHomography(cv::Mat::eye(3, 4, CV_64F), 2.0).empty());
}

TEST(CalculateExpansionHomography, ReadsFloatsAsDoubles) {
    const cv::Mat homography = (cv::Mat_<float>(3, 3) << 1, 2, 3, 4, 5, 6, 7, 8, 9);
    const cv::Mat expected = (cv::Mat_<double>(3, 3) << 2, 4, 6, 8, 10, 12, 7, 8, 9);
    EXPECT_THAT(CalculateExpansionHomography(homography, 2.0), EqualsMat(expected));
}

TEST(FindFarthestPairPointInContour, FindsTheDiagonal) {
    cv::Point2f first;
    cv::Point2f second;
    float distance = -1.0f;
    FindFarthestPairPointInContour({{5, 5}, {0, 0}, {6, 2}, {3, 4}, {30, 40}}, first, second, distance);
    EXPECT_EQ(first, cv::Point2f(0, 0));
    EXPECT_EQ(second, cv::Point2f(30, 40));
    EXPECT_EQ(distance, 50.0f);
}

TEST(FindFarthestPairPointInContour, OfEqualPairsTheFirstStands) {
    cv::Point2f first;
    cv::Point2f second;
    float distance = -1.0f;
    FindFarthestPairPointInContour(UnitSquare(), first, second, distance);
    EXPECT_EQ(first, cv::Point2f(0, 0));
    EXPECT_EQ(second, cv::Point2f(1, 1));
    EXPECT_EQ(distance, std::sqrt(2.0f));
}

TEST(FindFarthestPairPointInContour, LeavesThePointsAloneWhereThereIsNoPair) {
    for (const Points& contour : {Points{}, Points{{3, 4}}, Points{{3, 4}, {3, 4}, {3, 4}}}) {
        cv::Point2f first(71, 72);
        cv::Point2f second(73, 74);
        float distance = -1.0f;
        FindFarthestPairPointInContour(contour, first, second, distance);
        EXPECT_EQ(first, cv::Point2f(71, 72));
        EXPECT_EQ(second, cv::Point2f(73, 74));
        EXPECT_EQ(distance, 0.0f);
    }
}

TEST(GetMinAreaRectAtAngle, WithoutATurnIsTheBoundingBox) {
    const cv::RotatedRect rect = GetMinAreaRectAtAngle({{10, 20}, {50, 20}, {30, 41}}, 0.0f);
    EXPECT_EQ(rect.size, cv::Size2f(41, 22));  // both borders count
    EXPECT_EQ(rect.center, cv::Point2f(30, 31));
    EXPECT_EQ(rect.angle, 0.0f);
}

TEST(GetMinAreaRectAtAngle, HalvesInWholePixels) {
    // 11 columns and 8 rows from (3, 4): half of 11 is 5.
    EXPECT_EQ(GetMinAreaRectAtAngle({{3, 4}, {13, 11}}, 0.0f).center, cv::Point2f(8, 8));
}

TEST(GetMinAreaRectAtAngle, KeepsTheCallersAngleAndHoldsThePoints) {
    RandomInput random(43);
    for (int i = 0; i < 200; ++i) {
        const Points points = RandomPoints(random, 12, -200.0, 400.0);
        const auto angle = static_cast<float>(random.Real(-360.0, 360.0));
        const cv::RotatedRect rect = GetMinAreaRectAtAngle(points, angle);
        EXPECT_EQ(rect.angle, angle);
        const cv::Point2f u(std::cos(angle * static_cast<float>(CV_PI) / 180.0f),
                            std::sin(angle * static_cast<float>(CV_PI) / 180.0f));
        for (const cv::Point2f& point : points) {
            const cv::Point2f d = point - rect.center;
            EXPECT_LE(std::abs(d.dot(u)), rect.size.width / 2 + 1.0f);
            EXPECT_LE(std::abs(d.cross(u)), rect.size.height / 2 + 1.0f);
        }
    }
}

TEST(GetMinAreaRectAtAngle, TurnsThePointsAndTheHalvedCentreInDouble) {
    const auto through = [](const cv::Mat& matrix, double x, double y) {
        const cv::Mat_<double> turned = matrix * (cv::Mat_<double>(3, 1) << x, y, 1.0);
        return cv::Point2f(static_cast<float>(turned(0)), static_cast<float>(turned(1)));
    };
    RandomInput random(47);
    for (int i = 0; i < 200; ++i) {
        const Points points = RandomPoints(random, random.Integer(1, 12), -300.0, 300.0);
        const auto angle = static_cast<float>(random.Real(-360.0, 360.0));
        Points turned;
        for (const cv::Point2f& point : points) {
            turned.push_back(through(cv::getRotationMatrix2D({0, 0}, angle, 1.0), point.x, point.y));
        }
        const cv::Rect box = cv::boundingRect(turned);
        const cv::Point2f center =
            through(cv::getRotationMatrix2D({0, 0}, -angle, 1.0), box.x + box.width / 2, box.y + box.height / 2);
        const cv::RotatedRect rect = GetMinAreaRectAtAngle(points, angle);
        ASSERT_EQ(rect.center, center) << "list " << i;
        ASSERT_EQ(rect.size, cv::Size2f(box.size())) << "list " << i;
    }
}

TEST(GetMinAreaRectAtAngle, OfALineAlongTheAngleIsFlat) {
    const cv::RotatedRect rect = GetMinAreaRectAtAngle({{0, 0}, {30, 40}}, 53.130102f);
    EXPECT_NEAR(rect.size.width, 51.0f, 1.0f);
    EXPECT_LE(rect.size.height, 2.0f);
    EXPECT_THAT(rect.center, NearPoint(cv::Point2f(15, 20), 1.5));
}

TEST(GetMinAreaRectAtAngle, OfNothingHasNoSize) {
    const cv::RotatedRect rect = GetMinAreaRectAtAngle({}, 30.0f);
    EXPECT_EQ(rect.size, cv::Size2f(0, 0));
    EXPECT_EQ(rect.center, cv::Point2f(0, 0));
    EXPECT_EQ(rect.angle, 30.0f);
}

TEST(GetMinimumBoundingRectangle, IsSpannedByTheCornerAndTheSize) {
    EXPECT_EQ(GetMinimumBoundingRectangle({{100, 200}, {150, 260}, {120, 230}}), cv::Rect2f(50, 60, 50, 140));
}

TEST(GetMinimumBoundingRectangle, IsTheBoxOnlyAtTheOrigin) {
    EXPECT_EQ(GetMinimumBoundingRectangle({{0, 0}, {30, 40}}), cv::Rect2f(0, 0, 30, 40));
}

TEST(GetMinimumBoundingRectangle, NegativeCoordinatesDoNotLowerTheMaxima) {
    const cv::Rect2f rect = GetMinimumBoundingRectangle({{-30, -40}, {-10, -20}});
    // The maxima stay at the least normal float, so W = 30 and H = 40.
    EXPECT_EQ(rect, cv::Rect2f(-30, -40, 60, 80));
}

TEST(GetMinimumBoundingRectangle, OfTheOriginAloneIsAsLargeAsTheLeastNumber) {
    EXPECT_EQ(GetMinimumBoundingRectangle({{0, 0}}), cv::Rect2f(0, 0, 1.1754944e-38f, 1.1754944e-38f));
}

TEST(GetMinimumBoundingRectangle, HoldsAPartBelowZero) {
    // W = 20 - -30 and H = 5 - -40: the corner (50, 45) spans the rectangle with (-30, -40).
    EXPECT_EQ(GetMinimumBoundingRectangle({{-30, -40}, {20, 5}}), cv::Rect2f(-30, -40, 80, 85));
}

TEST(GetMinimumBoundingRectangle, OfNothingIsWhatItsStartValuesSpan) {
    const cv::Rect2f rect = GetMinimumBoundingRectangle({});
    EXPECT_EQ(rect.x, leastNormalFloat - largestFloat);
    EXPECT_EQ(rect.y, leastNormalFloat - largestFloat);
    EXPECT_TRUE(std::isinf(rect.width) && std::isinf(rect.height));
}

TEST(GetRotateRectConner, FollowsTheOrderOfTheRectangle) {
    const cv::RotatedRect rect({50, 60}, {20, 10}, 30.0f);
    cv::Point2f corners[4];
    rect.points(corners);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(GetRotateRectConner(rect, i), corners[i]);
}

TEST(GetRotateRectConner, BeginsAtTheLowerLeft) {
    const cv::RotatedRect rect({50, 60}, {20, 10}, 0.0f);
    EXPECT_EQ(GetRotateRectConner(rect, 0), cv::Point2f(40, 65));
    EXPECT_EQ(GetRotateRectConner(rect, 1), cv::Point2f(40, 55));
    EXPECT_EQ(GetRotateRectConner(rect, 2), cv::Point2f(60, 55));
    EXPECT_EQ(GetRotateRectConner(rect, 3), cv::Point2f(60, 65));
}

TEST(GetRotateRectConner, LooksAtTheTwoLowestBitsOfTheIndex) {
    const cv::RotatedRect rect({50, 60}, {20, 10}, 0.0f);
    EXPECT_EQ(GetRotateRectConner(rect, 4), GetRotateRectConner(rect, 0));
    EXPECT_EQ(GetRotateRectConner(rect, -1), GetRotateRectConner(rect, 3));
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
