#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef QUORVANE_HAVE_X11

#include <chrono>
#include <cmath>
#include <functional>
#include <future>
#include <iostream>
#include <map>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/highgui.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "algorithms/TargetExtraction.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/Matchers.h"
#include "tests/support/VirtualScreen.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::VirtualScreen;

namespace {

const cv::Scalar green(0, 255, 0);
const cv::Scalar blue(255, 0, 0);
const cv::Scalar red(0, 0, 255);
const cv::Scalar yellow(0, 255, 255);
const cv::Scalar cyan(255, 255, 0);

struct WatchedRun {
    std::vector<cv::Point> contour;
    std::string output;
    std::map<std::string, cv::Size> windows;  // by title
    cv::Mat screen;                           // with the window that was looked at in front

    std::vector<std::string> Titles() const {
        std::vector<std::string> titles;
        for (const auto& window : windows) titles.push_back(window.first);
        return titles;
    }
};

/// What somebody wants to see on the screen, with the window of this title in front.
struct Look {
    std::string title;
    std::function<bool(const cv::Mat& screen)> isSeen;
};

constexpr std::chrono::milliseconds pause(50);

/// Brings the window to the front and looks until it shows what is wanted, since windows that come to the front are
/// painted anew. Patience ends with a window that never shows it.
cv::Mat WaitUntilSeen(const VirtualScreen& screen, const Look& look) {
    constexpr int patience = 100;
    cv::Mat picture = screen.ScreenshotOf(look.title);
    for (int i = 0; i < patience && !look.isSeen(picture); ++i) {
        std::this_thread::sleep_for(pause);
        picture = screen.ScreenshotOf(look.title);
    }
    return picture;
}

/// Waits for the window `last`, looks at the screen, and presses keys in that window until `closed`.
void WatchAndPressKeys(const VirtualScreen& screen, const std::string& last, const Look& look,
                       const std::future<void>& closed, WatchedRun& run) {
    while (closed.wait_for(pause) != std::future_status::ready) {
        if (screen.SizeOf(last).empty()) continue;
        if (run.windows.empty()) {
            for (const std::string& title : screen.WindowTitles()) run.windows[title] = screen.SizeOf(title);
            run.screen = WaitUntilSeen(screen, look);
        }
        screen.PressSpaceIn(last);
    }
}

bool IsOpen(const std::string& title) { return cv::getWindowProperty(title, cv::WND_PROP_AUTOSIZE) >= 0.0; }

class ColourRegionDisplayTest : public testing::Test {
protected:
    void SetUp() override {
        if (cv::currentUIFramework().empty()) GTEST_SKIP() << "this OpenCV was built without windows";
        try {
            static const auto theScreen = std::make_unique<VirtualScreen>(1600, 1200);
            screen_ = theScreen.get();
        } catch (const std::runtime_error& failure) {
            GTEST_SKIP() << "there is no screen to show windows on: " << failure.what();
        }
    }

    /// Grows the region in debug mode, with somebody who looks at the screen and presses a key in the window `last`.
    WatchedRun Watch(const cv::Mat& image, cv::Point seed, double limit, int side, const std::string& last,
                     const Look& look = {"", [](const cv::Mat&) { return true; }}) {
        WatchedRun run;
        std::promise<void> closed;
        std::future<void> watcher = std::async(std::launch::async, [&, future = closed.get_future()] {
            WatchAndPressKeys(*screen_, last, look, future, run);
        });
        const TestSupport::CapturedStream output(std::cout);
        run.contour = FindColourRegion(image, seed, limit, 8, side, true);
        closed.set_value();
        watcher.get();
        run.output = output.Text();
        return run;
    }

