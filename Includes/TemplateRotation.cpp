// A job trains some 1800 rotations, so a template is written once: the box of the features is found while they are
// rotated, and what remains is to take its corner away from them. Nothing but the new template's own storage is
// allocated.
//
// Features are four 32-bit values each, so four of them are turned at once, with the same operations in float and
// double as one alone. What is out of the ordinary (a place that no int holds, a direction more than one turn outside
// the circle) is left to the arithmetic of one feature.

#include "Includes/TemplateRotation.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/GradientSettings.h"
#include "Includes/OrientationLabel.h"

namespace line2Dup {

namespace {

constexpr double pi = 3.141592653589793;
constexpr float halfCircle = 180.0f;
constexpr float fullCircle = 360.0f;

/// Floats below this in amount have an int as their integer part.
constexpr float intLimit = 2147483648.0f;  // 2^31

/// The integer part. What an int cannot hold becomes its lowest value.
int truncateToInt(float value) {
    return value >= -intLimit && value < intLimit ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

void takeAway(int x, int y, std::vector<GradientFeature>& features) {
    for (GradientFeature& feature : features) {
        feature.x = static_cast<int>(std::int64_t{feature.x} - x);
        feature.y = static_cast<int>(std::int64_t{feature.y} - y);
    }
}

/// The least box, in coordinates of the finest level, that holds all features seen.
class FeatureBox {
public:
    void include(const ShapeTemplate& level) {
        if (level.features.empty()) return;
        cv::Point least(level.features.front().x, level.features.front().y);
        cv::Point most = least;
        for (const GradientFeature& feature : level.features) {
            least = {std::min(least.x, feature.x), std::min(least.y, feature.y)};
            most = {std::max(most.x, feature.x), std::max(most.y, feature.y)};
        }
        const std::int64_t scale = std::int64_t{1} << level.pyramidLevel;
        minX_ = std::min(minX_, least.x * scale);
        minY_ = std::min(minY_, least.y * scale);
        maxX_ = std::max(maxX_, most.x * scale);
        maxY_ = std::max(maxY_, most.y * scale);
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
            takeAway(level.tlX, level.tlY, level.features);
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

cv::Point2f placeInImage(const GradientFeature& feature, const ShapeTemplate& level) {
    return {static_cast<float>(std::int64_t{feature.x} + level.tlX),
            static_cast<float>(std::int64_t{feature.y} + level.tlY)};
}

/// A turn about a point of one level.
struct Turn {
    double cosine;
    double sine;
    float theta;
    cv::Point2f centre;

    GradientFeature operator()(const GradientFeature& feature, const ShapeTemplate& level) const {
        const cv::Point2f place = placeInImage(feature, level);
        const double dx = place.x - centre.x;
        const double dy = place.y - centre.y;
        const auto x = static_cast<float>(dx * cosine - dy * sine);
        const auto y = static_cast<float>(dy * cosine + dx * sine);
        const float direction = intoCircle(feature.theta - theta);
        return {truncateToInt(x + centre.x + 0.5f), truncateToInt(y + centre.y + 0.5f), labelOf(direction), direction};
    }
};

#if CV_SIMD128 && CV_SIMD128_64F
static_assert(sizeof(GradientFeature) == 4 * sizeof(int), "features are read as rows of four 32-bit values");

/// `Turn` for four features.
class TurnOfFour {
public:
    TurnOfFour(const Turn& turn, const ShapeTemplate& level)
        : cosine_(cv::v_setall_f64(turn.cosine)),
          sine_(cv::v_setall_f64(turn.sine)),
          theta_(cv::v_setall_f32(turn.theta)),
          centreX_(cv::v_setall_f32(turn.centre.x)),
          centreY_(cv::v_setall_f32(turn.centre.y)),
          cornerX_(cv::v_setall_f64(level.tlX)),
          cornerY_(cv::v_setall_f64(level.tlY)) {}

    /// False, with nothing written, if one of the four is out of the ordinary.
    bool operator()(const GradientFeature* features, GradientFeature* turned) {
        cv::v_int32x4 x;
        cv::v_int32x4 y;
        cv::v_int32x4 label;
        cv::v_int32x4 thetaBits;
        cv::v_load_deinterleave(&features->x, x, y, label, thetaBits);
        const Pair dx = doubles(cv::v_sub(placeInImage(x, cornerX_), centreX_));
        const Pair dy = doubles(cv::v_sub(placeInImage(y, cornerY_), centreY_));
        const cv::v_float32x4 half = cv::v_setall_f32(0.5f);
        const cv::v_float32x4 turnedX = cv::v_add(cv::v_add(difference(dx, cosine_, dy, sine_), centreX_), half);
        const cv::v_float32x4 turnedY = cv::v_add(cv::v_add(sum(dy, cosine_, dx, sine_), centreY_), half);
        const cv::v_float32x4 direction = intoCircle(cv::v_sub(cv::v_reinterpret_as_f32(thetaBits), theta_));
        if (!cv::v_check_all(cv::v_and(cv::v_and(isInt(turnedX), isInt(turnedY)), isInCircle(direction)))) return false;
        cv::v_store_interleave(&turned->x, cv::v_trunc(turnedX), cv::v_trunc(turnedY), labelOf(direction),
                               cv::v_reinterpret_as_s32(direction));
        return true;
    }

private:
    struct Pair {
        cv::v_float64x2 low;
        cv::v_float64x2 high;
    };

    /// In double, where no sum of two ints overflows.
    static cv::v_float32x4 placeInImage(const cv::v_int32x4& place, const cv::v_float64x2& corner) {
        return cv::v_cvt_f32(cv::v_add(cv::v_cvt_f64(place), corner), cv::v_add(cv::v_cvt_f64_high(place), corner));
    }

    static Pair doubles(const cv::v_float32x4& values) { return {cv::v_cvt_f64(values), cv::v_cvt_f64_high(values)}; }

    /// a * b - c * d
    static cv::v_float32x4 difference(const Pair& a, const cv::v_float64x2& b, const Pair& c,
                                      const cv::v_float64x2& d) {
        return cv::v_cvt_f32(cv::v_sub(cv::v_mul(a.low, b), cv::v_mul(c.low, d)),
                             cv::v_sub(cv::v_mul(a.high, b), cv::v_mul(c.high, d)));
    }

    /// a * b + c * d
    static cv::v_float32x4 sum(const Pair& a, const cv::v_float64x2& b, const Pair& c, const cv::v_float64x2& d) {
        return cv::v_cvt_f32(cv::v_add(cv::v_mul(a.low, b), cv::v_mul(c.low, d)),
                             cv::v_add(cv::v_mul(a.high, b), cv::v_mul(c.high, d)));
    }

    /// For directions up to one turn outside the circle.
    static cv::v_float32x4 intoCircle(const cv::v_float32x4& direction) {
        const cv::v_float32x4 full = cv::v_setall_f32(fullCircle);
        const cv::v_float32x4 lower = cv::v_select(cv::v_gt(direction, full), cv::v_sub(direction, full), direction);
        return cv::v_select(cv::v_lt(lower, cv::v_setzero_f32()), cv::v_add(lower, full), lower);
    }

    static cv::v_float32x4 isInCircle(const cv::v_float32x4& direction) {
        return cv::v_and(cv::v_ge(direction, cv::v_setzero_f32()), cv::v_le(direction, cv::v_setall_f32(fullCircle)));
    }

    static cv::v_float32x4 isInt(const cv::v_float32x4& value) {
        return cv::v_lt(cv::v_abs(value), cv::v_setall_f32(intLimit));
    }

    static cv::v_int32x4 labelOf(const cv::v_float32x4& direction) {
        const cv::v_float32x4 scaled = cv::v_mul(direction, cv::v_setall_f32(static_cast<float>(directionsInCircle)));
        const cv::v_float32x4 rounded =
            cv::v_add(cv::v_div(scaled, cv::v_setall_f32(fullCircle)), cv::v_setall_f32(0.5f));
        return cv::v_and(cv::v_trunc(rounded), cv::v_setall_s32(labelCount - 1));
    }

    cv::v_float64x2 cosine_;
    cv::v_float64x2 sine_;
    cv::v_float32x4 theta_;
    cv::v_float32x4 centreX_;
    cv::v_float32x4 centreY_;
    cv::v_float64x2 cornerX_;
    cv::v_float64x2 cornerY_;
};
#else
struct TurnOfFour {
    TurnOfFour(const Turn&, const ShapeTemplate&) {}
    bool operator()(const GradientFeature*, GradientFeature*) { return false; }
};
#endif

void turnFeatures(const ShapeTemplate& source, const Turn& turn, std::vector<GradientFeature>& turned) {
    const std::size_t count = source.features.size();
    turned.resize(count);
    TurnOfFour turnFour(turn, source);
    for (std::size_t i = 0; i < count;) {
        if (i + 4 <= count && turnFour(&source.features[i], &turned[i])) {
            i += 4;
        } else {
            turned[i] = turn(source.features[i], source);
            ++i;
        }
    }
}

}  // namespace

cv::Rect cropToFeatures(ShapeTemplateLevels& levels) {
    FeatureBox box;
    for (const ShapeTemplate& level : levels) box.include(level);
    box.crop(levels);
    return box.rect();
}

ShapeTemplateLevels rotateTemplate(const ShapeTemplateLevels& source, float theta, cv::Point2f centre) {
    const double radians = static_cast<double>(-theta / halfCircle) * pi;
    Turn turn{std::cos(radians), std::sin(radians), theta, centre};
    FeatureBox box;
    ShapeTemplateLevels rotated(source.size());
    for (std::size_t l = 0; l < source.size(); ++l) {
        if (l > 0) turn.centre /= 2.0f;
        rotated[l].pyramidLevel = static_cast<int>(l);
        turnFeatures(source[l], turn, rotated[l].features);
        box.include(rotated[l]);
    }
    box.crop(rotated);
    return rotated;
}

}  // namespace line2Dup
