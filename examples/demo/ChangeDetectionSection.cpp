// Whether a picture differs from an earlier one: exactly, and by the distance of two average hashes.

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "examples/demo/AlgorithmRun.h"
#include "examples/demo/Sections.h"
#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"

namespace Demo {

namespace {

namespace Utility = Quorvane::UtilityFunctions;

/// A usual threshold: up to 5 of the 64 fields may differ.
constexpr int usualThreshold = 5;

std::string YesOrNo(bool changed) { return changed ? "changed" : "unchanged"; }

/// The distance of the hashes, which the library tells only through its threshold.
int DistanceOf(const cv::Mat& previous, const cv::Mat& current) {
    int threshold = -1;
    while (Utility::IsMatChanged_HammingDistance(previous, current, threshold)) ++threshold;
    return threshold;
}

std::vector<Picture> Variants(const cv::Mat& original) {
    cv::Mat onePixel = original.clone();
    ++onePixel.at<uchar>(original.rows / 2, original.cols / 2);
    const cv::Mat noisy = Quorvane::TestSupport::Scene(original).Noise(8.0, 11).Gray();
    cv::Mat shifted;
    cv::warpAffine(original, shifted, cv::Matx23d(1.0, 0.0, 60.0, 0.0, 1.0, 0.0), original.size(), cv::INTER_LINEAR,
                   cv::BORDER_REPLICATE);
    return {{original, "The earlier picture itself"},    {onePixel, "One pixel brighter by one level"},
            {noisy, "With noise of 8 levels"},           {cv::Mat(original * 0.7), "Darker by a third"},
            {shifted, "The camera turned by 60 pixels"}, {cv::Mat(255 - original), "The negative"}};
}

}  // namespace

void ChangeDetectionSection(Report& report) {
    report.Section("Change detection",
                   "IsMatChanged_GrayDiff tells any difference, even of one pixel by one level. "
                   "IsMatChanged_HammingDistance compares two hashes of 64 bits and forgives noise and light.");
    const cv::Mat original = Quorvane::TestSupport::LoadGrayPicture("photographer.png");
    const std::vector<Picture> variants = Variants(original);
    std::vector<std::vector<std::string>> lines{{"compared with the earlier picture", "IsMatChanged_GrayDiff",
                                                 "IsMatChanged_HammingDistance, threshold 5", "distance of the hashes",
                                                 "time of both"}};
    for (const Picture& variant : variants) {
        bool byGray = false;
        bool byHash = false;
        const double time = MillisecondsOf([&] {
            byGray = Utility::IsMatChanged_GrayDiff(original, variant.image);
            byHash = Utility::IsMatChanged_HammingDistance(original, variant.image, usualThreshold);
        });
        lines.push_back({variant.caption, YesOrNo(byGray), YesOrNo(byHash),
                         std::to_string(DistanceOf(original, variant.image)), Milliseconds(time)});
    }
    report.Pictures(variants);
    report.Grid("Results", lines);
}

}  // namespace Demo
