#include "tests/algorithms/FillingFixture.h"

#include <iostream>
#include <opencv2/core.hpp>

#include "framework/AlgorithmFactory.h"
#include "framework/NumberText.h"
#include "tests/reference/PlainDominantColour.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/Matchers.h"

namespace Quorvane {

using TestSupport::Tray;

Tray RenderSmallTray(std::uint32_t seed, double noise, double light) {
    TestSupport::TraySettings settings;
    settings.size = {333, 250};
    settings.partSize = smallPartSize;
    settings.columns = 3;
    settings.rows = 2;
    settings.noise = noise;
    settings.lightAtRight = light;
    settings.seed = seed;
    return TestSupport::RenderTray(settings);
}

const Tray& SmallTray() {
    static const Tray tray = RenderSmallTray(1);
    return tray;
}

Reference::FillingJob JobOn(const Tray& tray, double partSize) {
    const cv::Point2d mark = tray.poses.front().Place(TestSupport::TrayPartMark(partSize));
    const cv::Point2f centre(static_cast<float>(mark.x), static_cast<float>(mark.y));
    return {centre, {centre + cv::Point2f(-12, -8), centre + cv::Point2f(14, -3), centre + cv::Point2f(1, 13)}, 0.8};
}

std::vector<double> XOf(const std::vector<cv::Point2f>& points) {
    std::vector<double> x;
    for (const cv::Point2f& point : points) x.push_back(point.x);
    return x;
}

std::vector<double> YOf(const std::vector<cv::Point2f>& points) {
    std::vector<double> y;
    for (const cv::Point2f& point : points) y.push_back(point.y);
    return y;
}

std::vector<std::string> TextsOf(const std::vector<double>& numbers) {
    std::vector<std::string> texts;
    for (const double number : numbers) texts.push_back(FixedText(number));
    return texts;
}

Reference::FillingOutcome PlainOutcome(const cv::Mat& picture, const Reference::FillingJob& job) {
    const int left = static_cast<int>(job.centre.x - 15.0f);
    const int top = static_cast<int>(job.centre.y - 15.0f);
    const int right = static_cast<int>(job.centre.x + 15.0f);
    const int bottom = static_cast<int>(job.centre.y + 15.0f);
    const cv::Point seed =
        Reference::DominantColourPoint(picture, {{left, top}, {right, top}, {right, bottom}, {left, bottom}});
    const TestSupport::CapturedStream notices(std::cout);
    return Reference::FillCopies(picture, seed, job);
}

FillingFixture::FillingFixture() : algorithm(AlgorithmFactory().CreateAlgorithm("IntelligentFilling")) {
    Give(JobOn(SmallTray()));
}

FillingFixture::~FillingFixture() = default;

void FillingFixture::Give(const Reference::FillingJob& job) {
    algorithm->SetParameter("SimilarityMin", job.similarity);
    Mark(job.centre.x, job.centre.y);
    algorithm->SetParameter("TargetShapePoints_X", XOf(job.shape));
    algorithm->SetParameter("TargetShapePoints_Y", YOf(job.shape));
}

void FillingFixture::Mark(double x, double y) {
    algorithm->SetParameter("TargetShapeCenter_X", x);
    algorithm->SetParameter("TargetShapeCenter_Y", y);
}

int FillingFixture::Run(const cv::Mat& source) {
    const TestSupport::CapturedStream notices(std::cout);
    const TestSupport::CapturedStream errors(std::cerr);
    const auto keep = [&](int status) {
        out = notices.Text();
        err = errors.Text();
        return status;
    };
    try {
        return keep(algorithm->Execute(source, destination));
    } catch (...) {
        keep(0);
        throw;
    }
}

Reference::FillingOutcome FillingFixture::ExpectPlainOutcome(const cv::Mat& picture, const Reference::FillingJob& job) {
    Give(job);
    EXPECT_EQ(Run(picture), 0);
    const Reference::FillingOutcome plain = PlainOutcome(picture, job);
    EXPECT_THAT(destination, TestSupport::EqualsMat(plain.destination));
    EXPECT_EQ(algorithm->GetResultValue("OutputShapeCount"), std::to_string(plain.matches.size()));
    for (std::size_t i = 0; i < plain.matches.size(); ++i) {
        const int n = static_cast<int>(i) + 1;
        const FillingMatch& match = plain.matches[i];
        const std::string key = "OutputShape_" + std::to_string(n);
        EXPECT_EQ(algorithm->GetResultValues(key + "_X"), TextsOf(XOf(plain.shapes[i]))) << n;
        EXPECT_EQ(algorithm->GetResultValues(key + "_Y"), TextsOf(YOf(plain.shapes[i]))) << n;
        EXPECT_EQ(Copy(n, "OffsetX"), FixedText(match.x - job.centre.x)) << n;
        EXPECT_EQ(Copy(n, "OffsetY"), FixedText(match.y - job.centre.y)) << n;
        EXPECT_EQ(Copy(n, "OffsetAngle"), FixedText(match.angle)) << n;
        EXPECT_EQ(Copy(n, "OffsetRotateCenterX"), FixedText(job.centre.x)) << n;
        EXPECT_EQ(Copy(n, "OffsetRotateCentetY"), FixedText(job.centre.y)) << n;
    }
    return plain;
}

std::string FillingFixture::ErrorMessage() {
    std::string message;
    algorithm->GetErrorMsg(message);
    return message;
}

int FillingFixture::CopyCount() { return std::stoi(algorithm->GetResultValue("OutputShapeCount")); }

std::string FillingFixture::Copy(int number, const std::string& field) {
    return algorithm->GetResultValue("OutputShape_" + std::to_string(number) + "_" + field);
}

}  // namespace Quorvane
