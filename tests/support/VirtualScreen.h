#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace Quorvane::TestSupport {

/// An X server without hardware, so that code that opens windows can be tested on a machine without a desktop. From
/// then on the environment's DISPLAY names it. Needs the programs Xvfb and xdotool.
///
///     const std::string obstacle = VirtualScreen::Obstacle();
///     if (!obstacle.empty()) GTEST_SKIP() << obstacle;
///     VirtualScreen screen;
///
/// The first window of a process connects OpenCV to the display for good, so a process makes one screen only, and the
/// server lives as long as the process: one whose connection breaks is ended with a failure.
class VirtualScreen {
public:
    /// Why no windows can be tested here; empty if they can.
    static std::string Obstacle();

    VirtualScreen();
    VirtualScreen(const VirtualScreen&) = delete;
    VirtualScreen& operator=(const VirtualScreen&) = delete;

private:
    int serverProcess_ = 0;
    std::FILE* server_;
};

/// Somebody who sits before the screen: waits in a process of its own until a window with the given title is open,
/// notes down all windows and presses the space bar in it, again and again until this object is destroyed.
class KeyPresser {
public:
    explicit KeyPresser(const std::string& title);
    KeyPresser(const KeyPresser&) = delete;
    KeyPresser& operator=(const KeyPresser&) = delete;
    ~KeyPresser();

    struct Window {
        std::string title;
        int width = 0;
        int height = 0;
    };
    /// The windows that were open when the key was first pressed, by title. Ends the pressing.
    std::vector<Window> Windows();

private:
    void Stop();

    int process_ = 0;
    std::FILE* presser_;
    std::string notes_;
};

}  // namespace Quorvane::TestSupport
