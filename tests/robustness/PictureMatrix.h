#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/robustness/HostPictures.h"

namespace Quorvane::Robustness {

/// An operation that takes a picture, as the matrix sees it.
struct PictureOperation {
    const char* name;
    /// Calls it with the picture, looks at what came back and says in a few words what that was.
    std::function<std::string(const cv::Mat&)> tried;
    /// What the interface tells for such a picture.
    std::function<std::string(const HostPicture&)> told;
    /// Whether the picture may be written to.
    std::function<bool(const HostPicture&)> writesToInput = [](const HostPicture&) { return false; };
    /// Pictures that it is tried on.
    std::function<bool(const HostPicture&)> triedOn = [](const HostPicture&) { return true; };
};

/// Tries every operation on every picture, quietly: the outcome is the told one, and neither the picture nor the memory
/// around it has changed unless that is told.
void TryOnAllPictures(const std::vector<PictureOperation>& operations);

// What several operations have in common.

/// The depths that `cv::cvtColor` makes gray.
inline bool HasGrayForm(const HostPicture& picture) {
    return picture.depth == CV_8U || picture.depth == CV_16U || picture.depth == CV_32F;
}
inline bool IsColour(const HostPicture& picture) { return picture.channels == 3 || picture.channels == 4; }

}  // namespace Quorvane::Robustness
