#include "framework/NumberText.h"

#include <cstdio>
#include <stdexcept>

namespace Quorvane {

namespace {

/// Runs a reader of the standard library named `name` and gives its failures the texts that hosts know.
template <typename Reader>
auto Read(const char* name, Reader reader) {
    try {
        return reader();
    } catch (const std::invalid_argument&) {
        throw std::invalid_argument("invalid " + std::string(name) + " argument");
    } catch (const std::out_of_range&) {
        throw std::out_of_range(std::string(name) + " argument out of range");
    }
}

}  // namespace

std::string FixedText(double value) {
    const int length = std::snprintf(nullptr, 0, "%f", value);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::snprintf(text.data(), text.size() + 1, "%f", value);
    return text;
}

int ReadInt(const std::string& text) {
    return Read("stoi", [&] { return std::stoi(text); });
}

float ReadFloat(const std::string& text) {
    return Read("stof", [&] { return std::stof(text); });
}

double ReadDouble(const std::string& text) {
    return Read("stod", [&] { return std::stod(text); });
}

}  // namespace Quorvane
