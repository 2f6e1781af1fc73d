#pragma once

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string>

namespace Quorvane::TestSupport {

/// Console text with what differs from run to run taken out: the seconds of each "elasped time" become "#".
inline std::string WithoutTimes(const std::string& text) {
    const std::string start = "elasped time:";
    std::string quiet;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t seconds = line.find(start);
        if (seconds != std::string::npos) line = line.substr(0, seconds + start.size()) + "#s";
        quiet += line + "\n";
    }
    return quiet;
}

/// Console text without the lines that are exactly `unwanted`.
inline std::string WithoutLine(const std::string& text, const std::string& unwanted) {
    std::string rest;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line != unwanted) rest += line + "\n";
    }
    return rest;
}

/// Console text in which each line that is nothing but a number became "#".
inline std::string WithoutCounts(const std::string& text) {
    std::string rest;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const bool isNumber = !line.empty() && std::all_of(line.begin(), line.end(),
                                                           [](unsigned char c) { return std::isdigit(c) != 0; });
        rest += (isNumber ? "#" : line) + "\n";
    }
    return rest;
}

}  // namespace Quorvane::TestSupport
