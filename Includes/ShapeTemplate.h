#pragma once

#include <vector>

namespace line2Dup {

/// One point of a shape: where it is and which direction its gradient has.
struct GradientFeature {
    int x;        ///< Column; relative to the template's crop origin once the template is cropped.
    int y;        ///< Row, likewise.
    int label;    ///< Orientation label, 0 to 7.
    float theta;  ///< Exact direction in degrees.
};

/// A feature that may be chosen for a template.
struct FeatureCandidate {
    GradientFeature feature;
    float score;  ///< Squared gradient magnitude at the pixel.
};

/// The features of one template at one pyramid level.
struct ShapeTemplate {
    int width;   ///< Extent of the features' box in pixels of this level; -1 before the template is cropped.
    int height;  ///< Likewise.
    int tlX;     ///< Crop origin in the coordinates of this level's image.
    int tlY;     ///< Likewise.
    int pyramidLevel;
    std::vector<GradientFeature> features;
};

/// One template: its features at every pyramid level, finest first.
using ShapeTemplateLevels = std::vector<ShapeTemplate>;

}  // namespace line2Dup
