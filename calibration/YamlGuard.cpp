#include "calibration/YamlGuard.h"

#include <algorithm>
#include <vector>

#include "calibration/DocumentRules.h"
#include "calibration/YamlTexts.h"

namespace Quorvane::CameraCalibration {

namespace {

constexpr auto npos = std::string::npos;

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
            if (!ends && line.compare(first, markLength, "---") != 0) RefuseDocument("text between two documents");
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
                if (line[at] == '-') RefuseDocument("a dash between two documents");
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
        if (IsOpening(line[at]) && text_.find('-', begin + at) != npos) RefuseDocument("a flow collection as the root");
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
            RefuseDocument("base64 data must begin in a line of their own");
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
        if (beginsName && (at == 0 || before != at - 1)) RefuseDocument("a name is empty");
    }
}

}  // namespace

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

}  // namespace Quorvane::CameraCalibration
