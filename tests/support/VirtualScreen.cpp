#include "tests/support/VirtualScreen.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <opencv2/highgui.hpp>
#include <sstream>
#include <stdexcept>

#if defined(__unix__)
#include <sys/types.h>
#include <csignal>
#endif

namespace Quorvane::TestSupport {

#if defined(__unix__)

namespace {

/// Starts a shell command whose first line of output is the number of its process.
std::FILE* Start(const std::string& command, int& process) {
    std::FILE* pipe = popen(("echo $$; " + command).c_str(), "r");
    std::array<char, 32> line{};
    if (pipe == nullptr || std::fgets(line.data(), line.size(), pipe) == nullptr) {
        throw std::runtime_error("cannot start: " + command);
    }
    process = std::atoi(line.data());
    return pipe;
}

std::string RestOf(std::FILE* pipe) {
    std::string text;
    for (int letter = std::fgetc(pipe); letter != EOF; letter = std::fgetc(pipe)) text += static_cast<char>(letter);
    return text;
}

bool Has(const std::string& program) {
    return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace

std::string VirtualScreen::Obstacle() {
    if (cv::currentUIFramework().empty()) return "this OpenCV was built without windows";
    if (!Has("Xvfb")) return "there is no Xvfb to open windows on";
    if (!Has("xdotool")) return "there is no xdotool to press keys with";
    return {};
}

VirtualScreen::VirtualScreen()
    : server_(Start("exec setpriv --pdeathsig TERM Xvfb -displayfd 1 -screen 0 1600x1200x24 -nolisten tcp 2>/dev/null",
                    serverProcess_)) {
    std::array<char, 32> line{};
    if (std::fgets(line.data(), line.size(), server_) == nullptr) throw std::runtime_error("Xvfb does not start");
    const std::string display = ":" + std::to_string(std::atoi(line.data()));
    setenv("DISPLAY", display.c_str(), 1);
    setenv("GDK_BACKEND", "x11", 1);
    setenv("NO_AT_BRIDGE", "1", 1);
}

// OpenCV's windows take no keys that another program merely sends them: the window has to have the focus.
KeyPresser::KeyPresser(const std::string& title)
    : presser_(Start("trap 'exit 0' TERM; noted=no;"
                     "while :; do sleep 0.1;"
                     "  last=$(xdotool search --onlyvisible --name '^" +
                         title +
                         "$' 2>/dev/null) || continue;"
                         "  if [ $noted = no ]; then noted=yes;"
                         "    for w in $(xdotool search --onlyvisible --name '.'); do"
                         "      eval $(xdotool getwindowgeometry --shell $w);"
                         "      echo \"$WIDTH $HEIGHT $(xdotool getwindowname $w)\";"
                         "    done;"
                         "  fi;"
                         "  xdotool windowfocus $last key space >/dev/null 2>&1;"
                         "done",
                     process_)) {}

KeyPresser::~KeyPresser() { Stop(); }

void KeyPresser::Stop() {
    if (presser_ == nullptr) return;
    kill(process_, SIGTERM);
    notes_ = RestOf(presser_);
    pclose(presser_);
    presser_ = nullptr;
}

std::vector<KeyPresser::Window> KeyPresser::Windows() {
    Stop();
    std::vector<Window> windows;
    std::istringstream notes(notes_);
    Window window;
    while (notes >> window.width >> window.height && std::getline(notes >> std::ws, window.title)) {
        windows.push_back(window);
    }
    std::sort(windows.begin(), windows.end(), [](const Window& a, const Window& b) { return a.title < b.title; });
    return windows;
}

#else

std::string VirtualScreen::Obstacle() { return "windows are tested under Xvfb, which this system does not have"; }
VirtualScreen::VirtualScreen() : server_(nullptr) { throw std::runtime_error(Obstacle()); }
KeyPresser::KeyPresser(const std::string&) : presser_(nullptr) {}
KeyPresser::~KeyPresser() = default;
void KeyPresser::Stop() {}
std::vector<KeyPresser::Window> KeyPresser::Windows() { return {}; }

#endif

}  // namespace Quorvane::TestSupport
