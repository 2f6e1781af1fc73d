#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

#include "framework/Algorithm.h"
#include "tests/reference/PlainFilling.h"
#include "tests/support/Tray.h"

namespace Quorvane {

/// Diameter in pixels of the parts on the small trays.
constexpr double smallPartSize = 70.0;

/// A tray of 333 x 250 pixels with six parts.
TestSupport::Tray RenderSmallTray(std::uint32_t seed, double noise = 2.0, double light = 1.0);
const TestSupport::Tray& SmallTray();

/// The job of a host: the mark on the first part and a triangle around it.
Reference::FillingJob JobOn(const TestSupport::Tray& tray, double partSize = smallPartSize);

std::vector<double> XOf(const std::vector<cv::Point2f>& points);
std::vector<double> YOf(const std::vector<cv::Point2f>& points);
std::vector<std::string> TextsOf(const std::vector<double>& numbers);

/// The whole job step by step, from the colour sample on.
Reference::FillingOutcome PlainOutcome(const cv::Mat& picture, const Reference::FillingJob& job);

/// An "IntelligentFilling" as a host uses it, given the job on the small tray.
class FillingFixture : public testing::Test {
protected:
    FillingFixture();
    ~FillingFixture() override;

    void Give(const Reference::FillingJob& job);
    void Mark(double x, double y);

    /// Runs with both streams held back; they are in `out` and `err` afterwards.
    int Run(const cv::Mat& source);

    /// Gives the job, runs it, and expects every result and every pixel of the plain one. Returns that.
    Reference::FillingOutcome ExpectPlainOutcome(const cv::Mat& picture, const Reference::FillingJob& job);

    std::string ErrorMessage();
    int CopyCount();
    std::string Copy(int number, const std::string& field);

    std::unique_ptr<Algorithm> algorithm;
    cv::Mat destination;
    std::string out;
    std::string err;
};

}  // namespace Quorvane
