#include "calibration/YamlTexts.h"

#include <algorithm>

namespace Quorvane::CameraCalibration {

namespace {

constexpr auto npos = std::string::npos;
constexpr const char* numberLetters = "0123456789.e+-";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsQuote(char c) { return c == '"' || c == '\''; }
bool IsOpening(char c) { return c == '[' || c == '{'; }
bool IsClosing(char c) { return c == ']' || c == '}'; }

bool BeginsNumber(const std::string& line, std::size_t at) {
    const std::size_t digit = line[at] == '-' ? at + 1 : at;
    return digit < line.size() && IsDigit(line[digit]);
}

/// The place behind the string that begins here, `npos` where that is not clear.
std::size_t EndOfString(const std::string& line, std::size_t at) {
    const char quote = line[at];
    for (++at; at < line.size(); ++at) {
        if (line[at] == quote) {
            const bool isDoubled = quote == '\'' && at + 1 < line.size() && line[at + 1] == quote;
            if (!isDoubled) return at + 1;
            ++at;
        } else if (line[at] == '\\' && quote == '"') {
            ++at;
            // The parser loses its place behind a letter that is given by its number.
            if (at < line.size() && (line[at] == 'x' || IsDigit(line[at]))) return npos;
        }
    }
    return npos;
}

/// The place of the value in a line of a block collection, behind dashes or behind a name; `npos` where it is not
/// clear.
std::size_t BlockValue(const std::string& line, std::size_t first) {
    std::size_t at = first;
    while (line.compare(at, 2, "- ") == 0) at = std::min(line.find_first_not_of(' ', at + 1), line.size());
    if (at == line.size()) return npos;
    const bool isElement = at > first && (IsQuote(line[at]) || IsOpening(line[at]) || IsDigit(line[at]));
    if (isElement) return at;
    const std::size_t colon = line.find_first_of(":\"'#!&[]{},", at);
    if (colon == npos || line[colon] != ':') return npos;
    return line.find_first_not_of(' ', colon + 1);
}

/// What is left of the line behind a value: nothing where that is a comment.
std::string Rest(const std::string& line, std::size_t end) {
    const std::size_t next = line.find_first_not_of(' ', end);
    return next == npos || line[next] == '#' ? "" : line.substr(end);
}

}  // namespace

std::string YamlTexts::TakenFrom(const std::string& line, bool isInBlock) {
    const std::size_t first = line.find_first_not_of(' ');
    if (first == npos) return line;
    if (line[first] == '#') return "";
    if (first <= column_) open_.clear();  // the parser refuses a flow collection that goes on here
    if (!open_.empty()) return Brackets(line, first, first);
    if (!isInBlock) return line;
    const std::size_t value = BlockValue(line, first);
    if (value == npos) return line;
    if (IsOpening(line[value])) {
        column_ = first;
        expected_ = Expected::value;
        return Brackets(line, value, value);
    }
    if (!IsQuote(line[value]) && !BeginsNumber(line, value)) return line;
    const std::size_t end =
        IsQuote(line[value]) ? EndOfString(line, value) : line.find_first_not_of(numberLetters, value);
    return end == npos ? line : line.substr(0, value) + '0' + Rest(line, end);
}

/// The first `indent` letters and the brackets behind them; the whole line where it is not clear.
std::string YamlTexts::Brackets(const std::string& line, std::size_t indent, std::size_t at) {
    std::string brackets = line.substr(0, indent);
    do {
        at = line.find_first_not_of(' ', at);
        if (at == npos || line[at] == '#' || line[at] == '\r') return brackets;
        if (!TakeToken(line, at, brackets)) {
            open_.clear();
            return line;
        }
    } while (!open_.empty());
    return brackets + Rest(line, at);
}

bool YamlTexts::TakeToken(const std::string& line, std::size_t& at, std::string& brackets) {
    const char c = line[at];
    if (IsClosing(c)) {
        brackets.push_back(c);
        ++at;
        return TakeClosing(c);
    }
    if (expected_ == Expected::comma) {
        expected_ = Expected::next;
        ++at;
        return c == ',';
    }
    if (expected_ != Expected::value && open_.back() == '{') return TakeName(line, at);
    return TakeValue(line, at, brackets);
}

bool YamlTexts::TakeClosing(char bracket) {
    // Behind a comma the parser takes a bracket for a name, or loses it.
    if (expected_ != Expected::first && expected_ != Expected::comma) return false;
    if (open_.back() != (bracket == ']' ? '[' : '{')) return false;
    open_.pop_back();
    expected_ = Expected::comma;
    return true;
}

bool YamlTexts::TakeName(const std::string& line, std::size_t& at) {
    const std::size_t colon = line.find(':', at);
    if (colon == npos || colon == at) return false;
    at = colon + 1;
    expected_ = Expected::value;
    return true;
}

bool YamlTexts::TakeValue(const std::string& line, std::size_t& at, std::string& brackets) {
    const char c = line[at];
    if (IsOpening(c)) {
        brackets.push_back(c);
        open_.push_back(c);
        ++at;
        expected_ = Expected::first;
        return true;
    }
    if (c == '!' || c == ',') return false;
    expected_ = Expected::comma;
    if (IsQuote(c)) {
        at = EndOfString(line, at);
        return at != npos;
    }
    // A number ends at the first letter that is none of its own; a text without quotes goes on to the next element.
    const bool mayBeNumber = IsDigit(c) || c == '-' || c == '+' || c == '.';
    const std::size_t end = std::min(line.find_first_of(",]}", at), line.size());
    if (mayBeNumber) {
        const std::size_t behind = std::min(line.find_first_not_of(numberLetters, at), line.size());
        if (line.find_first_not_of(" \r", behind) < end) return false;
    }
    at = end;
    return true;
}

}  // namespace Quorvane::CameraCalibration
