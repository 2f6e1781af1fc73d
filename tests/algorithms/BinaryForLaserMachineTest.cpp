#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "framework/AlgorithmFactory.h"
#include "tests/reference/PlainHalftone.h"
#include "tests/reference/PlainLocalDeviationMap.h"
#include "tests/support/Matchers.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Quorvane {

using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::EqualsMat;
using TestSupport::ExpectThrowWithText;
using TestSupport::RandomInput;

namespace {

class BinaryForLaserMachineTest : public testing::Test {
protected:
    std::string ErrorMessage() {
        std::string message;
        algorithm->GetErrorMsg(message);
        return message;
    }

    void SetThresholds(int low, int high) {
        algorithm->SetParameter("LowThreshold", low);
        algorithm->SetParameter("HighThreshold", high);
    }

    cv::Mat Run(const cv::Mat& source) {
        cv::Mat destination;
        EXPECT_EQ(algorithm->Execute(source, destination), 0);
        EXPECT_EQ(destination.type(), CV_8UC1);
        EXPECT_EQ(destination.size(), source.size());
        return destination;
    }

    std::unique_ptr<Algorithm> algorithm{AlgorithmFactory().CreateAlgorithm("BinaryForLaserMachine")};
};

/// Dark left half, and in the right half a chessboard of two bright levels, so that Otsu's threshold lies between.
cv::Mat DarkAndBright(uchar dark, uchar bright, uchar brighter) {
    cv::Mat image(60, 80, CV_8UC1, cv::Scalar(dark));
    for (int r = 0; r < image.rows; ++r) {
        for (int c = 40; c < image.cols; ++c) image.at<uchar>(r, c) = (r + c) % 2 == 0 ? bright : brighter;
    }
    return image;
}

cv::Mat OtsuOf(const cv::Mat& gray) {
    cv::Mat otsu;
    cv::threshold(gray, otsu, 0.0, 255.0, cv::THRESH_BINARY | cv::THRESH_OTSU);
    return otsu;
}

/// The share of dots over many runs, per pixel.
cv::Mat DotShares(Algorithm& algorithm, const cv::Mat& source, int runs) {
    cv::Mat shares = cv::Mat::zeros(source.size(), CV_64FC1);
    for (int i = 0; i < runs; ++i) {
        cv::Mat dots;
        algorithm.Execute(source, dots);
        cv::add(shares, dots, shares, cv::noArray(), CV_64F);
    }
    return shares / (255.0 * runs);
}

/// Holds the share of dots of every pixel against its probability: exactly where chance has no part, and within the
/// spread that a binomial count has otherwise (six deviations, so that no fair draw fails).
void ExpectShares(const cv::Mat& shares, const cv::Mat& probabilities, int runs) {
    double sumOfSquares = 0.0;
    int inBand = 0;
    for (int r = 0; r < shares.rows; ++r) {
        for (int c = 0; c < shares.cols; ++c) {
            const double probability = probabilities.at<double>(r, c);
            const double share = shares.at<double>(r, c);
            if (probability == 0.0 || probability == 1.0) {
                ASSERT_EQ(share, probability) << "column " << c << ", row " << r;
                continue;
            }
            const double deviation = std::sqrt(probability * (1.0 - probability) / runs);
            ASSERT_NEAR(share, probability, 6.0 * deviation + 1.0 / runs) << "column " << c << ", row " << r;
            sumOfSquares += (share - probability) * (share - probability) / (deviation * deviation);
            ++inBand;
        }
    }
    ASSERT_GT(inBand, 100);
    // The mean squared standardised error of fair draws is 1 with a deviation of about sqrt(2/n), somewhat more for
    // probabilities near 0 and 1.
    EXPECT_NEAR(sumOfSquares / inBand, 1.0, 8.0 * std::sqrt(2.0 / inBand));
}

TEST_F(BinaryForLaserMachineTest, DeclaresItsParametersAndResults) {
    std::vector<std::string> names;
    algorithm->GetParameterNameList(names);
    EXPECT_THAT(names, UnorderedElementsAre("HighThreshold", "LowThreshold", "MaskSize"));
    EXPECT_EQ(algorithm->GetParameterToString("HighThreshold"), "240");
    EXPECT_EQ(algorithm->GetParameterToString("LowThreshold"), "20");
    EXPECT_EQ(algorithm->GetParameterToString("MaskSize"), "5");
    algorithm->GetResultNameList(names);
    EXPECT_THAT(names, UnorderedElementsAre("AlgorithmErrorMsg"));
    EXPECT_THAT(algorithm->GetResultValues("AlgorithmErrorMsg"), testing::ElementsAre(""));
}

TEST_F(BinaryForLaserMachineTest, RefusesAnEmptyImageUntilARunWithAPictureClearsTheMessage) {
    cv::Mat destination(3, 4, CV_8UC1, cv::Scalar(9));
    const cv::Mat before = destination.clone();
    EXPECT_EQ(algorithm->Execute(cv::Mat(), destination), 2);
    EXPECT_EQ(ErrorMessage(), "[BinaryForLaserMachine]Image is empty!");
    EXPECT_THAT(destination, EqualsMat(before));
    EXPECT_EQ(ErrorMessage(), "[BinaryForLaserMachine]Image is empty!");

    Run(DarkAndBright(10, 150, 200));
    EXPECT_EQ(ErrorMessage(), "");
    EXPECT_THAT(algorithm->GetResultValues("AlgorithmErrorMsg"), IsEmpty());
}

TEST_F(BinaryForLaserMachineTest, DotsFallOnlyOnTheForeground) {
    for (const std::string& name : TestSupport::PictureNames()) {
        const cv::Mat gray = TestSupport::LoadGrayPicture(name);
        const cv::Mat dots = Run(gray);
        EXPECT_EQ(cv::countNonZero(dots & ~OtsuOf(gray)), 0) << name;
        EXPECT_EQ(cv::countNonZero((dots != 0) & (dots != 255)), 0) << name;
        EXPECT_GT(cv::countNonZero(dots), 0) << name;
    }
}

TEST_F(BinaryForLaserMachineTest, BurnsWithTheProbabilityOfEveryPixelOfAPicture) {
    const cv::Mat gray = TestSupport::LoadGrayPicture("coins.png")(cv::Rect(30, 20, 60, 50)).clone();
    constexpr int runs = 4000;
    SetThresholds(30, 200);
    ExpectShares(DotShares(*algorithm, gray, runs), Reference::DotProbabilities(gray, 200.0f, 30.0f, 5), runs);
}

TEST_F(BinaryForLaserMachineTest, BurnsWithTheProbabilityOfEveryPixelOfNoise) {
    const cv::Mat gray = RandomInput(31).Image({40, 30}, 1, 0, 255);
    constexpr int runs = 4000;
    algorithm->SetParameter("MaskSize", 9);
    ExpectShares(DotShares(*algorithm, gray, runs), Reference::DotProbabilities(gray, 240.0f, 20.0f, 9), runs);
}

TEST_F(BinaryForLaserMachineTest, PixelsAboveAreBurnedAndPixelsBelowAreNot) {
    const cv::Mat image = DarkAndBright(10, 150, 200);
    SetThresholds(160, 190);
    EXPECT_THAT(Run(image), EqualsMat(cv::Mat(image == 200)));
}

TEST_F(BinaryForLaserMachineTest, ThresholdsThatMeetLeaveOneBrightnessToChance) {
    const cv::Mat image = DarkAndBright(10, 150, 200);
    SetThresholds(150, 150);
    constexpr int runs = 3000;
    const cv::Mat shares = DotShares(*algorithm, image, runs);
    EXPECT_EQ(cv::countNonZero(shares == 1.0), 60 * 20);
    EXPECT_THAT(cv::Mat(shares == 1.0), EqualsMat(cv::Mat(image == 200)));
    EXPECT_EQ(cv::countNonZero((shares > 0.0) & (image == 10)), 0);
    EXPECT_NEAR(cv::mean(shares, image == 150)[0], static_cast<double>(0.1f), 0.002);
}

TEST_F(BinaryForLaserMachineTest, CrossedThresholdsLeaveNothingToChance) {
    const cv::Mat image = DarkAndBright(10, 150, 200);
    SetThresholds(210, 170);
    EXPECT_THAT(Run(image), EqualsMat(cv::Mat(image == 200)));
}

TEST_F(BinaryForLaserMachineTest, ThresholdsAreLimitedToBrightness) {
    const cv::Mat gray = DarkAndBright(10, 250, 255);
    constexpr int runs = 2000;
    SetThresholds(-5, 300);
    ExpectShares(DotShares(*algorithm, gray, runs), Reference::DotProbabilities(gray, 255.0f, 0.0f, 5), runs);
    SetThresholds(300, 400);
    EXPECT_EQ(cv::countNonZero(Run(gray) & (gray < 255)), 0);
}

TEST_F(BinaryForLaserMachineTest, ThresholdsKeepTheirFraction) {
    const cv::Mat image = DarkAndBright(10, 150, 200);
    algorithm->SetParameter("LowThreshold", 150.25);
    algorithm->SetParameter("HighThreshold", std::string("199.75"));
    EXPECT_THAT(Run(image), EqualsMat(cv::Mat(image == 200)));
}

TEST_F(BinaryForLaserMachineTest, BrightnessEqualToTheHighThresholdIsInTheBand) {
    const cv::Mat image = DarkAndBright(10, 150, 200);
    SetThresholds(20, 200);
    constexpr int runs = 1000;
    const cv::Mat probabilities = Reference::DotProbabilities(image, 200.0f, 20.0f, 5);
    EXPECT_LT(probabilities.at<double>(30, 60), 1.0);
    ExpectShares(DotShares(*algorithm, image, runs), probabilities, runs);
}

TEST_F(BinaryForLaserMachineTest, WithoutContrastEveryTenthPixelOfTheBandIsBurned) {
    const cv::Mat image = DarkAndBright(10, 150, 200);
    constexpr int runs = 200;
    for (const int maskSize : {0, 1, 60, 61, 1000}) {
        algorithm->SetParameter("MaskSize", maskSize);
        const cv::Mat shares = DotShares(*algorithm, image, runs);
        EXPECT_NEAR(cv::mean(shares, image > 10)[0], static_cast<double>(0.1f), 0.004) << maskSize;
        EXPECT_EQ(cv::countNonZero((shares > 0.0) & (image == 10)), 0) << maskSize;
    }
}

TEST_F(BinaryForLaserMachineTest, AnEvenMaskSizeIsRaisedByOne) {
    const cv::Mat gray = RandomInput(32).Image({40, 30}, 1, 0, 255);
    constexpr int runs = 3000;
    algorithm->SetParameter("MaskSize", 4);
    ExpectShares(DotShares(*algorithm, gray, runs), Reference::DotProbabilities(gray, 240.0f, 20.0f, 5), runs);
}

TEST_F(BinaryForLaserMachineTest, AFlatImageGetsNoDotsWhereThereIsNoForeground) {
    for (const int level : {0, 128, 255}) {
        const cv::Mat flat(20, 30, CV_8UC1, cv::Scalar(level));
        EXPECT_EQ(cv::countNonZero(Run(flat) & ~OtsuOf(flat)), 0) << level;
    }
}

TEST_F(BinaryForLaserMachineTest, AColourPictureGivesOneChannelAndTheDotsOfItsGrayImage) {
    const cv::Mat colour = TestSupport::LoadColourPicture("coffee.png");
    cv::Mat gray;
    cv::cvtColor(colour, gray, cv::COLOR_BGR2GRAY);
    SetThresholds(120, 120);
    const cv::Mat certain = gray != 120;
    EXPECT_THAT(cv::Mat(Run(colour) & certain), EqualsMat(cv::Mat(OtsuOf(gray) & (gray > 120))));
}

TEST_F(BinaryForLaserMachineTest, ASixteenBitImageGivesEightBitDots) {
    cv::Mat wide;
    DarkAndBright(10, 150, 200).convertTo(wide, CV_16U);
    SetThresholds(160, 190);
    EXPECT_THAT(Run(wide), EqualsMat(cv::Mat(wide == 200)));
}

TEST_F(BinaryForLaserMachineTest, TheSourceStaysAsItWasAndTheDotsDiffer) {
    for (const cv::Mat& source :
         {TestSupport::LoadColourPicture("coffee.png"), TestSupport::LoadGrayPicture("coffee.png")}) {
        const cv::Mat before = source.clone();
        const cv::Mat first = Run(source);
        const cv::Mat second = Run(source);
        EXPECT_THAT(source, EqualsMat(before));
        EXPECT_GT(cv::norm(first, second), 0.0);
    }
}

TEST_F(BinaryForLaserMachineTest, TakesASubImage) {
    const cv::Mat whole = DarkAndBright(10, 150, 200);
    const cv::Mat part = whole(cv::Rect(20, 10, 40, 30));
    SetThresholds(160, 190);
    EXPECT_THAT(Run(part), EqualsMat(cv::Mat(part == 200)));
}

TEST_F(BinaryForLaserMachineTest, OtherChannelCountsAreAnEmptyGrayImageToOpenCv) {
    for (const int channels : {2, 4}) {
        const cv::Mat source = RandomInput(33).Image({20, 15}, channels);
        cv::Mat destination(3, 4, CV_8UC1, cv::Scalar(9));
        EXPECT_EQ(algorithm->Execute(source, destination), 0) << channels;
        EXPECT_TRUE(destination.empty()) << channels;
    }
    const int sizes[] = {3, 20, 15};
    cv::Mat destination(3, 4, CV_8UC1, cv::Scalar(9));
    EXPECT_EQ(algorithm->Execute(cv::Mat(3, sizes, CV_8UC2, cv::Scalar::all(9)), destination), 0);
    EXPECT_TRUE(destination.empty());
    EXPECT_THROW(algorithm->Execute(cv::Mat(3, sizes, CV_8UC1, cv::Scalar::all(9)), destination), cv::Exception);
}

TEST_F(BinaryForLaserMachineTest, RefusedDepthsAndWindowsReachTheHostAsExceptions) {
    cv::Mat destination;
    EXPECT_THROW(algorithm->Execute(cv::Mat::zeros(10, 10, CV_32FC1), destination), cv::Exception);
    for (const int maskSize : {-1, -3, -4, -2147483647}) {
        algorithm->SetParameter("MaskSize", maskSize);
        EXPECT_THROW(algorithm->Execute(DarkAndBright(10, 150, 200), destination), cv::Exception) << maskSize;
    }
    EXPECT_TRUE(destination.empty());
}

TEST_F(BinaryForLaserMachineTest, AnEmptyImageIsRefusedBeforeAnyParameterIsRead) {
    cv::Mat destination;
    algorithm->SetParameter("LowThreshold", std::string("dark"));
    EXPECT_EQ(algorithm->Execute(cv::Mat(), destination), 2);
    EXPECT_EQ(ErrorMessage(), "[BinaryForLaserMachine]Image is empty!");
}

TEST_F(BinaryForLaserMachineTest, TheMessageIsGoneEvenWhenTheNextRunThrows) {
    cv::Mat destination;
    EXPECT_EQ(algorithm->Execute(cv::Mat(), destination), 2);
    algorithm->SetParameter("LowThreshold", std::string("dark"));
    ExpectThrowWithText<std::invalid_argument>([&] { algorithm->Execute(DarkAndBright(10, 150, 200), destination); },
                                               "invalid stof argument");
    EXPECT_EQ(ErrorMessage(), "");
}

TEST_F(BinaryForLaserMachineTest, TakesOneMatrixAsSourceAndDestination) {
    SetThresholds(160, 190);
    const cv::Mat original = DarkAndBright(10, 150, 200);
    cv::Mat image = original.clone();
    EXPECT_EQ(algorithm->Execute(image, image), 0);
    EXPECT_THAT(image, EqualsMat(cv::Mat(original == 200)));

    cv::Mat colour;
    cv::cvtColor(original, colour, cv::COLOR_GRAY2BGR);
    EXPECT_EQ(algorithm->Execute(colour, colour), 0);
    EXPECT_THAT(colour, EqualsMat(cv::Mat(original == 200)));
}

TEST_F(BinaryForLaserMachineTest, FillsAPartOfALargerDestination) {
    SetThresholds(160, 190);
    const cv::Mat image = DarkAndBright(10, 150, 200);
    cv::Mat wide;
    image.convertTo(wide, CV_16U);
    for (const cv::Mat& source : {image, wide}) {
        SCOPED_TRACE(cv::typeToString(source.type()));
        cv::Mat whole(100, 120, CV_8UC1, cv::Scalar(7));
        cv::Mat part = whole(cv::Rect(20, 30, image.cols, image.rows));
        EXPECT_EQ(algorithm->Execute(source, part), 0);
        EXPECT_THAT(cv::Mat(whole(cv::Rect(20, 30, image.cols, image.rows))), EqualsMat(cv::Mat(image == 200)));
        EXPECT_EQ(cv::countNonZero(whole == 7), static_cast<int>(whole.total() - image.total()));
    }
}

TEST_F(BinaryForLaserMachineTest, TextsWithoutNumberReachTheHostAsExceptions) {
    const cv::Mat image = DarkAndBright(10, 150, 200);
    cv::Mat destination;
    algorithm->SetParameter("HighThreshold", std::string("bright"));
    ExpectThrowWithText<std::invalid_argument>([&] { algorithm->Execute(image, destination); },
                                               "invalid stof argument");
    algorithm->SetParameter("HighThreshold", 240);
    algorithm->SetParameter("MaskSize", std::string("wide"));
    ExpectThrowWithText<std::invalid_argument>([&] { algorithm->Execute(image, destination); },
                                               "invalid stoi argument");
    EXPECT_TRUE(destination.empty());
}

TEST_F(BinaryForLaserMachineTest, LeavesPixelsThatTheDestinationSharesWithTheSource) {
    const cv::Mat source = DarkAndBright(10, 250, 255);
    const cv::Mat before = source.clone();
    cv::Mat destination = source;
    EXPECT_EQ(algorithm->Execute(source, destination), 0);
    EXPECT_THAT(source, EqualsMat(before));
    EXPECT_THAT(destination, EqualsMat(OtsuOf(before)));

    cv::Mat both = source.clone();
    EXPECT_EQ(algorithm->Execute(both, both), 0);
    EXPECT_THAT(both, EqualsMat(OtsuOf(before)));
}

TEST_F(BinaryForLaserMachineTest, WritesIntoAPartOfALargerPictureOfTheRightSize) {
    const cv::Mat source = DarkAndBright(10, 250, 255);
    cv::Mat whole = cv::Mat::zeros(source.rows + 2, source.cols + 2, CV_8UC1);
    const cv::Rect place(cv::Point(1, 1), source.size());
    cv::Mat destination = whole(place);
    EXPECT_EQ(algorithm->Execute(source, destination), 0);
    EXPECT_THAT(cv::Mat(whole(place)), EqualsMat(OtsuOf(source)));
}

}  // namespace
}  // namespace Quorvane
