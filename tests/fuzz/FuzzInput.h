#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace Quorvane::Fuzz {

/// Reads values off the bytes that a fuzzer hands in. Behind their end everything is zero, so any bytes are an input.
/// A call has at most one value read among its arguments, whose order is the compiler's; braces keep the order.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    std::uint8_t Byte() { return next_ < size_ ? data_[next_++] : std::uint8_t{0}; }

    template <typename Value>
    Value Bits() {
        Value value{};
        const std::size_t count = std::min(sizeof(Value), size_ - next_);
        if (count > 0) std::memcpy(&value, data_ + next_, count);
        next_ += count;
        return value;
    }

    /// An integer of `least` to `most`, both included.
    int Integer(int least, int most) {
        const auto range = static_cast<std::uint32_t>(most - least) + 1;
        return least + static_cast<int>(Bits<std::uint16_t>() % range);
    }

    /// Mostly an everyday number, sometimes one that hosts hand in by mistake.
    double Number() {
        static const double odd[] = {0.0,
                                     -0.0,
                                     1.0,
                                     -1.0,
                                     0.5,
                                     1e-300,
                                     -1e300,
                                     1e300,
                                     1e30,
                                     2147483647.0,
                                     2147483648.0,
                                     -2147483648.0,
                                     4294967296.0,
                                     1e10,
                                     std::numeric_limits<double>::quiet_NaN(),
                                     std::numeric_limits<double>::infinity(),
                                     -std::numeric_limits<double>::infinity()};
        const int kind = Byte();
        if (kind < static_cast<int>(std::size(odd))) return odd[kind];
        if (kind < 32) return Bits<double>();
        return static_cast<double>(Bits<std::int16_t>()) / 64.0;
    }

    /// An everyday number, or one so far off that nothing is made of that size. In between lie the sizes that are
    /// honestly served, with time and memory that no fuzzer has.
    double Size() {
        const double number = Number();
        constexpr double large = 300.0;
        constexpr double enormous = 1e12;
        return std::abs(number) > large && std::abs(number) < enormous ? std::fmod(number, large) : number;
    }

    float Coordinate() { return static_cast<float>(Number()); }
    cv::Point2f Point() { return {Coordinate(), Coordinate()}; }

    std::vector<cv::Point2f> Points(int most) {
        std::vector<cv::Point2f> points(static_cast<std::size_t>(Integer(0, most)));
        for (cv::Point2f& point : points) point = Point();
        return points;
    }

    std::vector<double> Numbers(int most) {
        std::vector<double> numbers(static_cast<std::size_t>(Integer(0, most)));
        for (double& number : numbers) number = Number();
        return numbers;
    }

    std::string Text(int most) {
        std::string text(static_cast<std::size_t>(Integer(0, most)), '\0');
        for (char& letter : text) letter = static_cast<char>(Byte());
        return text;
    }

    std::string Rest() {
        std::string text(reinterpret_cast<const char*>(data_) + next_, size_ - next_);
        next_ = size_;
        return text;
    }

    /// A picture of any type, at most `longest` pixels a side; now and then a part of a larger one, or empty.
    cv::Mat Picture(int longest) {
        static const int depths[] = {CV_8U,  CV_8U,  CV_8U,  CV_8U,  CV_8U,  CV_8S,
                                     CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F};
        static const int channelCounts[] = {1, 3, 1, 3, 4, 2, 5};
        const int depth = depths[Byte() % std::size(depths)];
        return Picture(longest, CV_MAKETYPE(depth, channelCounts[Byte() % std::size(channelCounts)]));
    }

    /// The pixels are painted by the bytes: rectangles and discs on a ground, then single values strewn over all.
    cv::Mat Picture(int longest, int type);

private:
    /// Puts one value anywhere: a byte, in float pictures a number.
    void Strew(cv::Mat& picture);

    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t next_ = 0;
};

/// Runs `action`. Exceptions of the kinds that the library may let through are a fine answer; others are not caught.
template <typename Action>
void Try(const Action& action);

/// Stops the fuzzer where an input was written to.
void CheckUnchanged(const cv::Mat& picture, const cv::Mat& before);

}  // namespace Quorvane::Fuzz

#include <new>
#include <stdexcept>

namespace Quorvane::Fuzz {

template <typename Action>
void Try(const Action& action) {
    try {
        action();
    } catch (const cv::Exception&) {
    } catch (const std::invalid_argument&) {
    } catch (const std::out_of_range&) {
    } catch (const std::length_error&) {
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace Quorvane::Fuzz
