#pragma once

#include <cstdint>
#include <opencv2/core/types.hpp>
#include <vector>

#include "QuorvaneExport.h"

namespace Quorvane::UtilityFunctions {

/// A measured free curve: the edge points as they were found, and the smooth points made from them. In pixels.
class QUORVANE_EXPORT Curve {
public:
    std::vector<cv::Point2f> measuredPoints;   ///< The edge points in the order of the scan.
    std::vector<cv::Point2f> curvePoints;      ///< The points of the smooth curve.
    std::vector<cv::Point2f> reservedPointsA;  ///< Part of the record, filled by nothing; only copied and moved.
    std::vector<cv::Point2f> reservedPointsB;  ///< As `reservedPointsA`.
    std::int64_t reservedScalar;               ///< As `reservedPointsA`; zero at first.
    double meanFitError;                       ///< Mean distance of the points that were fitted to `curvePoints`.

    /// Everything zero and empty.
    Curve();
    ///@{
    /// The same points and figures; the points of a curve that was moved from are gone.
    Curve(const Curve& other);
    Curve(Curve&& other) noexcept;
    Curve& operator=(const Curve& other);
    Curve& operator=(Curve&& other) noexcept;
    ///@}
    ~Curve();

    /// `curvePoints`, or `measuredPoints` where there are none.
    const std::vector<cv::Point2f>& getCurvePoints() const;

    /// Whether there is any point in `curvePoints` or `measuredPoints`.
    bool isValid() const;
};

}  // namespace Quorvane::UtilityFunctions

namespace Quorvane {
using UtilityFunctions::Curve;
}
