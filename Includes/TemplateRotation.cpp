// A job trains some 1800 rotations, so a template is written once: the box of the features is found while they are
// rotated, and what remains is to take its corner away from them. Nothing but the new template's own storage is
// allocated.

#include "Includes/TemplateRotation.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "Includes/GradientSettings.h"
#include "Includes/OrientationLabel.h"

namespace line2Dup {

namespace {

constexpr double pi = 3.141592653589793;
constexpr float halfCircle = 180.0f;
constexpr float fullCircle = 360.0f;

/// The integer part. What an int cannot hold becomes its lowest value.
int truncateToInt(float value) {
    constexpr auto limit = 2147483648.0f;  // 2^31
    return value >= -limit && value < limit ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

/// The least box, in coordinates of the finest level, that holds all features seen.
class FeatureBox {
public:
    void include(const GradientFeature& feature, std::int64_t scale) {
        minX_ = std::min(minX_, feature.x * scale);
        minY_ = std::min(minY_, feature.y * scale);
        maxX_ = std::max(maxX_, feature.x * scale);
        maxY_ = std::max(maxY_, feature.y * scale);
    }

    void crop(ShapeTemplateLevels& levels) {
        if (maxX_ < minX_) return;
        // The remainder of a negative odd number is -1: such a corner stays.
        if (minX_ % 2 == 1) --minX_;
        if (minY_ % 2 == 1) --minY_;
        for (ShapeTemplate& level : levels) {
            level.width = shifted(maxX_ - minX_, level.pyramidLevel);
            level.height = shifted(maxY_ - minY_, level.pyramidLevel);
            level.tlX = shifted(minX_, level.pyramidLevel);
            level.tlY = shifted(minY_, level.pyramidLevel);
            for (GradientFeature& feature : level.features) {
                feature.x = static_cast<int>(std::int64_t{feature.x} - level.tlX);
                feature.y = static_cast<int>(std::int64_t{feature.y} - level.tlY);
            }
        }
    }

    cv::Rect rect() const {
        if (maxX_ < minX_) return {};
        return {static_cast<int>(minX_), static_cast<int>(minY_), static_cast<int>(maxX_ - minX_),
                static_cast<int>(maxY_ - minY_)};
    }

private:
    static int shifted(std::int64_t value, int pyramidLevel) { return static_cast<int>(value >> pyramidLevel); }

    std::int64_t minX_ = std::numeric_limits<std::int64_t>::max();
    std::int64_t minY_ = std::numeric_limits<std::int64_t>::max();
    std::int64_t maxX_ = std::numeric_limits<std::int64_t>::min();
    std::int64_t maxY_ = std::numeric_limits<std::int64_t>::min();
};

std::int64_t scaleOf(int pyramidLevel) { return std::int64_t{1} << pyramidLevel; }

/// Into 0 to 360. An angle so large that a float cannot tell it from the next turn stays as it is.
float intoCircle(float theta) {
    while (theta > fullCircle && theta - fullCircle != theta) theta -= fullCircle;
    while (theta < 0.0f && theta + fullCircle != theta) theta += fullCircle;
    return theta;
}

int labelOf(float theta) {
    constexpr auto directions = static_cast<float>(directionsInCircle);
    return truncateToInt(theta * directions / fullCircle + 0.5f) & (labelCount - 1);
}

/// A turn about a point of one level.
struct Turn {
    double cosine;
    double sine;
    cv::Point2f centre;

    cv::Point operator()(cv::Point2f point) const {
        const double dx = point.x - centre.x;
        const double dy = point.y - centre.y;
        const auto x = static_cast<float>(dx * cosine - dy * sine);
        const auto y = static_cast<float>(dy * cosine + dx * sine);
        return {truncateToInt(x + centre.x + 0.5f), truncateToInt(y + centre.y + 0.5f)};
    }
};

cv::Point2f placeInImage(const GradientFeature& feature, const ShapeTemplate& level) {
    return {static_cast<float>(std::int64_t{feature.x} + level.tlX),
            static_cast<float>(std::int64_t{feature.y} + level.tlY)};
}

}  // namespace

cv::Rect cropToFeatures(ShapeTemplateLevels& levels) {
    FeatureBox box;
    for (const ShapeTemplate& level : levels) {
        for (const GradientFeature& feature : level.features) box.include(feature, scaleOf(level.pyramidLevel));
    }
    box.crop(levels);
    return box.rect();
}

ShapeTemplateLevels rotateTemplate(const ShapeTemplateLevels& source, float theta, cv::Point2f centre) {
    const double radians = static_cast<double>(-theta / halfCircle) * pi;
    Turn turn{std::cos(radians), std::sin(radians), centre};
    FeatureBox box;
    ShapeTemplateLevels rotated(source.size());
    for (std::size_t l = 0; l < source.size(); ++l) {
        if (l > 0) turn.centre /= 2.0f;
        ShapeTemplate& level = rotated[l];
        level.pyramidLevel = static_cast<int>(l);
        level.features.reserve(source[l].features.size());
        for (const GradientFeature& feature : source[l].features) {
            const cv::Point place = turn(placeInImage(feature, source[l]));
            const float direction = intoCircle(feature.theta - theta);
            level.features.push_back({place.x, place.y, labelOf(direction), direction});
            box.include(level.features.back(), scaleOf(level.pyramidLevel));
        }
    }
    box.crop(rotated);
    return rotated;
}

}  // namespace line2Dup
