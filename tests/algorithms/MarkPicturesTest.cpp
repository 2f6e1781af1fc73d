// Whole runs on pictures with known marks: per picture the expected count and positions.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <utility>
#include <vector>

#include "framework/AlgorithmFactory.h"
#include "tests/support/MarkPlate.h"
#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using TestSupport::Disc;
using TestSupport::MarkPlate;
using TestSupport::Scene;

namespace {

struct MarkPicture {
    std::string name;
    std::function<Scene()> render;
    double radius;
    double similarityMin;
    std::vector<cv::Point2d> centres;
    /// Greatest distance of a found centre to the true one, in pixels.
    double tolerance;
};

void PrintTo(const MarkPicture& picture, std::ostream* stream) { *stream << picture.name; }

MarkPicture OnePlate(const std::string& name, const MarkPlate& plate, std::function<Scene(Scene)> spoil = {}) {
    const auto render = [plate, spoil] { return spoil ? spoil(plate.Render()) : plate.Render(); };
    return {name, render, plate.radius, 0.6, plate.Centres(), 2.5};
}

MarkPlate Plate(double radius, double background, double brightness) {
    const auto cell = static_cast<int>(radius * 5.0) + 11;
    return {{3 * cell, 2 * cell}, {3, 2}, radius, background, brightness, static_cast<std::uint32_t>(radius)};
}

MarkPicture CutMark(const std::string& border, cv::Point2d centre) {
    const auto render = [centre] { return Scene({200, 160}, 40.0).Paint(Disc(centre, 24.0), 220.0); };
    return {"CutByThe" + border, render, 24.0, 0.7, {centre}, 2.5};
}

std::vector<MarkPicture> RenderedPictures() {
    std::vector<MarkPicture> pictures;
    for (const int radius : {6, 7, 8, 9, 12, 16, 24, 35, 50, 80, 120}) {
        const std::string text = std::to_string(radius);
        pictures.push_back(OnePlate("BrightOnDarkRadius" + text, Plate(radius, 40.0, 220.0)));
        pictures.push_back(OnePlate("DarkOnBrightRadius" + text, Plate(radius, 220.0, 40.0)));
    }
    for (const int radius : {8, 24, 50}) {
        const std::string text = std::to_string(radius);
        const MarkPlate bright = Plate(radius, 60.0, 200.0);
        const MarkPlate dark = Plate(radius, 200.0, 60.0);
        const auto blur = [](Scene scene) { return scene.Blur(2.0); };
        const auto noise = [](Scene scene) { return scene.Blur(0.8).Noise(8.0, 11); };
        const auto light = [](Scene scene) { return scene.Light(1.0, 0.5); };
        const auto all = [](Scene scene) { return scene.Blur(1.2).Light(0.6, 1.0).Noise(6.0, 12); };
        pictures.push_back(OnePlate("BlurredRadius" + text, bright, blur));
        pictures.push_back(OnePlate("BlurredDarkRadius" + text, dark, blur));
        pictures.push_back(OnePlate("NoisyRadius" + text, bright, noise));
        pictures.push_back(OnePlate("NoisyDarkRadius" + text, dark, noise));
        pictures.push_back(OnePlate("UnevenLightRadius" + text, bright, light));
        pictures.push_back(OnePlate("UnevenLightDarkRadius" + text, dark, light));
        pictures.push_back(OnePlate("BlurredNoisyUnevenRadius" + text, bright, all));
        pictures.push_back(OnePlate("BlurredNoisyUnevenDarkRadius" + text, dark, all));
    }
    pictures.push_back(CutMark("LeftBorder", {10.3, 80.2}));
    pictures.push_back(CutMark("RightBorder", {189.1, 80.4}));
    pictures.push_back(CutMark("TopBorder", {100.2, 8.4}));
    pictures.push_back(CutMark("BottomBorder", {100.4, 151.3}));
    pictures.push_back({"NoMarkAtAll", [] { return Scene({320, 240}, 120.0); }, 24.0, 0.5, {}, 0.0});
    pictures.push_back({"NoMarkInNoise", [] { return Scene({320, 240}, 120.0).Noise(6.0, 13); }, 24.0, 0.5, {}, 0.0});
    const auto otherRadius = [] { return MarkPlate{{400, 300}, {2, 1}, 60.0}.Render(); };
    pictures.push_back({"MarksOfAnotherRadius", otherRadius, 24.0, 0.7, {}, 0.0});
    const auto squares = [] {
        return Scene({320, 240}, 40.0).Paint(TestSupport::Rectangle({160.0, 120.0}, {90.0, 90.0}), 220.0);
    };
    pictures.push_back({"ASquareIsNoMark", squares, 24.0, 0.7, {}, 0.0});
    return pictures;
}

/// Holds one found centre against each expected one, in any order, and nothing else against nothing.
void ExpectMarks(const cv::Mat& source, const MarkPicture& picture) {
    const std::unique_ptr<Algorithm> algorithm(AlgorithmFactory().CreateAlgorithm("FindMarkPoint"));
    algorithm->SetParameter("Radius", picture.radius);
    algorithm->SetParameter("SimilarityMin", picture.similarityMin);
    cv::Mat destination;
    ASSERT_EQ(algorithm->Execute(source, destination), 0);
    EXPECT_EQ(destination.type(), source.type());
    EXPECT_EQ(algorithm->GetResultValue("FindCount"), std::to_string(picture.centres.size()));
    const std::vector<std::string> x = algorithm->GetResultValues("MarkPoint_X");
    const std::vector<std::string> y = algorithm->GetResultValues("MarkPoint_Y");
    ASSERT_EQ(x.size(), picture.centres.size());
    for (const cv::Point2d& centre : picture.centres) {
        double nearest = 1e9;
        for (std::size_t i = 0; i < x.size(); ++i) {
            nearest = std::min(nearest, cv::norm(cv::Point2d(std::stod(x[i]), std::stod(y[i])) - centre));
        }
        EXPECT_LE(nearest, picture.tolerance) << "at " << centre;
    }
}

class MarkPictures : public testing::TestWithParam<MarkPicture> {};

TEST_P(MarkPictures, HaveTheirMarksInOneThreeAndFourChannels) {
    const Scene scene = GetParam().render();
    for (const cv::Mat& source : {scene.Gray(), scene.Colour(), scene.ColourWithAlpha()}) {
        SCOPED_TRACE(cv::typeToString(source.type()));
        ExpectMarks(source, GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(Rendered, MarkPictures, testing::ValuesIn(RenderedPictures()),
                         [](const auto& picture) { return picture.param.name; });

/// The 24 coins of the photograph, their middles read off by eye. They are no circles, hence the wide tolerance.
const std::vector<cv::Point2d> coins{{44, 54},  {100, 56},  {154, 50},  {216, 48},  {276, 52},  {335, 44},
                                     {45, 124}, {102, 126}, {153, 126}, {204, 125}, {271, 119}, {337, 125},
                                     {43, 197}, {101, 195}, {154, 197}, {212, 193}, {273, 194}, {346, 187},
                                     {46, 260}, {114, 265}, {172, 262}, {244, 265}, {301, 263}, {358, 268}};

TEST(MarkPhotographs, CoinsAreAllFoundAndNothingElseIs) {
    const cv::Mat gray = TestSupport::LoadGrayPicture("coins.png");
    // With a radius of 22 the largest coins, of 31, are found by a circle that is too small for them.
    for (const auto& [radius, tolerance] : {std::pair{22.0, 10.0}, std::pair{26.0, 7.0}}) {
        SCOPED_TRACE(radius);
        const MarkPicture picture{"coins.png", {}, radius, 0.7, coins, tolerance};
        ExpectMarks(gray, picture);
        ExpectMarks(TestSupport::LoadColourPicture("coins.png"), picture);
    }
}

TEST(MarkPhotographs, ThereAreNoMarksOfCoinSizeInTheOtherPictures) {
    for (const char* name : {"coffee.png", "photographer.png"}) {
        SCOPED_TRACE(name);
        ExpectMarks(TestSupport::LoadColourPicture(name), {name, {}, 24.0, 0.85, {}, 0.0});
    }
}

}  // namespace
}  // namespace Quorvane
