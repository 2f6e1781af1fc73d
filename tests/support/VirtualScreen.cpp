#include "tests/support/VirtualScreen.h"

// Before the headers of X11, whose macros would maim it.
#include <opencv2/imgproc.hpp>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#if defined(__SANITIZE_ADDRESS__)
/// What the window toolkit keeps to the end of the process is not ours to free. Asked for by name by the sanitizer.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libdbus\nleak:libglib\nleak:libgtk\nleak:libgdk\nleak:libfontconfig\n";
}
#endif

namespace Quorvane::TestSupport {

namespace {

/// Windows come and go between two questions about them; a question about one that is gone has no answer.
int IgnoreError(Display*, XErrorEvent*) { return 0; }

/// Runs Xvfb on a display number that it chooses and writes to `numberPipe`.
pid_t StartServer(const std::string& screen, int numberPipe) {
    const std::string pipeText = std::to_string(numberPipe);
    const pid_t server = fork();
    if (server != 0) return server;
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int silence = open("/dev/null", O_RDWR);
    dup2(silence, STDOUT_FILENO);
    dup2(silence, STDERR_FILENO);
    execlp("Xvfb", "Xvfb", "-displayfd", pipeText.c_str(), "-screen", "0", screen.c_str(), "-nolisten", "tcp",
           static_cast<char*>(nullptr));
    _exit(127);
}

/// The first line that comes out of the pipe; empty if it closes before.
std::string ReadLine(int pipe) {
    std::string line;
    for (char c = 0; read(pipe, &c, 1) == 1 && c != '\n';) line += c;
    return line;
}

std::string TitleOf(Display* display, Window window) {
    char* name = nullptr;
    if (XFetchName(display, window, &name) == 0 || name == nullptr) return {};
    std::string title(name);
    XFree(name);
    return title;
}

struct NamedWindow {
    Window window;
    std::string title;
};

std::vector<NamedWindow> VisibleWindows(Display* display) {
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    std::vector<NamedWindow> windows;
    if (XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count) == 0) return windows;
    for (unsigned i = 0; i < count; ++i) {
        XWindowAttributes attributes;
        if (XGetWindowAttributes(display, children[i], &attributes) == 0 || attributes.map_state != IsViewable)
            continue;
        const std::string title = TitleOf(display, children[i]);
        if (!title.empty()) windows.push_back({children[i], title});
    }
    if (children != nullptr) XFree(children);
    return windows;
}

}  // namespace

struct VirtualScreen::Connection {
    explicit Connection(const std::string& name) : display(XOpenDisplay(name.c_str())) {
        if (display == nullptr) throw std::runtime_error("cannot connect to Xvfb on display " + name);
        XSetErrorHandler(IgnoreError);
    }
    ~Connection() { XCloseDisplay(display); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    Display* display;
};

VirtualScreen::VirtualScreen(int width, int height) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    server_ = StartServer(std::to_string(width) + "x" + std::to_string(height) + "x24", ends[1]);
    close(ends[1]);
    const std::string number = ReadLine(ends[0]);
    close(ends[0]);
    if (number.empty()) {
        waitpid(server_, nullptr, 0);
        throw std::runtime_error("Xvfb cannot be started");
    }
    const std::string name = ":" + number;
    setenv("DISPLAY", name.c_str(), 1);
    setenv("GDK_BACKEND", "x11", 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    connection_ = std::make_unique<Connection>(name);
}

// The server is left running and ends with this process: OpenCV's windows keep a connection to it for good, and a
// process whose connection breaks is ended with a failure.
VirtualScreen::~VirtualScreen() = default;

std::vector<std::string> VirtualScreen::WindowTitles() const {
    std::vector<std::string> titles;
    for (const NamedWindow& window : VisibleWindows(connection_->display)) titles.push_back(window.title);
    return titles;
}

cv::Size VirtualScreen::SizeOf(const std::string& title) const {
    for (const NamedWindow& named : VisibleWindows(connection_->display)) {
        XWindowAttributes window;
        if (named.title != title || XGetWindowAttributes(connection_->display, named.window, &window) == 0) continue;
        return {window.width, window.height};
    }
    return {};
}

cv::Mat VirtualScreen::ScreenshotOf(const std::string& title) const {
    Display* display = connection_->display;
    for (const NamedWindow& named : VisibleWindows(display)) {
        if (named.title == title) XRaiseWindow(display, named.window);
    }
    XSync(display, False);
    XWindowAttributes screen;
    XGetWindowAttributes(display, DefaultRootWindow(display), &screen);
    XImage* image = XGetImage(display, DefaultRootWindow(display), 0, 0, static_cast<unsigned>(screen.width),
                              static_cast<unsigned>(screen.height), AllPlanes, ZPixmap);
    if (image == nullptr) throw std::runtime_error("no screenshot");
    const cv::Mat withPadding(image->height, image->width, CV_8UC4, image->data,
                              static_cast<std::size_t>(image->bytes_per_line));
    cv::Mat picture;
    cv::cvtColor(withPadding, picture, cv::COLOR_BGRA2BGR);
    XDestroyImage(image);
    return picture;
}

void VirtualScreen::PressSpaceIn(const std::string& title) const {
    Display* display = connection_->display;
    for (const NamedWindow& named : VisibleWindows(display)) {
        if (named.title != title) continue;
        constexpr int insideTheWindow = 20;
        XRaiseWindow(display, named.window);
        XSetInputFocus(display, named.window, RevertToPointerRoot, CurrentTime);
        XWarpPointer(display, None, named.window, 0, 0, 0, 0, insideTheWindow, insideTheWindow);
        const KeyCode space = XKeysymToKeycode(display, XK_space);
        XTestFakeKeyEvent(display, space, True, CurrentTime);
        XTestFakeKeyEvent(display, space, False, CurrentTime);
        XSync(display, False);
    }
}

}  // namespace Quorvane::TestSupport
