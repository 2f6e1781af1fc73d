#pragma once

#include <gmock/gmock.h>

#include <opencv2/core.hpp>
#include <string>

#include "Includes/line2Dup.h"

namespace line2Dup {

/// GoogleTest prints hits and features with these.
inline void PrintTo(const GradientFeature& feature, std::ostream* out) {
    *out << "(" << feature.x << ", " << feature.y << "; " << feature.label << ", " << feature.theta << ")";
}

inline void PrintTo(const MatchHit& hit, std::ostream* out) {
    *out << hit.classId << "/" << hit.templateId << " at (" << hit.x << ", " << hit.y << "), (" << hit.subX << ", "
         << hit.subY << "), " << hit.similarity << "%";
}

}  // namespace line2Dup

namespace Quorvane::TestSupport {

/// Runs `action` and expects the matcher's exception with this code, message and function.
template <typename Action>
void ExpectMatcherError(Action action, int code, const std::string& message, const std::string& function) {
    try {
        action();
        ADD_FAILURE() << "nothing was thrown, expected: " << message;
    } catch (const cv::Exception& exception) {
        EXPECT_EQ(exception.code, code);
        EXPECT_EQ(exception.err, message);
        EXPECT_EQ(exception.func, function);
        EXPECT_EQ(exception.file, "Includes\\line2Dup");
    }
}

inline bool SameFeature(const line2Dup::GradientFeature& a, const line2Dup::GradientFeature& b) {
    return a.x == b.x && a.y == b.y && a.label == b.label && a.theta == b.theta;
}

/// The same features in every field, in the same order.
inline testing::AssertionResult SameFeatures(const std::vector<line2Dup::GradientFeature>& actual,
                                             const std::vector<line2Dup::GradientFeature>& expected) {
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure() << actual.size() << " features, expected " << expected.size();
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (!SameFeature(actual[i], expected[i])) {
            return testing::AssertionFailure() << "feature " << i << " is " << testing::PrintToString(actual[i])
                                               << ", expected " << testing::PrintToString(expected[i]);
        }
    }
    return testing::AssertionSuccess();
}

inline testing::AssertionResult SameTemplates(const line2Dup::ShapeTemplateLevels& actual,
                                              const line2Dup::ShapeTemplateLevels& expected) {
    if (actual.size() != expected.size()) return testing::AssertionFailure() << actual.size() << " levels";
    for (std::size_t l = 0; l < expected.size(); ++l) {
        const line2Dup::ShapeTemplate& a = actual[l];
        const line2Dup::ShapeTemplate& e = expected[l];
        if (a.width != e.width || a.height != e.height || a.tlX != e.tlX || a.tlY != e.tlY ||
            a.pyramidLevel != e.pyramidLevel) {
            return testing::AssertionFailure()
                   << "level " << l << ": " << a.width << " x " << a.height << " at (" << a.tlX << ", " << a.tlY
                   << "), expected " << e.width << " x " << e.height << " at (" << e.tlX << ", " << e.tlY << ")";
        }
        const testing::AssertionResult same = SameFeatures(a.features, e.features);
        if (!same) return testing::AssertionFailure() << "level " << l << ": " << same.message();
    }
    return testing::AssertionSuccess();
}

/// The same hits in every field, in the same order.
inline testing::AssertionResult SameHits(const std::vector<line2Dup::MatchHit>& actual,
                                         const std::vector<line2Dup::MatchHit>& expected) {
    for (std::size_t i = 0; i < std::min(actual.size(), expected.size()); ++i) {
        const line2Dup::MatchHit& a = actual[i];
        const line2Dup::MatchHit& e = expected[i];
        if (a.x != e.x || a.y != e.y || a.similarity != e.similarity || a.classId != e.classId ||
            a.templateId != e.templateId || a.subX != e.subX || a.subY != e.subY) {
            return testing::AssertionFailure()
                   << "hit " << i << " is " << testing::PrintToString(a) << ", expected " << testing::PrintToString(e);
        }
    }
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure() << actual.size() << " hits, expected " << expected.size();
    }
    return testing::AssertionSuccess();
}

/// Takes what is written to standard output while it lives away from the test's own output.
class QuietOutput {
public:
    QuietOutput() { testing::internal::CaptureStdout(); }
    ~QuietOutput() { testing::internal::GetCapturedStdout(); }
    QuietOutput(const QuietOutput&) = delete;
    QuietOutput& operator=(const QuietOutput&) = delete;
};

}  // namespace Quorvane::TestSupport
