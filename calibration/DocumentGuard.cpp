#include "calibration/DocumentGuard.h"

#include <algorithm>

#include "calibration/DocumentRules.h"
#include "calibration/YamlGuard.h"

namespace Quorvane::CameraCalibration {

namespace {

constexpr auto npos = std::string::npos;

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
        RefuseDocument("the document has lines with hidden ends");
    }
    return text.substr(0, end);
}

// --- XML -------------------------------------------------------------------------------------------------------------

void RefuseAttributeWithoutValue(const std::string& text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    if (last != npos && text[last] == '=') RefuseDocument("the document ends in the middle of an attribute");
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

}  // namespace

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
