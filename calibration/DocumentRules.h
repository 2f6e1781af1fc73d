#pragma once

#include <cstddef>
#include <string>

/// What the judgements of XML, YAML and JSON documents have in common.
namespace Quorvane::CameraCalibration {

[[noreturn]] void RefuseDocument(const std::string& reason);

void RefuseDeeperThanAllowed(std::size_t depth);

/// Looks at the header of the base64 data that begins here. OpenCV writes it into one line.
void RefuseEndlessBase64(const std::string& text, std::size_t begin);

inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }
inline bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
inline bool IsOpening(char c) { return c == '[' || c == '{'; }
inline bool IsClosing(char c) { return c == ']' || c == '}'; }

}  // namespace Quorvane::CameraCalibration
