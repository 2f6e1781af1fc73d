#include "geometry/CaliperDisplay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/highgui.hpp>
#include <string>
#include <vector>

#include "geometry/EdgeCaliper.h"
#include "tests/support/Scene.h"

#ifdef QUORVANE_HAVE_X11
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>

#include "tests/support/VirtualScreen.h"
#endif

namespace Quorvane {
namespace {

#ifdef QUORVANE_HAVE_X11

using testing::HasSubstr;
using testing::UnorderedElementsAre;
using TestSupport::VirtualScreen;
using UtilityFunctions::EdgeCaliper;

/// What somebody in front of the screen saw.
struct Witness {
    std::vector<std::string> titles;
    cv::Mat results;
    cv::Mat profiles;
};

/// Asks until the answer is yes; gives up after a generous time.
bool Await(const std::function<bool()>& happened) {
    constexpr std::chrono::milliseconds pause(50);
    constexpr int most = 600;
    for (int i = 0; i < most; ++i) {
        if (happened()) return true;
        std::this_thread::sleep_for(pause);
    }
    return false;
}

/// How many pixels of the picture have exactly this colour.
int CountColour(const cv::Mat& picture, const cv::Scalar& colour) {
    if (picture.empty()) return 0;
    cv::Mat equal;
    cv::inRange(picture, colour, colour, equal);
    return cv::countNonZero(equal);
}

const cv::Scalar red(0, 0, 255);
const cv::Scalar white(255, 255, 255);

/// Looks at both windows, each in front of the other. Returns whether they show what they should.
bool LookAtWindows(const VirtualScreen& screen, Witness& witness) {
    witness.titles = screen.WindowTitles();
    for (const std::string& title : witness.titles) {
        const bool isResults = title.rfind("Measurement Results", 0) == 0;
        (isResults ? witness.results : witness.profiles) = screen.ScreenshotOf(title);
    }
    return CountColour(witness.results, red) > 0 && CountColour(witness.profiles, white) > 0;
}

/// Waits for both windows to be drawn and presses keys until they are gone.
Witness WatchAndPressKeys(const VirtualScreen& screen, const std::future<void>& closed) {
    Witness witness;
    Await([&] { return LookAtWindows(screen, witness); });
    Await([&] {
        for (const std::string& title : screen.WindowTitles()) screen.PressSpaceIn(title);
        return closed.wait_for(std::chrono::milliseconds(0)) == std::future_status::ready;
    });
    return witness;
}

class CaliperDisplay : public testing::Test {
protected:
    void SetUp() override {
        if (cv::currentUIFramework().empty()) GTEST_SKIP() << "this OpenCV was built without windows";
        try {
            static const auto theScreen = std::make_unique<VirtualScreen>(1400, 1000);
            screen_ = theScreen.get();
        } catch (const std::runtime_error& failure) {
            GTEST_SKIP() << "there is no screen to show windows on: " << failure.what();
        }
    }

    /// Measures with the display on while a witness watches.
    Witness Show(EdgeCaliper& caliper, const cv::Mat& image) {
        std::promise<void> closed;
        std::future<Witness> witness = std::async(
            std::launch::async, [&, future = closed.get_future()] { return WatchAndPressKeys(*screen_, future); });
        testing::internal::CaptureStdout();
        std::vector<double> rows, columns, amplitudes, distances;
        caliper.debugEnabled = true;
        EXPECT_TRUE(caliper.measure(image, 1.0, 30.0, "all", "first", rows, columns, amplitudes, distances));
        output_ = testing::internal::GetCapturedStdout();
        closed.set_value();
        return witness.get();
    }

    VirtualScreen* screen_ = nullptr;
    std::string output_;
};

cv::Mat Edge(cv::Size size) {
    return TestSupport::Scene(size, 40.0).Paint(TestSupport::HalfPlane({size.width / 2.0, 0.0}, 0.0), 200.0).Gray();
}

TEST_F(CaliperDisplay, ShowsBothWindowsUntilAKeyIsPressed) {
    EdgeCaliper caliper;
    const cv::Mat image = Edge({320, 240});
    caliper.configure(120.0, 160.0, 0.0, 40.0, 10.0, image, "bilinear");
    const Witness witness = Show(caliper, image);
    EXPECT_THAT(witness.titles, UnorderedElementsAre("Measurement Results", "Profile Analysis"));
    EXPECT_GT(CountColour(witness.results, red), 20) << "the dot on the edge";
    EXPECT_GT(CountColour(witness.profiles, white), 100000) << "the paper of the plots";
    EXPECT_EQ(output_,
              "\n=== Debug Visualization ===\n"
              "Original size: 320x240\n"
              "Display size: 320x240\n"
              "Press any key to close...\n");
    cv::pollKey();
    EXPECT_TRUE(Await([&] {
        cv::pollKey();
        return screen_->WindowTitles().empty();
    })) << "the windows close";
}

TEST_F(CaliperDisplay, ShrinksPicturesToItsLimitsAndSaysSo) {
    EdgeCaliper caliper;
    caliper.displayWidth = 400;
    caliper.displayHeight = 500;
    const cv::Mat image = Edge({1280, 960});
    caliper.configure(480.0, 640.0, 0.0, 40.0, 10.0, image, "bilinear");
    const Witness witness = Show(caliper, image);
    EXPECT_THAT(witness.titles, UnorderedElementsAre("Measurement Results (31.2%)", "Profile Analysis (50.0%)"));
    EXPECT_THAT(output_, HasSubstr("Original size: 1280x960\nDisplay size: 400x300\n"));
}

#else

TEST(CaliperDisplay, ShowsBothWindowsUntilAKeyIsPressed) {
    GTEST_SKIP() << "this build has no X11 with its test extension, so nobody can look at the windows";
}

#endif

TEST(EdgeCaliperWithoutDebugging, ShowsNoWindow) {
    UtilityFunctions::EdgeCaliper caliper;
    const cv::Mat image(40, 60, CV_8UC1, cv::Scalar(9));
    caliper.configure(20.0, 30.0, 0.0, 15.0, 2.5, image, "bilinear");
    std::vector<double> rows, columns, amplitudes, distances;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(caliper.measure(image, 1.0, 30.0, "all", "first", rows, columns, amplitudes, distances));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
}  // namespace Quorvane
