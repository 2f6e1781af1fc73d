#include "tests/fuzz/FuzzInput.h"

#include <cstdlib>
#include <iostream>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgproc.hpp>

#include "QuorvaneExport.h"

#if defined(__SANITIZE_ADDRESS__)
// Memory beyond all measure is refused, as it is without the sanitizer. Clang's build takes this from scripts/fuzz.sh.
extern "C" QUORVANE_EXPORT const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif

namespace Quorvane::Fuzz {

cv::Mat FuzzInput::Picture(int longest, int type) {
    const int width = Integer(0, longest);
    const int height = Integer(0, longest);
    const bool isPart = Byte() % 4 == 0;
    const int margin = isPart ? 3 : 0;
    if (width == 0 || height == 0) return cv::Mat(height, width, type);
    const cv::Size size(width + 2 * margin, height + 2 * margin);
    std::vector<cv::Mat> planes;
    for (int c = 0; c < CV_MAT_CN(type); ++c) planes.emplace_back(size, CV_8UC1, cv::Scalar(Byte()));
    for (int shapes = Byte() % 8; shapes > 0; --shapes) {
        const cv::Point place{Integer(-4, size.width), Integer(-4, size.height)};
        const int extent = Integer(0, longest);
        const bool isDisc = Byte() % 2 == 0;
        for (cv::Mat& plane : planes) {
            const cv::Scalar level(Byte());
            if (isDisc) cv::circle(plane, place, extent / 2, level, cv::FILLED);
            if (!isDisc) cv::rectangle(plane, place, place + cv::Point(extent, Byte() % 64), level, cv::FILLED);
        }
    }
    cv::Mat bytes;
    cv::merge(planes, bytes);
    cv::Mat picture;
    const int depth = CV_MAT_DEPTH(type);
    bytes.convertTo(picture, depth == CV_16F ? CV_32F : depth);
    for (int strewn = Byte() % 16; strewn > 0; --strewn) Strew(picture);
    if (depth == CV_16F) picture.convertTo(picture, CV_16F);
    return isPart ? picture(cv::Rect(margin, margin, width, height)) : picture;
}

void FuzzInput::Strew(cv::Mat& picture) {
    cv::Mat values = picture.reshape(1);
    const cv::Point place{Integer(0, values.cols - 1), Integer(0, values.rows - 1)};
    switch (picture.depth()) {
        case CV_32F: values.at<float>(place) = static_cast<float>(Number()); break;
        case CV_64F: values.at<double>(place) = Number(); break;
        default: {
            const std::size_t byte = Byte() % values.elemSize();
            values.ptr(place.y, place.x)[byte] = Byte();
        }
    }
}

void CheckUnchanged(const cv::Mat& picture, const cv::Mat& before) {
    if (picture.empty()) return;
    const std::size_t bytes = static_cast<std::size_t>(picture.cols) * picture.elemSize();
    for (int r = 0; r < picture.rows; ++r) {
        if (std::memcmp(picture.ptr(r), before.ptr(r), bytes) != 0) std::abort();
    }
}

}  // namespace Quorvane::Fuzz

/// Called once before the first input: keeps what the library prints away from the fuzzer's own lines, and OpenCV on
/// one thread.
extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
    cv::setNumThreads(1);
    std::cout.rdbuf(nullptr);
    std::cerr.rdbuf(nullptr);
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    // Errors of OpenCV are thrown and need not be printed, too.
    cv::redirectError([](int, const char*, const char*, const char*, int, void*) { return 0; });
    return 0;
}
