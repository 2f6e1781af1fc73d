#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

#include "geometry/Measurement.h"

namespace Quorvane::UtilityFunctions {

/// The rectangle of a caliper: its centre in pixels, the direction of its scan in radians from +x towards +y, and half
/// its length along the scan.
struct CaliperPlace {
    double row;
    double column;
    double angle;
    double halfLength;
};

/// The first edge of many calipers on one image. It finds, to the last bit, what an `EdgeCaliper` with "bilinear"
/// interpolation finds when asked for the "first" edge, in a fraction of the time.
class FirstEdgeSearch {
public:
    /// `gray` has one channel (any other has no edges) and is neither copied nor changed. `halfWidth` is that of all
    /// calipers; sigma and threshold are those of `EdgeCaliper::measure`.
    FirstEdgeSearch(const cv::Mat& gray, double halfWidth, double sigma, double threshold, EdgePolarity polarity);

    /// Measures one caliper. Returns false, and leaves `edge` alone, where it meets no edge.
    bool Find(const CaliperPlace& place, cv::Point2f& edge);

private:
    struct Strip;

    void UseSigma(double sigma);
    Strip StripOf(const CaliperPlace& place);
    template <typename Reader>
    void ReadProfile(const Reader& reader, const Strip& strip, int begin, int end);
    void Derive(int begin, int end);
    template <typename Reader>
    bool FindPosition(const Reader& reader, const Strip& strip, double& position);

    cv::Mat gray_;
    double halfWidth_;
    double sigma_;
    double threshold_;
    EdgePolarity polarity_;

    double usedSigma_ = 0.0;      // of the kernel
    std::vector<double> kernel_;  // for usedSigma_
    double scale_ = 0.0;          // from derivative to amplitude

    // The offsets across the present strip, from a point of its axis.
    std::vector<double> across_;
    std::vector<double> offsetsX_;
    std::vector<double> offsetsY_;

    std::vector<double> profile_;     // of the strip's window, half a kernel of zeros on either side
    std::vector<double> derivative_;  // of the strip's window
};

}  // namespace Quorvane::UtilityFunctions
