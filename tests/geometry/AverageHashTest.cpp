#include "geometry/AverageHash.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "tests/support/CapturedStream.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::UtilityFunctions {

using TestSupport::CapturedStream;
using TestSupport::RandomInput;

namespace {

const std::string invalidHash = "Error: Invalid hash string. It must be 64 bits long and contain only '0' and '1'.\n";

std::string Zeros(std::size_t count = 64) { return std::string(count, '0'); }

TEST(AverageHashString, OfAUniformImageIsAllZeros) {
    EXPECT_EQ(averageHashString(cv::Mat(30, 50, CV_8UC1, cv::Scalar(77))), Zeros());
}

TEST(AverageHashString, TellsTheFieldsBrighterThanTheMeanRowByRow) {
    cv::Mat gray = cv::Mat::zeros(8, 8, CV_8UC1);
    gray.at<uchar>(0, 1) = 200;
    gray.at<uchar>(7, 7) = 200;
    std::string expected = Zeros();
    expected[1] = '1';
    expected[63] = '1';
    EXPECT_EQ(averageHashString(gray), expected);
}

TEST(AverageHashString, APixelAtTheTruncatedMeanIsZero) {
    // 63 pixels of 10 and one of 73: the mean is 10.98, truncated 10. A pixel of 11 would be above it.
    cv::Mat gray(8, 8, CV_8UC1, cv::Scalar(10));
    gray.at<uchar>(3, 0) = 73;
    std::string expected = Zeros();
    expected[24] = '1';
    EXPECT_EQ(averageHashString(gray), expected);
    // 63 of 11 and one of 0: the mean is 10.83, truncated 10, and so all but one are brighter.
    gray.setTo(11);
    gray.at<uchar>(3, 0) = 0;
    expected = std::string(64, '1');
    expected[24] = '0';
    EXPECT_EQ(averageHashString(gray), expected);
}

TEST(AverageHashString, ShrinksWithLinearInterpolation) {
    const cv::Mat gray = RandomInput(100).Image({61, 47});
    cv::Mat small;
    cv::resize(gray, small, cv::Size(8, 8), 0.0, 0.0, cv::INTER_LINEAR);
    EXPECT_EQ(averageHashString(gray), averageHashString(small));
}

TEST(AverageHashString, TakesColourWithAndWithoutAlpha) {
    const cv::Mat gray = RandomInput(101).Image({61, 47});
    cv::Mat colour;
    cv::cvtColor(gray, colour, cv::COLOR_GRAY2BGR);
    cv::Mat withAlpha;
    cv::cvtColor(gray, withAlpha, cv::COLOR_GRAY2BGRA);
    EXPECT_EQ(averageHashString(colour), averageHashString(gray));
    EXPECT_EQ(averageHashString(withAlpha), averageHashString(gray));
}

TEST(AverageHashString, TakesSixteenBitsAndFloats) {
    const cv::Mat gray = RandomInput(102).Image({8, 8});
    cv::Mat other;
    gray.convertTo(other, CV_32F);
    EXPECT_EQ(averageHashString(other), averageHashString(gray));
    gray.convertTo(other, CV_16U);
    EXPECT_EQ(averageHashString(other), averageHashString(gray));
}

TEST(AverageHashString, TruncatesTheMeanOfFloatsToo) {
    // The mean is 10.52, truncated 10: fields of 10.5 are above it.
    cv::Mat gray(8, 8, CV_32FC1, cv::Scalar(10.5));
    gray.at<float>(2, 3) = 12.0f;
    gray.at<float>(2, 4) = 10.0f;
    std::string expected(64, '1');
    expected[20] = '0';
    EXPECT_EQ(averageHashString(gray), expected);
}

TEST(AverageHashString, OfOtherChannelCountsIsEmpty) {
    EXPECT_EQ(averageHashString(cv::Mat::zeros(9, 9, CV_8UC2)), "");
    EXPECT_EQ(averageHashString(cv::Mat::zeros(9, 9, CV_8UC(5))), "");
}

TEST(AverageHashString, RefusesNothing) {
    EXPECT_THROW(averageHashString(cv::Mat()), cv::Exception);
    EXPECT_THROW(averageHashString(cv::Mat(0, 0, CV_8UC3)), cv::Exception);
}

TEST(HammingDistanceOfHashes, CountsThePlacesThatDiffer) {
    std::string other = Zeros();
    EXPECT_EQ(hammingDistanceOfHashes(Zeros(), other), 0);
    other[0] = other[31] = other[63] = '1';
    EXPECT_EQ(hammingDistanceOfHashes(Zeros(), other), 3);
    EXPECT_EQ(hammingDistanceOfHashes(other, Zeros()), 3);
    EXPECT_EQ(hammingDistanceOfHashes(std::string(64, '1'), Zeros()), 64);
}

TEST(HammingDistanceOfHashes, RefusesAFirstThatIsNoHash) {
    std::string wrongLetter = Zeros();
    wrongLetter[20] = '2';
    for (const std::string& first : {std::string(), Zeros(63), Zeros(65), wrongLetter}) {
        const CapturedStream errors(std::cerr);
        const CapturedStream output(std::cout);
        EXPECT_EQ(hammingDistanceOfHashes(first, Zeros()), -1);
        EXPECT_EQ(errors.Text(), invalidHash);
        EXPECT_EQ(output.Text(), "");
    }
}

TEST(HammingDistanceOfHashes, AlignsAShorterSecondAtItsEnd) {
    const CapturedStream errors(std::cerr);
    EXPECT_EQ(hammingDistanceOfHashes(std::string(64, '1'), ""), 64);
    EXPECT_EQ(hammingDistanceOfHashes(Zeros(62) + "11", "11"), 0);
    EXPECT_EQ(hammingDistanceOfHashes("11" + Zeros(62), "11"), 4);
    EXPECT_EQ(errors.Text(), "");
}

TEST(HammingDistanceOfHashes, ASecondOfOtherLettersIsAnException) {
    EXPECT_THROW(hammingDistanceOfHashes(Zeros(), "2"), std::invalid_argument);
}

}  // namespace
}  // namespace Quorvane::UtilityFunctions
