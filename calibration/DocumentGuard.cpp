#include "calibration/DocumentGuard.h"

#include <algorithm>
#include <cctype>
#include <opencv2/core.hpp>
#include <vector>

#include "calibration/YamlTexts.h"

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

/// A zero byte, and a carriage return that does not stand at a line's end, hide from the parsers what follows on the
/// line, and the next line may be joined to it. Whole files are padded with zero bytes; those are cut off here.
std::string WithoutPadding(const std::string& text) {
    const auto hidesMore = [&](std::size_t at) {
        return text[at] == '\0' || (text[at] == '\r' && at + 1 < text.size() && text[at + 1] != '\n');
    };
    std::size_t end = 0;
    while (end < text.size() && !hidesMore(end)) ++end;
    const auto isPadding = [](char c) { return c == '\0' || IsBlank(c); };
    if (!std::all_of(text.begin() + static_cast<std::ptrdiff_t>(end), text.end(), isPadding)) {
        Refuse("the document has lines with hidden ends");
    }
    return text.substr(0, end);
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

void RefuseAttributeWithoutValue(const std::string& text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    if (last != npos && text[last] == '=') Refuse("the document ends in the middle of an attribute");
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
    std::size_t depth = 0;
    // Text cannot hold a '<', so each one outside of comments and of a tag's quotes begins a tag.
    for (std::size_t at = text.find('<'); at != npos; at = text.find('<', at)) {
        if (text.compare(at, 4, "<!--") == 0) {
            at = text.find("-->", at + 4);
            continue;
        }
        if (text.compare(at, 2, "</") != 0) {
            RefuseDeeperThanAllowed(++depth);
        } else if (depth > 0) {
            --depth;
        }
        const std::size_t end = EndOfTag(text, at);
        const std::string tag = text.substr(at, end - at);
        const bool holdsData = tag.find("\"binary\"") != npos || tag.find("'binary'") != npos;
        at = std::min(end + 1, text.size());
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

/// The last letter of the string that begins here. The letter behind a backslash never ends it.
std::size_t LastOfStringValue(const std::string& text, std::size_t at) {
    for (++at; at < text.size() && text[at] != '"' && text[at] != '\n'; ++at) {
        if (text[at] == '\\') ++at;
    }
    return std::min(at, text.size() - 1);
}

void RefuseUnsafeJson(const std::string& text) {
    static const std::string base64Signature = "\"$base64$";
    std::size_t depth = 0;
    char before = '\0';  // the letter before this one, without blanks and comments
    bool clearInLine = true;
    bool clear = true;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '\n') clearInLine = true;
        if (IsOpening(c)) RefuseDeeperThanAllowed(++depth);
        if (c == '"' && text.compare(at, base64Signature.size(), base64Signature) == 0) {
            RefuseEndlessBase64(text, at + base64Signature.size());
        }
        if (!clearInLine && text.compare(at, 2, "/*") == 0) clear = false;
        if (!clear || !clearInLine) continue;
        if (IsClosing(c) && depth > 0) --depth;
        const bool isStringValue = c == '"' && (before == ':' || before == '[');
        const std::size_t last = isStringValue ? LastOfStringValue(text, at) : LastOfStringOrComment(text, at);
        if (!IsBlank(c) && c != '/') before = c;
        // A backslash means one thing in a value and nothing in a name, so that, behind a comma, it is not clear where
        // a string with it ends, nor whether a comment begins behind it. Strings end with their line, comments may go
        // on.
        clearInLine = c != '"' || isStringValue || std::find(&text[at], &text[last], '\\') == &text[last];
        if (clearInLine) at = last;
    }
}

// --- YAML ------------------------------------------------------------------------------------------------------------

/// Block collections nest by their columns, flow collections ("[...]", "{...}") by their brackets; there are no block
/// collections in a flow collection.
class YamlNesting {
public:
    /// Takes the next line. If what it shows is not clear, it may open but not close.
    void Take(const std::string& line, bool clear) {
        const std::size_t first = line.find_first_not_of(' ');
        if (first == npos || line[first] == '#' || line[first] == '\r') return;
        if (clear) Close(first);
        OpenBlocks(line, first);
        Brackets(line, first, clear);
        RefuseDeeperThanAllowed(blocks_.size() + flowDepth_);
    }
    bool MayBeInFlow() const { return flowDepth_ > 0; }
    /// Whether a line that begins in this column may go on with a flow collection.
    bool MayGoOnWithFlow(std::size_t first) const { return flowDepth_ > 0 && first > flowColumn_; }

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
        if (line[first] == '!') {
            // A type or a name, depending on what came before: every dash and every colon may open a collection.
            for (std::size_t at = first; at < line.size(); ++at) {
                if (line[at] == '-' || line[at] == ':') Open(at + 1);
            }
            return;
        }
        bool mayHaveType = true;
        for (std::size_t at = first; at < line.size();) {
            const char c = line[at];
            const char next = at + 1 < line.size() ? line[at + 1] : '\0';
            if (c == ' ') {
                ++at;
                continue;
            }
            if (at > first) {
                Open(at);
                if (c == '!' && mayHaveType) {
                    at = std::min(line.find_first_of(" >", at), line.size() - 1) + 1;
                    mayHaveType = false;
                    continue;
                }
                // Behind a type the parser takes no sign and no point for a number's beginning.
                const bool isSigned = (c == '-' || c == '+') && (IsDigit(next) || next == '.');
                const bool isNumber = IsDigit(c) || (mayHaveType && (isSigned || (c == '.' && IsDigit(next))));
                mayHaveType = true;
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

    void Brackets(const std::string& line, std::size_t first, bool clear) {
        // In strings, comments, types and names a bracket is a letter like others.
        const bool plain = clear && line.find_first_of("\"'#!") == npos;
        const std::size_t lastColon = line.rfind(':');
        const std::size_t column = ColumnOfFlow(line, first);
        for (std::size_t at = first; at < line.size(); ++at) {
            if (IsOpening(line[at])) {
                if (flowDepth_++ == 0) flowColumn_ = column;
            } else if (IsClosing(line[at]) && plain && (lastColon == npos || at > lastColon) && flowDepth_ > 0) {
                --flowDepth_;
            }
        }
    }

    /// Flow collections in a block collection end before a line in its column, others before a line in column 0.
    static std::size_t ColumnOfFlow(const std::string& line, std::size_t first) {
        const std::size_t begin = line.find_first_of("[{!");
        const bool inBlock = line[first] == '-' || line.find(':') < begin;
        return inBlock && begin != npos && line[begin] != '!' ? first : 0;
    }

    std::vector<std::size_t> blocks_;
    std::size_t flowDepth_ = 0;
    std::size_t flowColumn_ = 0;
};

/// The documents of a stream, of which a file mostly has one. Between two of them the parser never gets past a '-' that
/// does not begin "---", and it skips three letters, whatever they are, behind each.
class YamlStream {
public:
    explicit YamlStream(const std::string& text) : text_(text) {}

    /// Takes the next line, which begins at this place of the text.
    void Take(const std::string& line, std::size_t begin) {
        const std::size_t first = NextToken(line, 0);
        if (first == npos || state_ == State::inFlow) return;
        if (state_ == State::inBlock) {
            const bool ends = line.compare(first, markLength, "...") == 0;
            if (first > column_ || (first == column_ && !ends)) return;
            if (!ends && line.compare(first, markLength, "---") != 0) Refuse("text between two documents");
            state_ = State::between;
            TakeBetween(line, first + markLength, begin);
        } else if (state_ == State::between) {
            TakeBetween(line, first, begin);
        } else if (IsEmptyDocument(line, first)) {
            TakeBetween(line, first + markLength, begin);
        } else {
            TakeRoot(line, first, begin);
        }
    }

private:
    static constexpr std::size_t markLength = 3;
    enum class State { between, rootExpected, inBlock, inFlow };

    static std::size_t NextToken(const std::string& line, std::size_t at) {
        at = line.find_first_not_of(' ', std::min(at, line.size()));
        return at == npos || line[at] == '#' || line[at] == '\r' ? npos : at;
    }

    /// Where a root is expected, the mark of the end may stand instead.
    bool IsEmptyDocument(const std::string& line, std::size_t at) {
        if (line.compare(at, markLength, "...") != 0) return false;
        state_ = State::between;
        hadRoot_ = true;
        return true;
    }

    void TakeBetween(const std::string& line, std::size_t at, std::size_t begin) {
        for (at = NextToken(line, at); at != npos && line[at] != '%'; at = NextToken(line, at + markLength)) {
            if (line.compare(at, markLength, "---") == 0) {
                state_ = State::rootExpected;
                at = NextToken(line, at + markLength);
                if (at == npos) return;
                if (IsEmptyDocument(line, at)) continue;
            } else if (hadRoot_) {
                if (line[at] == '-') Refuse("a dash between two documents");
                return;
            }
            TakeRoot(line, at, begin);
            return;
        }
    }

    void TakeRoot(const std::string& line, std::size_t at, std::size_t begin) {
        hadRoot_ = true;
        if (line[at] == '!') {
            // Where the line holds the type alone, the root begins in a line to come.
            at = NextToken(line, std::min(line.find_first_of(" >", at), line.size() - 1) + 1);
            if (at == npos) return;
        }
        // Where a flow collection ends is not judged, so none may have a dash behind its beginning.
        if (IsOpening(line[at]) && text_.find('-', begin + at) != npos) Refuse("a flow collection as the root");
        state_ = IsOpening(line[at]) ? State::inFlow : State::inBlock;
        column_ = at;
    }

    const std::string& text_;
    State state_ = State::between;
    std::size_t column_ = 0;
    bool hadRoot_ = false;
};

/// Whether a value of this line is base64 data; these begin in the next line, behind "!!binary |".
bool AnnouncesBase64(const std::string& line) {
    static const std::string type = "binary";
    std::size_t next = 0;
    for (std::size_t at = line.find('!'); at != npos; at = line.find('!', next)) {
        std::size_t end = std::min(line.find(' ', at), line.size());
        next = end;
        const std::size_t rest = line.find_first_not_of(' ', end);
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
    bool clear = true;
    YamlStream stream(text);
    YamlNesting nesting;
    YamlTexts texts;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string whole = text.substr(at, end - at);
        stream.Take(whole, at);
        const std::size_t first = whole.find_first_not_of(' ');
        const std::string line = texts.TakenFrom(whole, clear && !nesting.MayGoOnWithFlow(first));
        nesting.Take(line, clear);
        RefuseEmptyName(line);
        if (AnnouncesBase64(line)) {
            const std::size_t data = text.find_first_not_of(" \r\n", end);
            if (data != npos) RefuseEndlessBase64(text, data);
            // Base64 lines in a flow collection may look like its end.
            if (nesting.MayBeInFlow()) clear = false;
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

void RefuseWhatParsersDoNotSurvive(const std::string& document) {
    static const std::string byteOrderMark = "\xef\xbb\xbf";
    const std::size_t begin = document.compare(0, byteOrderMark.size(), byteOrderMark) == 0 ? byteOrderMark.size() : 0;
    const auto is = [&](const std::string& signature) {
        return document.compare(begin, signature.size(), signature) == 0;
    };
    if (is("<?xml")) RefuseUnsafeXml(WithoutPadding(document));
    if (is("%YAML")) RefuseUnsafeYaml(WithoutPadding(document));
    if (is("{")) RefuseUnsafeJson(WithoutPadding(document));
}

}  // namespace Quorvane::CameraCalibration
