#pragma once

#include <opencv2/core/mat.hpp>

namespace Quorvane::UtilityFunctions {

/// Whether `toGrayImage` makes one channel of this picture. Some functions refuse all others without a word.
inline bool CanBecomeGray(const cv::Mat& image) {
    return image.channels() == 1 || image.channels() == 3 || image.channels() == 4;
}

}  // namespace Quorvane::UtilityFunctions
