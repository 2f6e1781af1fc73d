#pragma once

#include <sys/types.h>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

namespace Quorvane::TestSupport {

/// A screen that nobody sees, with a keyboard: an X server of its own (Xvfb) that this process talks to. Windows that
/// the process opens for the first time appear on it. The server ends with the process.
class VirtualScreen {
public:
    /// Starts the server and points DISPLAY to it. Throws `std::runtime_error` where there is no Xvfb.
    VirtualScreen(int width, int height);
    ~VirtualScreen();
    VirtualScreen(const VirtualScreen&) = delete;
    VirtualScreen& operator=(const VirtualScreen&) = delete;

    /// The titles of the windows that are shown now.
    std::vector<std::string> WindowTitles() const;

    /// The size of the window of this title, without what a desktop draws around it; empty if there is none.
    cv::Size SizeOf(const std::string& title) const;

    /// What the screen shows with the window of this title in front: three channels blue, green, red.
    cv::Mat ScreenshotOf(const std::string& title) const;

    /// Presses and releases the space bar, with the pointer over the window of this title.
    void PressSpaceIn(const std::string& title) const;

private:
    struct Connection;

    pid_t server_ = -1;
    std::unique_ptr<Connection> connection_;
};

}  // namespace Quorvane::TestSupport
