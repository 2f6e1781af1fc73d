#pragma once

#include <QuorvaneVision.h>

#include <CLI/CLI.hpp>
#include <functional>
#include <iosfwd>
#include <memory>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>

/// What the programs share: exit codes, files, points on the command line.
namespace Program {

constexpr int succeeded = 0;
constexpr int failed = 1;  ///< What was looked for is not there, or something went wrong; said on standard error.
constexpr int wrongCall = 2;

/// Reads the command line and runs the job, whose result is the exit code. Exceptions of the job become a line on
/// standard error and `failed`; a wrong command line is told together with where help is, and gives `wrongCall`.
int Run(CLI::App& app, int argumentCount, char** arguments, const std::function<int()>& job);

/// "120.5,80" on the command line.
struct Point {
    float x = 0.0F;
    float y = 0.0F;
    operator cv::Point2f() const { return {x, y}; }
};
std::istream& operator>>(std::istream& stream, Point& point);

/// Throw `std::runtime_error` with a text for the user.
cv::Mat ReadPicture(const std::string& path, int flags);
cv::Mat ReadPicture(const std::string& path);  ///< In colour.
void WritePicture(const std::string& path, const cv::Mat& picture);

/// Throws `std::runtime_error` with the last error if a call of `CameraCalibration` did not succeed.
void Require(bool success);

/// A named algorithm, released at the end.
using Algorithm = std::unique_ptr<Quorvane::Algorithm, void (*)(Quorvane::Algorithm*)>;
Algorithm MakeAlgorithm(const std::string& name);
/// Runs it. Throws `std::runtime_error` with its message for every status but 0.
cv::Mat Execute(Quorvane::Algorithm& algorithm, const cv::Mat& picture);
/// The same without the notices that the shape matcher writes to standard output.
cv::Mat ExecuteQuietly(Quorvane::Algorithm& algorithm, const cv::Mat& picture);

}  // namespace Program
