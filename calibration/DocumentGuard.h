#pragma once

#include <string>

/// What OpenCV's parsers of YAML, XML and JSON cannot survive.
///
/// They are made for documents that OpenCV wrote, and foreign or damaged ones bring the host down in these ways:
///  - they call themselves for each level of nesting and overflow the stack, from about 2500 levels on where it has one
///    megabyte: "a: " and then a hundred thousand "[" in YAML;
///  - the XML parser reads through a null pointer where the document ends behind the "=" of an attribute;
///  - a block of base64 data whose header names no element type keeps them busy for ever;
///  - a dash between two documents of a YAML stream keeps them busy for ever, too: "a: 1", "..." and then "- b";
///  - an empty name in YAML makes them read in front of their buffer, and throw what is no `cv::Exception`;
///  - a list of more than 64 element types overflows an array on the stack.
/// Bytes that hide a part of a line from them (zero bytes among the text) could hide any of these, and are refused too.
/// The judgement here is one pass over the text, without recursion. It is an upper estimate: whatever the parsers take
/// to be nested is counted as such, so nothing that it lets through is deeper than it says.
namespace Quorvane::CameraCalibration {

/// Gives a `cv::Exception` for a document that must not reach the parsers.
void RefuseWhatParsersDoNotSurvive(const std::string& document);

/// Whether OpenCV reads these element types ("d", "3u", "2if") safely. It may still refuse them.
bool IsSafeElementFormat(const std::string& format);

}  // namespace Quorvane::CameraCalibration