    VirtualScreen* screen_ = nullptr;
};

/// Squares of ten pixels, numbered by their gray: those of the seed's colour are a row of two and one further down.
cv::Mat ThreeSquares() {
    cv::Mat image(30, 40, CV_8UC3, cv::Scalar(0, 0, 0));
    image(cv::Rect(0, 0, 20, 10)).setTo(cv::Scalar::all(255));
    image(cv::Rect(20, 10, 10, 10)).setTo(cv::Scalar::all(255));
    return image;
}

TEST_F(ColourRegionDisplayTest, TellsEachSquareAndTheContoursAndClosesItsWindows) {
    // The circle around (19, 4) has (29, 4), black, as its first point.
    const WatchedRun run = Watch(ThreeSquares(), {19, 4}, 10.0, 10, "Debug - Final Contour");
    EXPECT_EQ(run.output,
              "Square rejected. Diff: 255, Position: (20, 0)\n"
              "Square 1 accepted. Diff: 0, Position: (20, 10)\n"
              "Square 2 accepted. Diff: 0, Position: (10, 0)\n"
              "Square rejected. Diff: 255, Position: (30, 0)\n"
              "Square rejected. Diff: 255, Position: (10, 10)\n"
              "Square rejected. Diff: 255, Position: (30, 10)\n"
              "Square rejected. Diff: 255, Position: (10, 20)\n"
              "Square rejected. Diff: 255, Position: (20, 20)\n"
              "Square rejected. Diff: 255, Position: (30, 20)\n"
              "Square 3 accepted. Diff: 0, Position: (0, 0)\n"
              "Square rejected. Diff: 255, Position: (0, 10)\n"
              "Total squares accepted: 3\n"
              "Found 1 contours\n"
              "Contour 0 area: 255\n"
              "Press any key to close all windows...\n");
    EXPECT_THAT(run.Titles(), ElementsAre("Debug - All Contours", "Debug - Current Mask", "Debug - Final Contour",
                                          "Debug - Final Mask", "Debug - Processing Square"));
    for (const char* title : {"Debug - Processing Square", "Debug - Current Mask", "Debug - Final Mask",
                              "Debug - All Contours", "Debug - Final Contour"}) {
        EXPECT_FALSE(IsOpen(title)) << title;
    }
}

TEST_F(ColourRegionDisplayTest, OpensItsTwoWindowsWithEightHundredBySixHundredPixels) {
    WatchedRun run = Watch(ThreeSquares(), {19, 4}, 10.0, 10, "Debug - Final Contour");
    EXPECT_EQ(run.windows["Debug - Processing Square"], cv::Size(800, 600));
    EXPECT_EQ(run.windows["Debug - Current Mask"], cv::Size(800, 600));
}

/// How many pixels of the screen have exactly this colour.
int PixelsOf(const cv::Mat& screen, const cv::Scalar& colour) {
    cv::Mat same;
    cv::inRange(screen, colour, colour, same);
    return cv::countNonZero(same);
}

TEST_F(ColourRegionDisplayTest, ShowsAllContoursInGreen) {
    const auto isGreen = [](const cv::Mat& screen) { return PixelsOf(screen, green) > 100; };
    const WatchedRun run =
        Watch(ThreeSquares(), {19, 4}, 10.0, 10, "Debug - Final Contour", {"Debug - All Contours", isGreen});
    EXPECT_TRUE(isGreen(run.screen));
}

TEST_F(ColourRegionDisplayTest, ShowsTheChosenContourInRed) {
    const auto isRed = [](const cv::Mat& screen) { return PixelsOf(screen, red) > 100; };
    const WatchedRun run =
        Watch(ThreeSquares(), {19, 4}, 10.0, 10, "Debug - Final Contour", {"Debug - Final Contour", isRed});
    EXPECT_TRUE(isRed(run.screen));
}

/// Whether a part of the screen is exactly this picture.
bool Shows(const cv::Mat& screen, const cv::Mat& picture) {
    cv::Mat differences;
    cv::matchTemplate(screen, picture, differences, cv::TM_SQDIFF);
    cv::Point best;
    cv::minMaxLoc(differences, nullptr, nullptr, &best);
    return TestSupport::MatsAreEqual(screen(cv::Rect(best, picture.size())), picture);
}

TEST_F(ColourRegionDisplayTest, PaintsTheGrowthInItsColours) {
    // As large as the window, so that every pixel is shown as it is: two squares of the seed's colour among ten others.
    cv::Mat image(600, 800, CV_8UC3, cv::Scalar::all(40));
    image(cv::Rect(0, 0, 400, 200)).setTo(cv::Scalar::all(200));
    cv::Mat growth = image.clone();
    cv::circle(growth, {300, 100}, 3, green, cv::FILLED);
    const double diagonal = 10.0 * std::sqrt(0.5);
    for (const cv::Point2d& start : std::vector<cv::Point2d>{{310, 100},
                                                             {300 + diagonal, 100 + diagonal},
                                                             {300, 110},
                                                             {300 - diagonal, 100 + diagonal},
                                                             {290, 100},
                                                             {300 - diagonal, 100 - diagonal},
                                                             {300, 90},
                                                             {300 + diagonal, 100 - diagonal}}) {
        cv::circle(growth, {static_cast<int>(start.x), static_cast<int>(start.y)}, 2, blue, cv::FILLED);
    }
    const auto accept = [&](int column, int row) {
        cv::rectangle(growth, cv::Rect(column * 200, row * 200, 200, 200), yellow, 2);
    };
    const auto queue = [&](int column, int row) {
        cv::circle(growth, {column * 200 + 100, row * 200 + 100}, 2, cyan, cv::FILLED);
    };
    accept(1, 0);
    for (const auto& [column, row] : std::vector<std::pair<int, int>>{{0, 0}, {2, 0}, {0, 1}, {1, 1}, {2, 1}}) {
        queue(column, row);
    }
    accept(0, 0);
    // What is shown last is the rejected square at (400, 200), with a frame in red.
    cv::rectangle(growth, cv::Rect(400, 200, 200, 200), red, 1);

    const auto isGrowth = [&](const cv::Mat& screen) { return Shows(screen, growth); };
    const WatchedRun run =
        Watch(image, {300, 100}, 10.0, 200, "Debug - Final Contour", {"Debug - Processing Square", isGrowth});
    EXPECT_TRUE(isGrowth(run.screen));
}

TEST_F(ColourRegionDisplayTest, ClosesGapsOfTheRegionInThisModeOnly) {
    // One black pixel, as a square of its own, between two columns of the region.
    cv::Mat image(3, 5, CV_8UC3, cv::Scalar::all(255));
    image(cv::Rect(2, 0, 1, 2)).setTo(cv::Scalar::all(0));
    const std::vector<cv::Point> open = FindColourRegion(image, {0, 0}, 10.0, 8, 1, false);
    const WatchedRun run = Watch(image, {0, 0}, 10.0, 1, "Debug - Final Contour");
    EXPECT_NE(run.contour, open);

    cv::Mat mask = cv::Mat::zeros(image.size(), CV_8U);
    mask.setTo(255, image.reshape(1, image.rows * image.cols).col(0).clone().reshape(1, image.rows));
    cv::morphologyEx(mask, mask, cv::MORPH_CLOSE, cv::getStructuringElement(cv::MORPH_ELLIPSE, {3, 3}), {-1, -1}, 1,
                     cv::BORDER_CONSTANT);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(mask, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    ASSERT_EQ(contours.size(), 1U);
    EXPECT_EQ(run.contour, contours[0]);
}

TEST_F(ColourRegionDisplayTest, WithoutARegionLeavesItsWindowsOpen) {
    const WatchedRun run = Watch(ThreeSquares(), {19, 4}, 0.0, 40, "Debug - All Contours");
    EXPECT_THAT(run.contour, IsEmpty());
    EXPECT_EQ(run.output,
              "Square rejected. Diff: 0, Position: (0, 0)\n"
              "Total squares accepted: 0\n"
              "Found 0 contours\n"
              "No contours found!\n");
    EXPECT_THAT(run.Titles(), ElementsAre("Debug - All Contours", "Debug - Current Mask", "Debug - Final Mask",
                                          "Debug - Processing Square"));
    EXPECT_TRUE(IsOpen("Debug - Processing Square"));
    cv::destroyAllWindows();
}

}  // namespace
}  // namespace Quorvane

#else

TEST(ColourRegionDisplayTest, TellsEachSquareAndTheContoursAndClosesItsWindows) {
    GTEST_SKIP() << "this build has no X11 with its test extension, so nobody can look at the windows";
}

#endif
