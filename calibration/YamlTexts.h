#pragma once

#include <cstddef>
#include <string>

namespace Quorvane::CameraCalibration {

/// The texts of a YAML document's lines, in which a bracket, a colon or a type is none.
///
/// A quote begins a string where the parser expects a value; elsewhere it may belong to a name. What is expected is
/// clear in a line of a block collection, and in the flow collection ("[...]", "{...}") that begins in such a line. The
/// flow collection is followed over its lines until it ends or is not written as OpenCV writes it.
class YamlTexts {
public:
    /// The next line without comments, strings and, in flow collections, anything but brackets. Lines, or parts of
    /// them, that are not clear come back as they are. `isInBlock`: the line is known to begin outside of flow
    /// collections.
    std::string TakenFrom(const std::string& line, bool isInBlock);

private:
    enum class Expected { first, next, value, comma };

    std::string Brackets(const std::string& line, std::size_t indent, std::size_t at);
    bool TakeToken(const std::string& line, std::size_t& at, std::string& brackets);
    bool TakeClosing(char bracket);
    bool TakeName(const std::string& line, std::size_t& at);
    bool TakeValue(const std::string& line, std::size_t& at, std::string& brackets);

    std::string open_;        // the brackets of the collections that have not ended
    std::size_t column_ = 0;  // of the line in which the outermost of them began
    Expected expected_ = Expected::first;
};

}  // namespace Quorvane::CameraCalibration
