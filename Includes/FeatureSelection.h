#pragma once

#include <cstddef>
#include <vector>

#include "Includes/ColorGradient.h"
#include "Includes/ShapeTemplate.h"

namespace line2Dup {

/// The pixels that can be features: local maxima of the magnitude in a 5 by 5 window that lies wholly in the image,
/// above the strong threshold, with an orientation, and inside the mask less its outermost pixel. In raster order.
std::vector<FeatureCandidate> findCandidates(const ColorGradientPyramid& pyramid);

/// Chooses about `wanted` of the candidates, strong ones first and far from each other. Returns false if there are four
/// or fewer although more are wanted, with a line on standard output. A template without features is of no use, so none
/// wanted counts as one wanted.
bool selectFeatures(std::vector<FeatureCandidate> candidates, std::size_t wanted,
                    std::vector<GradientFeature>& features);

/// The choice itself. `candidates` are sorted by descending score. The spacing in pixels is widened until fewer than
/// `wanted` features fit, then relaxed by one pixel at a time, each pass adding all that fit, until at least `wanted`
/// are chosen or the spacing falls below 3. The result may therefore have more or fewer features than wanted.
///
/// A first candidate always fits, so fewer than one can never be reached by widening: if one feature is wanted (or
/// none), the first candidate is the result.
void selectScattered(const std::vector<FeatureCandidate>& candidates, std::vector<GradientFeature>& features,
                     std::size_t wanted, float spacing);

}  // namespace line2Dup
