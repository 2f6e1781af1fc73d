#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>
#include <vector>

#include <gtest/gtest.h>

#include "Includes/Detector.h"
#include "tests/Includes/MatcherScenes.h"
#include "tests/reference/PlainShapeMatcher.h"
#include "tests/support/RandomInput.h"

namespace Quorvane::TestSupport {

/// Thresholds of the gradients, and the plain search that goes with them.
constexpr float weakGradient = 30.0f;
constexpr float strongGradient = 60.0f;
const Reference::MatcherSettings plainSettings{{1, 2}, weakGradient};

/// Searches by `Detector::match`, and expects that this takes the fast road.
std::vector<line2Dup::MatchHit> SearchFast(const line2Dup::Detector& detector,
                                           const std::vector<Reference::TemplateClass>& classes, const cv::Mat& scene,
                                           float threshold);

/// Adds the number of hits to `hits`, for tests to show that their scenes are worth something.
testing::AssertionResult FindsWhatThePlainSearchFinds(const line2Dup::Detector& detector,
                                                      const std::vector<Reference::TemplateClass>& classes,
                                                      const cv::Mat& scene, float threshold, std::size_t& hits);

/// The same for templates that no training makes, searched for by the fast search itself.
testing::AssertionResult FindsHandmadeAsThePlainSearchDoes(const std::vector<line2Dup::ShapeTemplateLevels>& templates,
                                                           const cv::Mat& scene, float threshold, std::size_t& hits);

/// Multiples of 16, so that both levels fit the grid.
cv::Size RandomSize(RandomInput& random, int least, int most);

/// Any size that the fast search takes, with an odd width or height in every third on average.
cv::Size RandomSearchableSize(RandomInput& random, int least, int most);

std::vector<Pose> RandomPoses(RandomInput& random, int count, cv::Size size);

/// Blurred noise over the full range of brightness.
cv::Mat Noise(RandomInput& random, cv::Size size);

/// Slanting stripes: a template taken from them fits in many places, all along a stripe.
cv::Mat Stripes(RandomInput& random, cv::Size size);

/// A level of `count` features scattered from `least` to `most` in both directions; its extent need not be theirs.
line2Dup::ShapeTemplate ScatteredLevel(RandomInput& random, int pyramidLevel, int count, cv::Size extent, int least,
                                       int most);

}  // namespace Quorvane::TestSupport
