#include "calibration/DocumentRules.h"

#include <algorithm>
#include <cctype>
#include <opencv2/core.hpp>

#include "calibration/DocumentGuard.h"

namespace Quorvane::CameraCalibration {

namespace {

/// Calibration files have three levels. This many take less than half a megabyte of the stack.
constexpr std::size_t deepestNesting = 1000;

/// A base64 block begins with the element types, filled up with blanks.
constexpr std::size_t formatLength = 24;
constexpr std::size_t encodedFormatLength = formatLength / 3 * 4;

/// As the parsers see it: any byte from the blank on.
bool IsPrintable(char c) { return static_cast<unsigned char>(c) >= static_cast<unsigned char>(' '); }

unsigned Base64Digit(char c) {
    static const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t digit = digits.find(c);
    return digit == std::string::npos ? 0u : static_cast<unsigned>(digit);  // as OpenCV reads what is no digit
}

}  // namespace

void RefuseDocument(const std::string& reason) { CV_Error(cv::Error::StsParseError, reason); }

void RefuseDeeperThanAllowed(std::size_t depth) {
    if (depth > deepestNesting) RefuseDocument("the document is nested too deeply");
}

void RefuseEndlessBase64(const std::string& text, std::size_t begin) {
    constexpr unsigned bitsPerDigit = 6;
    constexpr unsigned bitsPerByte = 8;
    std::string format;
    unsigned bits = 0;
    unsigned bitCount = 0;
    for (std::size_t i = begin; i < begin + encodedFormatLength; ++i) {
        if (i >= text.size() || !IsPrintable(text[i]) || text[i] == '"') RefuseDocument("base64 data without a header");
        bits = (bits << bitsPerDigit) | Base64Digit(text[i]);
        bitCount += bitsPerDigit;
        if (bitCount < bitsPerByte) continue;
        bitCount -= bitsPerByte;
        format.push_back(static_cast<char>((bits >> bitCount) & 0xffu));
    }
    const auto end = std::find_if(format.begin(), format.end(),
                                  [](char c) { return c == '\0' || std::isspace(static_cast<unsigned char>(c)) != 0; });
    format.erase(end, format.end());
    if (!IsSafeElementFormat(format)) RefuseDocument("base64 data of no element type");
}

bool IsSafeElementFormat(const std::string& format) {
    constexpr std::size_t mostDigits = 8;  // so that sums of counts stay in an int
    if (format.empty() || format.size() > formatLength) return false;
    std::size_t digits = 0;
    for (const char c : format) {
        digits = IsDigit(c) ? digits + 1 : 0;
        if (digits > mostDigits) return false;
    }
    return true;
}

}  // namespace Quorvane::CameraCalibration
