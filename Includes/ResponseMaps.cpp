// The response of a label to a spread byte needs no table: it is 4 if the label's own bit is set, else 3 if one of the
// two bits beside it is, else 0. So one pass over the spread image writes all eight maps, with two tests per map that
// the compiler does for sixteen pixels at once.

#include "Includes/ResponseMaps.h"

#include <opencv2/core.hpp>

#include "Includes/MatcherError.h"
#include "Includes/OrientationLabel.h"

namespace line2Dup {

void spreadOrientations(const cv::Mat& src, cv::Mat& dst, int T) {
    cv::Mat spread = cv::Mat::zeros(src.size(), CV_8U);
    for (int r = 0; r < T && r < src.rows; ++r) {
        for (int c = 0; c < T && c < src.cols; ++c) {
            orRowsUnaligned(src.ptr(r) + c, static_cast<int>(src.step1()), spread.ptr(),
                            static_cast<int>(spread.step1()), src.cols - c, src.rows - r);
        }
    }
    dst = spread;
}

void orRowsUnaligned(const uchar* src, int srcStride, uchar* dst, int dstStride, int width, int height) {
    for (int r = 0; r < height; ++r) {
        for (int c = 0; c < width; ++c) dst[c] = static_cast<uchar>(dst[c] | src[c]);
        src += srcStride;
        dst += dstStride;
    }
}

void formResponses(const uchar* spread, uchar* responses, int count, int label) {
    const auto own = static_cast<uchar>(oneHotOf(label));
    const auto beside = static_cast<uchar>(neighboursOf(label));
    for (int i = 0; i < count; ++i) {
        const auto full = static_cast<uchar>((spread[i] & own) != 0 ? fullResponse : 0);
        const auto partial = static_cast<uchar>((spread[i] & beside) != 0 ? neighbourResponse : 0);
        responses[i] = full > partial ? full : partial;
    }
}

void computeResponseMaps(const cv::Mat& src, std::vector<cv::Mat>& maps) {
    constexpr std::size_t vectorBytes = 16;
    require(src.total() % vectorBytes == 0, "(src.rows * src.cols) % 16 == 0", "line2Dup::computeResponseMaps");
    maps.resize(labelCount);
    for (cv::Mat& map : maps) map.create(src.size(), CV_8U);
    for (int r = 0; r < src.rows; ++r) {
        for (int label = 0; label < labelCount; ++label) {
            formResponses(src.ptr(r), maps[static_cast<std::size_t>(label)].ptr(r), src.cols, label);
        }
    }
}

void linearize(const cv::Mat& responseMap, cv::Mat& linearised, int T) {
    require(T > 0 && responseMap.rows % T == 0, "response_map.rows % T == 0", "line2Dup::linearize");
    require(responseMap.cols % T == 0, "response_map.cols % T == 0", "line2Dup::linearize");
    const int columns = responseMap.cols / T;
    cv::Mat result(T * T, (responseMap.rows / T) * columns, CV_8U);
    for (int phase = 0; phase < T * T; ++phase) {
        uchar* out = result.ptr(phase);
        for (int r = phase / T; r < responseMap.rows; r += T) {
            const uchar* row = responseMap.ptr(r) + phase % T;
            for (int c = 0; c < columns; ++c) *out++ = row[static_cast<std::ptrdiff_t>(c) * T];
        }
    }
    linearised = result;
}

}  // namespace line2Dup
