#include "Includes/ResponseMaps.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/Includes/MatcherMatchers.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"

namespace line2Dup {

using Quorvane::TestSupport::EqualsMat;
using Quorvane::TestSupport::ExpectMatcherError;
using Quorvane::TestSupport::RandomInput;
namespace Reference = Quorvane::Reference;

namespace {

TEST(SpreadOrientations, TakesThePixelIntoTheBlocksThatItEnds) {
    cv::Mat source = cv::Mat::zeros(10, 12, CV_8U);
    source.at<uchar>(5, 5) = 8;
    cv::Mat expected = cv::Mat::zeros(10, 12, CV_8U);
    expected(cv::Rect(4, 4, 2, 2)) = 8;
    cv::Mat spread;
    spreadOrientations(source, spread, 2);
    EXPECT_THAT(spread, EqualsMat(expected));
}

TEST(SpreadOrientations, IsTheSourceForStepOne) {
    const cv::Mat source = RandomInput(310).Image({37, 21});
    cv::Mat spread;
    spreadOrientations(source, spread, 1);
    EXPECT_THAT(spread, EqualsMat(source));
}

TEST(SpreadOrientations, EqualsThePlainSpreadForEveryStepAndSize) {
    RandomInput random(311);
    for (int i = 0; i < 300; ++i) {
        const cv::Mat source = random.Image({random.Integer(1, 50), random.Integer(1, 20)}, 1, 0, 3);
        const int T = random.Integer(1, 9);
        cv::Mat spread;
        spreadOrientations(source, spread, T);
        ASSERT_THAT(spread, EqualsMat(Reference::SpreadOrientations(source, T))) << source.size() << ", step " << T;
    }
}

TEST(SpreadOrientations, TakesASubImageAndItsOwnSource) {
    const cv::Mat whole = RandomInput(312).Image({60, 40});
    const cv::Mat part = whole(cv::Rect(3, 2, 33, 21));
    cv::Mat spread;
    spreadOrientations(part, spread, 2);
    EXPECT_THAT(spread, EqualsMat(Reference::SpreadOrientations(part, 2)));
    cv::Mat image = part.clone();
    spreadOrientations(image, image, 2);
    EXPECT_THAT(image, EqualsMat(spread));
}

TEST(OrRowsUnaligned, IsThePlainOrOfARectangle) {
    RandomInput random(313);
    for (int i = 0; i < 200; ++i) {
        const cv::Mat source = random.Image({70, 9});
        const cv::Mat before = random.Image({80, 9});
        cv::Mat target = before.clone();
        const int x = random.Integer(0, 20);
        const int width = random.Integer(0, 50);
        const int height = random.Integer(0, 9);
        orRowsUnaligned(source.ptr() + x, static_cast<int>(source.step1()), target.ptr(),
                        static_cast<int>(target.step1()), width, height);
        cv::Mat expected = before.clone();
        if (width > 0 && height > 0) {
            expected(cv::Rect(0, 0, width, height)) |= source(cv::Rect(x, 0, width, height));
        }
        ASSERT_THAT(target, EqualsMat(expected));
    }
}

TEST(ComputeResponseMaps, GradesOwnLabelNeighbourAndTheRest) {
    const cv::Mat spread(4, 4, CV_8U, cv::Scalar(1 | 4));
    std::vector<cv::Mat> maps;
    computeResponseMaps(spread, maps);
    ASSERT_EQ(maps.size(), 8u);
    const int expected[] = {4, 3, 4, 3, 0, 0, 0, 3};
    for (std::size_t label = 0; label < 8; ++label) {
        EXPECT_THAT(maps[label], EqualsMat(cv::Mat(4, 4, CV_8U, cv::Scalar(expected[label])))) << label;
    }
}

TEST(ComputeResponseMaps, GivesNothingWithoutOrientation) {
    std::vector<cv::Mat> maps(11);
    computeResponseMaps(cv::Mat::zeros(4, 8, CV_8U), maps);
    ASSERT_EQ(maps.size(), 8u);
    for (const cv::Mat& map : maps) EXPECT_THAT(map, EqualsMat(cv::Mat(cv::Mat::zeros(4, 8, CV_8U))));
}

TEST(ComputeResponseMaps, EqualsTheTableForEveryByte) {
    cv::Mat spread(17, 256, CV_8U);
    for (int r = 0; r < spread.rows; ++r) {
        for (int c = 0; c < spread.cols; ++c) spread.at<uchar>(r, c) = static_cast<uchar>(c + r);
    }
    std::vector<cv::Mat> maps;
    computeResponseMaps(spread, maps);
    const std::vector<cv::Mat> expected = Reference::ComputeResponseMaps(spread);
    for (std::size_t label = 0; label < 8; ++label) EXPECT_THAT(maps[label], EqualsMat(expected[label])) << label;
}

TEST(ComputeResponseMaps, RaisesUnlessPixelsComeInSixteens) {
    std::vector<cv::Mat> maps;
    ExpectMatcherError([&] { computeResponseMaps(cv::Mat::zeros(10, 10, CV_8U), maps); }, cv::Error::StsAssert,
                       "(src.rows * src.cols) % 16 == 0", "line2Dup::computeResponseMaps");
    computeResponseMaps(cv::Mat::zeros(2, 24, CV_8U), maps);
    EXPECT_EQ(maps[7].size(), cv::Size(24, 2));
}

TEST(Linearize, PutsEachGridPhaseInARow) {
    const cv::Mat map = (cv::Mat_<uchar>(4, 4) << 0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23, 30, 31, 32, 33);
    const cv::Mat expected = (cv::Mat_<uchar>(4, 4) << 0, 2, 20, 22, 1, 3, 21, 23, 10, 12, 30, 32, 11, 13, 31, 33);
    cv::Mat linear;
    linearize(map, linear, 2);
    EXPECT_THAT(linear, EqualsMat(expected));
}

TEST(Linearize, EqualsThePlainOrderForEveryStep) {
    RandomInput random(314);
    for (int T = 1; T <= 8; ++T) {
        const cv::Mat map = random.Image({T * random.Integer(1, 9), T * random.Integer(1, 9)});
        cv::Mat linear;
        linearize(map, linear, T);
        EXPECT_THAT(linear, EqualsMat(Reference::Linearize(map, T))) << "step " << T;
    }
}

TEST(Linearize, RaisesUnlessTheStepDividesRowsThenColumns) {
    cv::Mat linear;
    ExpectMatcherError([&] { linearize(cv::Mat::zeros(17, 15, CV_8U), linear, 2); }, cv::Error::StsAssert,
                       "response_map.rows % T == 0", "line2Dup::linearize");
    ExpectMatcherError([&] { linearize(cv::Mat::zeros(16, 15, CV_8U), linear, 2); }, cv::Error::StsAssert,
                       "response_map.cols % T == 0", "line2Dup::linearize");
    ExpectMatcherError([&] { linearize(cv::Mat::zeros(16, 16, CV_8U), linear, 0); }, cv::Error::StsAssert,
                       "response_map.rows % T == 0", "line2Dup::linearize");
}

}  // namespace
}  // namespace line2Dup
