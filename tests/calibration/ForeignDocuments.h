#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "tests/support/ScratchFolder.h"

// Documents that bring OpenCV's parsers down, and such as only look like them.
namespace Quorvane::CameraCalibration {

/// The matrix of every document that is to be loaded.
extern const cv::Mat someMatrix;

inline const std::string yamlHead = "%YAML:1.0\n---\n";
inline const std::string xmlHead = "<?xml version=\"1.0\"?>\n<opencv_storage>\n";

/// Levels of nesting.
constexpr int tooDeep = 100000;
constexpr int allowed = 450;

std::string Times(int count, const std::string& text);

/// Every load refuses the file with a text of the parser and goes on living.
void ExpectRefused(const std::string& path, const std::string& reason);
void ExpectLoaded(const std::string& path);

/// A homography as OpenCV stores it, in the kind that the ending tells.
std::string StoredHomography(const TestSupport::ScratchFolder& folder, const std::string& ending);

/// Adds nodes in front of the homography of a YAML document.
std::string YamlWith(const TestSupport::ScratchFolder& folder, const std::string& nodes);

/// Stores a text in a compressed file and gives its path.
std::string Compressed(const TestSupport::ScratchFolder& folder, const std::string& name, const std::string& text);

}  // namespace Quorvane::CameraCalibration
