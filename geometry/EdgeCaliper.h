#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

namespace Quorvane::UtilityFunctions {

/// One edge that a caliper found.
struct EdgeRecord {
    int index;         ///< The sample of the profile where it was noticed.
    double amplitude;  ///< In gray levels, scaled as `AmplitudeScale` says; positive from dark to light.
    double position;   ///< The place along the profile, in samples.
};

/// A rectangle laid on an image, in which edges across its long axis are found to a fraction of a pixel.
///
///     EdgeCaliper caliper;
///     caliper.configure(row, column, 0.0, 30.0, 2.5, image, "bilinear");
///     std::vector<double> rows, columns, amplitudes, distances;
///     if (caliper.measure(image, 1.0, 30.0, "positive", "first", rows, columns, amplitudes, distances)) {
///         // the edge is at (columns[0], rows[0])
///     }
///
/// The image is read at one point per pixel of length and width. The points across the width are averaged into a
/// profile along the axis; see EdgeProfile.h for what becomes of it.
class EdgeCaliper {
public:
    double row = 0.0;           ///< Centre of the rectangle, y.
    double column = 0.0;        ///< Centre of the rectangle, x.
    double angle = 0.0;         ///< Direction of the scan in radians, from +x towards +y.
    double halfLength = 0.0;    ///< Half the length along the scan.
    double halfWidth = 0.0;     ///< Half the width across the scan.
    std::string interpolation;  ///< "nearest", "bilinear" or "bicubic"; anything else acts as "bilinear".
    int profileLength = 0;      ///< Samples along the scan.
    std::vector<std::vector<cv::Point2d>> sampleGrid;  ///< Where the image is read, per sample of the profile.
    std::vector<cv::Point2d> centerLine;               ///< The axis, one point per sample of the profile.
    bool debugEnabled = false;  ///< Whether `measure` shows what it did in two windows and waits for a key.
    int displayWidth = 1600;    ///< Upper limit of the width of such a window, in pixels.
    int displayHeight = 900;    ///< Upper limit of its height.

    EdgeCaliper() = default;

    /// Sets the rectangle and computes where the image will be read. The first sample lies at -`newHalfLength` from
    /// the centre; the last one falls short of +`newHalfLength` where the length is not a whole number. The image is
    /// not looked at.
    void configure(double newRow, double newColumn, double newAngle, double newHalfLength, double newHalfWidth,
                   const cv::Mat& image, const std::string& newInterpolation);

    /// Finds the edges in `image`. `transition` is "all", "positive" (dark to light) or "negative"; `select` is "all",
    /// "first" or "last" in the order of the scan. The outputs receive, per edge, its y, its x and its amplitude, and
    /// between each two neighbouring edges their distance. Returns whether there is any edge.
    ///
    /// Throws `std::invalid_argument`, and leaves the outputs alone, for another `transition` ("Invalid transition
    /// parameter") or `select` ("Invalid select parameter"). An image of two or more than four channels or of a depth
    /// other than 8-bit, 16-bit, float and double reads as zero everywhere and has no edge. Three and four channels are
    /// converted to gray first; `cv::Exception` where `cv::cvtColor` does not know their depth.
    bool measure(const cv::Mat& image, double sigma, double threshold, const std::string& transition,
                 const std::string& select, std::vector<double>& rows, std::vector<double>& columns,
                 std::vector<double>& amplitudes, std::vector<double>& distances) const;

private:
    cv::Mat GrayImageUnderGrid(const cv::Mat& image) const;
    std::vector<double> ReadProfile(const cv::Mat& gray) const;
};

}  // namespace Quorvane::UtilityFunctions
