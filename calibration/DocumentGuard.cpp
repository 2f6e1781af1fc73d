#include "calibration/DocumentGuard.h"

#include <algorithm>
#include <cctype>
#include <opencv2/core.hpp>
#include <vector>

namespace Quorvane::CameraCalibration {

namespace {

/// Calibration files have three levels. This many take less than half a megabyte of the stack.
constexpr std::size_t deepestNesting = 1000;

/// A base64 block begins with the element types, filled up with blanks.
constexpr std::size_t formatLength = 24;
constexpr std::size_t encodedFormatLength = formatLength / 3 * 4;

constexpr auto npos = std::string::npos;

[[noreturn]] void Refuse(const std::string& reason) { CV_Error(cv::Error::StsParseError, reason); }

void RefuseDeeperThanAllowed(std::size_t depth) {
    if (depth > deepestNesting) Refuse("the document is nested too deeply");
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool IsOpening(char c) { return c == '[' || c == '{'; }
bool IsClosing(char c) { return c == ']' || c == '}'; }
/// As the parsers see it: any byte from the blank on.
bool IsPrintable(char c) { return static_cast<unsigned char>(c) >= static_cast<unsigned char>(' '); }

/// A carriage return that ends no line; the parser does not see what follows it on its line.
bool IsLoneReturn(const std::string& text, std::size_t at) {
    return text[at] == '\r' && at + 1 < text.size() && text[at + 1] != '\n';
}

/// The first place from which on the parsers do not see all: a zero byte, too, hides what follows it on its line.
/// Behind it nothing is taken as closed.
std::size_t WhereSightEnds(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\0' || IsLoneReturn(text, i)) return i;
    }
    return text.size();
}

unsigned Base64Digit(char c) {
    static const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t digit = digits.find(c);
    return digit == npos ? 0u : static_cast<unsigned>(digit);  // as OpenCV reads what is no digit
}

/// Looks at the header of the base64 data that begins here. OpenCV writes it into one line.
void RefuseEndlessBase64(const std::string& text, std::size_t begin) {
    constexpr unsigned bitsPerDigit = 6;
    constexpr unsigned bitsPerByte = 8;
    std::string format;
    unsigned bits = 0;
    unsigned bitCount = 0;
    for (std::size_t i = begin; i < begin + encodedFormatLength; ++i) {
        if (i >= text.size() || !IsPrintable(text[i]) || text[i] == '"') Refuse("base64 data without a header");
        bits = (bits << bitsPerDigit) | Base64Digit(text[i]);
        bitCount += bitsPerDigit;
        if (bitCount < bitsPerByte) continue;
        bitCount -= bitsPerByte;
        format.push_back(static_cast<char>((bits >> bitCount) & 0xffu));
    }
    const auto end = std::find_if(format.begin(), format.end(),
                                  [](char c) { return c == '\0' || std::isspace(static_cast<unsigned char>(c)) != 0; });
    format.erase(end, format.end());
    if (!IsSafeElementFormat(format)) Refuse("base64 data of no element type");
}

// --- XML -------------------------------------------------------------------------------------------------------------

/// An '=' with nothing behind it, or nothing that the parser sees.
void RefuseAttributeWithoutValue(const std::string& text) {
    for (std::size_t i = text.find('='); i != npos; i = text.find('=', i + 1)) {
        std::size_t next = i + 1;
        while (next < text.size() && IsBlank(text[next]) && !IsLoneReturn(text, next)) ++next;
        if (next == text.size() || text[next] == '\0' || text[next] == '\r') {
            Refuse("the document ends in the middle of an attribute");
        }
    }
}

/// The data end at a line that begins with a tag. Elements in their lines are counted, in case that these are no data.
std::size_t SkipBase64Lines(const std::string& text, std::size_t at, std::size_t& depth) {
    constexpr const char* blanks = " \t\r\n";
    at = text.find_first_not_of(blanks, at);
    if (at != npos && text[at] != '<') RefuseEndlessBase64(text, at);
    while (at != npos && text[at] != '<') {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        for (; at < end; ++at) {
            if (text[at] == '<') RefuseDeeperThanAllowed(++depth);
        }
        at = text.find_first_not_of(blanks, at);
    }
    return at;
}

/// The place of the '>' of a tag; values in quotes may hold any letter.
std::size_t EndOfTag(const std::string& text, std::size_t at) {
    while (at < text.size() && text[at] != '>') {
        if (text[at] == '"' || text[at] == '\'') at = text.find(text[at], at + 1);
        if (at != npos) ++at;
    }
    return std::min(at, text.size());
}

void RefuseUnsafeXml(const std::string& text) {
    RefuseAttributeWithoutValue(text);
    const std::size_t sight = WhereSightEnds(text);
    std::size_t depth = 0;
    // Text cannot hold a '<', so each one outside of comments and of a tag's quotes begins a tag.
    for (std::size_t at = text.find('<'); at != npos; at = text.find('<', at)) {
        if (text.compare(at, 4, "<!--") == 0) {
            const std::size_t end = std::min(text.find("-->", at + 4), text.size());
            at = end <= sight ? end : at + 1;
            continue;
        }
        if (text.compare(at, 2, "</") != 0) {
            RefuseDeeperThanAllowed(++depth);
        } else if (at < sight && depth > 0) {
            --depth;
        }
        const std::size_t end = EndOfTag(text, at);
        const std::string tag = text.substr(at, end - at);
        const bool holdsData = tag.find("\"binary\"") != npos || tag.find("'binary'") != npos;
        at = std::min(end <= sight ? end : at, text.size() - 1) + 1;
        if (holdsData) at = SkipBase64Lines(text, at, depth);
    }
}

// --- JSON ------------------------------------------------------------------------------------------------------------

/// The last letter of the string or comment that begins here; `at` where none does. Neither strings nor comments of the
/// first kind go on in the next line.
std::size_t LastOfStringOrComment(const std::string& text, std::size_t at) {
    const std::size_t last = text.size() - 1;
    if (text[at] == '"') return std::min(text.find_first_of("\"\n", at + 1), last);
    if (text.compare(at, 2, "//") == 0) return std::min(text.find('\n', at), text.size()) - 1;
    if (text.compare(at, 2, "/*") == 0) return std::min(text.find("*/", at + 2), last - 1) + 1;
    return at;
}

void RefuseUnsafeJson(const std::string& text) {
    static const std::string base64Signature = "\"$base64$";
    std::size_t sight = WhereSightEnds(text);
    std::size_t depth = 0;
    bool clear = true;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '\n') clear = true;
        if (IsOpening(c)) RefuseDeeperThanAllowed(++depth);
        if (c == '"' && text.compare(at, base64Signature.size(), base64Signature) == 0) {
            RefuseEndlessBase64(text, at + base64Signature.size());
        }
        if (!clear || at >= sight) continue;
        if (IsClosing(c) && depth > 0) --depth;
        const std::size_t last = LastOfStringOrComment(text, at);
        if (c == '"' && text.find('\\', at) < last) {
            // A backslash means one thing in a value and nothing in a name, so it is not clear where this ends, nor
            // whether a comment begins behind it.
            clear = false;
            if (text.find("/*", at) < text.find('\n', at)) sight = at;
        } else if (last < sight) {
            at = last;
        }
    }
}

