#include "Includes/Similarity.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/MatcherError.h"

namespace line2Dup {

namespace {

constexpr std::ptrdiff_t vectorBytes = 16;

/// Sixteen sums and sixteen responses at a time: bytes wrap, 16-bit sums stop at the signed limits.
#if CV_SIMD128
void addSixteen(const uchar* responses, uchar* sums) {
    cv::v_store(sums, cv::v_add_wrap(cv::v_load(sums), cv::v_load(responses)));
}

void addSixteen(const uchar* responses, std::int16_t* sums) {
    cv::v_uint16x8 low;
    cv::v_uint16x8 high;
    cv::v_expand(cv::v_load(responses), low, high);
    cv::v_store(sums, cv::v_add(cv::v_load(sums), cv::v_reinterpret_as_s16(low)));
    cv::v_store(sums + 8, cv::v_add(cv::v_load(sums + 8), cv::v_reinterpret_as_s16(high)));
}
#else
void addSixteen(const uchar* responses, uchar* sums) {
    for (int i = 0; i < vectorBytes; ++i) sums[i] = static_cast<uchar>(sums[i] + responses[i]);
}

void addSixteen(const uchar* responses, std::int16_t* sums) {
    for (int i = 0; i < vectorBytes; ++i) sums[i] = cv::saturate_cast<short>(sums[i] + responses[i]);
}
#endif

/// A row of responses onto a row of sums; what is left over after the sixteens is added plainly and wraps.
template <typename Sum>
void addResponses(const uchar* responses, Sum* sums, std::ptrdiff_t count) {
    std::ptrdiff_t i = 0;
    for (; i + vectorBytes <= count; i += vectorBytes) addSixteen(responses + i, sums + i);
    for (; i < count; ++i) sums[i] = static_cast<Sum>(sums[i] + responses[i]);
}

/// Where the responses of one feature begin, for the template at the grid's first position.
struct LinearPlace {
    int row;
    std::ptrdiff_t column;
};

LinearPlace linearPlaceOf(int x, int y, int gridWidth, int T) {
    return {(y % T) * T + x % T, static_cast<std::ptrdiff_t>(y / T) * gridWidth + x / T};
}

bool isInside(std::int64_t x, std::int64_t y, cv::Size size) {
    return x >= 0 && x < size.width && y >= 0 && y < size.height;
}

/// The positions at which a template lies in the grid, counted along the grid as one flat array.
struct Spans {
    std::ptrdiff_t x;
    std::ptrdiff_t y;
    std::ptrdiff_t positions;
};

Spans spansOf(const ShapeTemplate& templ, cv::Size size, int T) {
    const int gridWidth = size.width / T;
    const int gridHeight = size.height / T;
    const std::ptrdiff_t spanX = gridWidth - ((std::ptrdiff_t{templ.width} - 1) / T + 1);
    const std::ptrdiff_t spanY = gridHeight - ((std::ptrdiff_t{templ.height} - 1) / T + 1);
    return {spanX, spanY, spanY * gridWidth + spanX + 1};
}

template <typename Sum>
void addAllFeatures(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Mat& dst, cv::Size size,
                    int T) {
    const std::ptrdiff_t positions =
        std::min(spansOf(templ, size, T).positions, static_cast<std::ptrdiff_t>(dst.total()));
    for (const GradientFeature& feature : templ.features) {
        if (!isInside(feature.x, feature.y, size)) continue;
        const cv::Mat& memory = linearMemories.at(static_cast<std::size_t>(feature.label));
        const LinearPlace place = linearPlaceOf(feature.x, feature.y, size.width / T, T);
        addResponses(memory.ptr(place.row) + place.column, dst.ptr<Sum>(),
                     std::min<std::ptrdiff_t>(memory.cols - place.column, positions));
    }
}

/// Sixteen bytes of a row of `count`, beginning at `first`; zeros behind the row's end.
const uchar* sixteenFrom(const uchar* row, std::ptrdiff_t first, std::ptrdiff_t count,
                         std::array<uchar, vectorBytes>& edge) {
    if (first + vectorBytes <= count) return row + first;
    edge.fill(0);
    if (first < count) std::copy(row + first, row + count, edge.begin());
    return edge.data();
}

template <typename Sum>
void addAllFeaturesLocally(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Mat& dst,
                           cv::Size size, int T, cv::Point centre) {
    const int gridWidth = size.width / T;
    // In 64 bits: templates turned about points far out of any image have features and centres anywhere.
    const std::int64_t offsetX = (std::int64_t{centre.x / T} - localWindow / 2) * T;
    const std::int64_t offsetY = (std::int64_t{centre.y / T} - localWindow / 2) * T;
    std::array<uchar, vectorBytes> edge{};
    for (const GradientFeature& feature : templ.features) {
        const std::int64_t x = feature.x + offsetX;
        const std::int64_t y = feature.y + offsetY;
        if (!isInside(x, y, size)) continue;
        const cv::Mat& memory = linearMemories.at(static_cast<std::size_t>(feature.label));
        const LinearPlace place = linearPlaceOf(static_cast<int>(x), static_cast<int>(y), gridWidth, T);
        const uchar* row = memory.ptr(place.row);
        for (int r = 0; r < localWindow; ++r) {
            const std::ptrdiff_t first = place.column + static_cast<std::ptrdiff_t>(r) * gridWidth;
            addSixteen(sixteenFrom(row, first, memory.cols, edge), dst.ptr<Sum>(r));
        }
    }
}

void requireFewFeatures(const ShapeTemplate& templ, int T, const char* function) {
    require(templ.features.size() < byteSumLimit, "templ.features.size() < 64", function);
    require(T > 0, "T > 0", function);
}

void requireNotTooManyFeatures(const ShapeTemplate& templ, int T, const char* function) {
    require(templ.features.size() < shortSumLimit, "templ.features.size() < 8192", function);
    require(T > 0, "T > 0", function);
}

}  // namespace

void similarity_safe(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Mat& dst,
                     cv::Size size, int T) {
    requireNotTooManyFeatures(templ, T, "line2Dup::similarity_safe");
    dst = cv::Mat::zeros(size.height / T, size.width / T, CV_16U);
    const Spans spans = spansOf(templ, size, T);
    if (spans.x < 0 || spans.y < 0) return;
    addAllFeatures<std::int16_t>(linearMemories, templ, dst, size, T);
}

void similarity_64_simd_safe(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Mat& dst,
                             cv::Size size, int T) {
    requireFewFeatures(templ, T, "line2Dup::similarity_64_simd_safe");
    dst = cv::Mat::zeros(size.height / T, size.width / T, CV_8U);
    const Spans spans = spansOf(templ, size, T);
    if (spans.x <= 0 || spans.y <= 0) return;
    addAllFeatures<uchar>(linearMemories, templ, dst, size, T);
}

void similarityLocal(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Mat& dst,
                     cv::Size size, int T, cv::Point centre) {
    requireNotTooManyFeatures(templ, T, "line2Dup::similarityLocal");
    dst = cv::Mat::zeros(localWindow, localWindow, CV_16U);
    addAllFeaturesLocally<std::int16_t>(linearMemories, templ, dst, size, T, centre);
}

void similarityLocal_64(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Mat& dst,
                        cv::Size size, int T, cv::Point centre) {
    requireFewFeatures(templ, T, "line2Dup::similarityLocal_64");
    dst = cv::Mat::zeros(localWindow, localWindow, CV_8U);
    addAllFeaturesLocally<uchar>(linearMemories, templ, dst, size, T, centre);
}

}  // namespace line2Dup
