#include "tests/robustness/HostPictures.h"

#include <cstring>
#include <limits>

namespace Quorvane::Robustness {

namespace {

using Shape = HostPicture::Shape;

constexpr int longSide = 100'000;
constexpr double dark = 20.0;
constexpr double light = 110.0;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// Dark on the left, light on the right, with a weave of a few levels so that no part is flat.
cv::Mat Stepped(cv::Size size, int depth, int channels) {
    cv::Mat levels(size, CV_64F);
    for (int r = 0; r < size.height; ++r) {
        for (int c = 0; c < size.width; ++c) {
            levels.at<double>(r, c) = (c < size.width / 2 ? dark : light) + (3 * r + 5 * c) % 4;
        }
    }
    const std::vector<cv::Mat> planes(static_cast<std::size_t>(channels), levels);
    cv::Mat picture;
    cv::merge(planes, picture);
    // Half floats are made from floats only.
    if (depth == CV_16F) picture.convertTo(picture, CV_32F);
    picture.convertTo(picture, depth);
    return picture;
}

/// Not-a-numbers and infinities strewn over the picture.
cv::Mat WithNotNumbers(const cv::Mat& picture) {
    cv::Mat floats;
    picture.convertTo(floats, CV_32F);
    cv::Mat values = floats.reshape(1);
    const float odd[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity()};
    int next = 0;
    for (int r = 0; r < values.rows; r += 2) {
        for (int c = r % 5; c < values.cols; c += 7) values.at<float>(r, c) = odd[next++ % 3];
    }
    cv::Mat strewn;
    floats.convertTo(strewn, picture.depth());
    return strewn;
}

/// One value in the middle of the picture replaced by `value`, or by what of it its depth can hold.
cv::Mat WithOneOf(double value, const cv::Mat& picture) {
    cv::Mat doubles;
    picture.convertTo(doubles, CV_64F);
    cv::Mat values = doubles.reshape(1);
    values.at<double>(values.rows / 2, values.cols / 2) = value;
    // Half floats are made from floats only.
    if (picture.depth() == CV_16F) doubles.convertTo(doubles, CV_32F);
    cv::Mat odd;
    doubles.convertTo(odd, picture.depth());
    return odd;
}

HostPicture Make(Shape shape, int depth, int channels) {
    HostPicture picture{shape, depth, channels, {}, {}};
    const auto stepped = [&](int width, int height) { return Stepped({width, height}, depth, channels); };
    switch (shape) {
        case Shape::Empty: picture.image = cv::Mat(0, 0, CV_MAKETYPE(depth, channels)); break;
        case Shape::OnePixel: picture.image = stepped(1, 1); break;
        case Shape::OneRow: picture.image = stepped(17, 1); break;
        case Shape::OneColumn: picture.image = stepped(1, 17); break;
        case Shape::Odd: picture.image = stepped(31, 23); break;
        case Shape::PartOfALarger:
            picture.memory = stepped(40, 30);
            picture.image = picture.memory(cv::Rect(5, 3, 31, 23));
            return picture;
        case Shape::LongRow: picture.image = stepped(longSide, 1); break;
        case Shape::LongColumn: picture.image = stepped(1, longSide); break;
        case Shape::ThreeByThree: picture.image = stepped(3, 3); break;
        case Shape::FourByOne: picture.image = stepped(1, 4); break;
        case Shape::ThreeDimensional: {
            const int sizes[] = {4, 5, 6};
            picture.image = cv::Mat(3, sizes, CV_MAKETYPE(depth, channels));
            std::memset(picture.image.data, 7, picture.image.total() * picture.image.elemSize());
            break;
        }
        case Shape::NotNumbers: picture.image = WithNotNumbers(stepped(31, 23)); break;
        case Shape::OneNotNumber: picture.image = WithOneOf(notANumber, stepped(31, 23)); break;
        case Shape::OneInfinity: picture.image = WithOneOf(-infinity, stepped(31, 23)); break;
        case Shape::OneHugeNumber: picture.image = WithOneOf(1e38, stepped(31, 23)); break;
    }
    picture.memory = picture.image;
    return picture;
}

bool IsFloat(int depth) { return depth == CV_16F || depth == CV_32F || depth == CV_64F; }

}  // namespace

std::string HostPicture::Name() const {
    static const char* const names[] = {"empty",
                                        "1 x 1",
                                        "17 x 1",
                                        "1 x 17",
                                        "31 x 23",
                                        "part of larger",
                                        "long row",
                                        "long column",
                                        "3 x 3",
                                        "1 x 4",
                                        "4 x 5 x 6",
                                        "with not-a-numbers",
                                        "with one not-a-number",
                                        "with one infinity",
                                        "with one huge number"};
    return std::string(names[static_cast<int>(shape)]) + " of " + cv::typeToString(CV_MAKETYPE(depth, channels));
}

const std::vector<HostPicture>& HostPictures() {
    static const std::vector<HostPicture> all = [] {
        std::vector<HostPicture> pictures;
        for (int shape = 0; shape <= static_cast<int>(Shape::OneHugeNumber); ++shape) {
            for (int depth = CV_8U; depth <= CV_16F; ++depth) {
                if (static_cast<Shape>(shape) >= Shape::NotNumbers && !IsFloat(depth)) continue;
                for (int channels = 1; channels <= 5; ++channels) {
                    pictures.push_back(Make(static_cast<Shape>(shape), depth, channels));
                }
            }
        }
        return pictures;
    }();
    return all;
}

bool HaveSameBytes(const cv::Mat& a, const cv::Mat& b) {
    if (a.empty() && b.empty()) return true;
    if (a.dims != b.dims || a.type() != b.type() || a.total() != b.total()) return false;
    for (int d = 0; d < a.dims; ++d) {
        if (a.size[d] != b.size[d]) return false;
    }
    if (a.isContinuous() && b.isContinuous()) return std::memcmp(a.data, b.data, a.total() * a.elemSize()) == 0;
    for (int r = 0; r < a.rows; ++r) {
        if (std::memcmp(a.ptr(r), b.ptr(r), static_cast<std::size_t>(a.cols) * a.elemSize()) != 0) return false;
    }
    return true;
}

}  // namespace Quorvane::Robustness