// --- YAML ------------------------------------------------------------------------------------------------------------

/// Block collections nest by their columns, flow collections ("[...]", "{...}") by their brackets; there are no block
/// collections in a flow collection.
class YamlNesting {
public:
    /// Takes the next line. What the parser may see otherwise is counted but never taken as closed.
    void Take(const std::string& line, bool seen) {
        const std::size_t first = line.find_first_not_of(' ');
        if (first == npos) return;
        if (seen && (line[first] == '#' || line[first] == '\r')) return;
        if (seen) {
            Close(first);
            OpenBlocks(line, first);
        } else {
            unseenBlocks_ += 1 + static_cast<std::size_t>(std::count_if(line.begin(), line.end(),
                                                                        [](char c) { return c == '-' || c == ':'; }));
        }
        Brackets(line, first, seen);
        RefuseDeeperThanAllowed(blocks_.size() + unseenBlocks_ + flowDepth_);
    }
    bool MayBeInFlow() const { return flowDepth_ > 0; }

private:
    /// A line that stands farther to the left ends all that began farther to the right.
    void Close(std::size_t first) {
        while (!blocks_.empty() && blocks_.back() > first) blocks_.pop_back();
        if (first <= flowColumn_) flowDepth_ = 0;
    }

    void Open(std::size_t column) {
        if (blocks_.empty() || blocks_.back() < column) blocks_.push_back(column);
    }

