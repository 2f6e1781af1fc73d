#include "tests/support/Pictures.h"

#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

namespace Quorvane::TestSupport {

namespace {

cv::Mat Load(const std::string& name, int mode) {
    const std::string path = QUORVANE_PICTURE_FOLDER "/" + name;
    cv::Mat picture = cv::imread(path, mode);
    if (picture.empty()) throw std::runtime_error("cannot read the picture " + path);
    return picture;
}

}  // namespace

std::vector<std::string> PictureNames() { return {"coins.png", "coffee.png", "photographer.png"}; }

cv::Mat LoadColourPicture(const std::string& name) { return Load(name, cv::IMREAD_COLOR); }

cv::Mat LoadGrayPicture(const std::string& name) { return Load(name, cv::IMREAD_GRAYSCALE); }

}  // namespace Quorvane::TestSupport
