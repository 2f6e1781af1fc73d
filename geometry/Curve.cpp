#include "geometry/Curve.h"

namespace Quorvane::UtilityFunctions {

Curve::Curve() : reservedScalar(0), meanFitError(0.0) {}

Curve::Curve(const Curve& other) = default;
Curve::Curve(Curve&& other) noexcept = default;
Curve& Curve::operator=(const Curve& other) = default;
Curve& Curve::operator=(Curve&& other) noexcept = default;
Curve::~Curve() = default;

const std::vector<cv::Point2f>& Curve::getCurvePoints() const {
    return curvePoints.empty() ? measuredPoints : curvePoints;
}

bool Curve::isValid() const { return !curvePoints.empty() || !measuredPoints.empty(); }

}  // namespace Quorvane::UtilityFunctions