    /// "- - name: value" opens a collection at each dash and at each name. The line's first name may hold anything.
    void OpenBlocks(const std::string& line, std::size_t first) {
        Open(first);
        for (std::size_t at = first; at < line.size();) {
            const char c = line[at];
            const char next = at + 1 < line.size() ? line[at + 1] : '\0';
            if (c == ' ') {
                ++at;
                continue;
            }
            if (at > first) {
                Open(at);
                if (c == '!') {  // a type
                    at = std::min(line.find(' ', at), line.size());
                    continue;
                }
                const bool isNumber =
                    IsDigit(c) || ((c == '-' || c == '+' || c == '.') && (IsDigit(next) || next == '.'));
                if (IsOpening(c) || c == '"' || c == '\'' || isNumber) return;
            }
            if (c == '-') {
                ++at;
                continue;
            }
            const std::size_t colon = line.find(':', at);
            if (colon == npos) return;
            at = colon + 1;
        }
    }

    void Brackets(const std::string& line, std::size_t first, bool seen) {
        // In strings, comments, types and names a bracket is a letter like others.
        const bool plain = seen && line.find_first_of("\"'#!") == npos;
        const std::size_t lastColon = line.rfind(':');
        for (std::size_t at = first; at < line.size(); ++at) {
            if (IsOpening(line[at])) {
                if (flowDepth_++ == 0) flowColumn_ = ColumnOfFlow(line, first, at);
            } else if (IsClosing(line[at]) && plain && (lastColon == npos || at > lastColon) && flowDepth_ > 0) {
                --flowDepth_;
            }
        }
    }

    /// Flow collections in a block collection end before a line in its column, others before a line in column 0.
    static std::size_t ColumnOfFlow(const std::string& line, std::size_t first, std::size_t at) {
        const bool inBlock = line.find('!') >= at && (line[first] == '-' || line.find(':') < at);
        return inBlock ? first : 0;
    }

    std::vector<std::size_t> blocks_;
    std::size_t unseenBlocks_ = 0;
    std::size_t flowDepth_ = 0;
    std::size_t flowColumn_ = 0;
};

/// Whether a value of this line is base64 data; these begin in the next line, behind "!!binary |".
bool AnnouncesBase64(const std::string& line) {
    static const std::string type = "binary";
    for (std::size_t at = line.find('!'); at != npos; at = line.find('!', at + 1)) {
        std::size_t end = std::min(line.find(' ', at), line.size());
        std::size_t rest = line.find_first_not_of(' ', end);
        if (line[end - 1] == '\r') --end;
        if (line[end - 1] == '>') --end;
        if (end - at <= type.size() || line.compare(end - type.size(), type.size(), type) != 0) continue;
        if (rest == npos || line[rest] != '|' || line.find_first_not_of(" \r", rest + 1) != npos) {
            Refuse("base64 data must begin in a line of their own");
        }
        return true;
    }
    return false;
}

/// A ':' where a name should begin, behind blanks: the parser goes back through these to the name's end.
void RefuseEmptyName(const std::string& line) {
    for (std::size_t at = line.find(':'); at != npos; at = line.find(':', at + 1)) {
        const std::size_t before = at == 0 ? npos : line.find_last_not_of(' ', at - 1);
        const bool beginsName = before == npos || line[before] == '{' || line[before] == ',';
        if (beginsName && (at == 0 || before != at - 1)) Refuse("a name is empty");
    }
}

void RefuseUnsafeYaml(const std::string& text) {
    std::size_t sight = WhereSightEnds(text);
    YamlNesting nesting;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string line = text.substr(at, end - at);
        nesting.Take(line, end <= sight);
        RefuseEmptyName(line);
        if (AnnouncesBase64(line)) {
            const std::size_t data = text.find_first_not_of(" \r\n", end);
            if (data != npos) RefuseEndlessBase64(text, data);
            // Base64 lines in a flow collection may look like its end.
            if (nesting.MayBeInFlow()) sight = at;
        }
        at = end + 1;
    }
}

}  // namespace

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

void RefuseWhatParsersDoNotSurvive(const std::string& text) {
    constexpr const char* byteOrderMark = "\xef\xbb\xbf";
    const std::size_t begin = text.compare(0, 3, byteOrderMark) == 0 ? 3 : 0;
    if (text.compare(begin, 5, "<?xml") == 0) RefuseUnsafeXml(text);
    if (text.compare(begin, 5, "%YAML") == 0) RefuseUnsafeYaml(text);
    if (text.compare(begin, 1, "{") == 0) RefuseUnsafeJson(text);
}

}  // namespace Quorvane::CameraCalibration
