#pragma once

#include <opencv2/core/types.hpp>

#include "Includes/ShapeTemplate.h"

namespace line2Dup {

/// Makes the features of all levels relative to one common box around them and sets the levels' sizes and origins.
/// Returns the box in coordinates of the finest level. Its left and top are even, so that a position at one level
/// translates to the next by the factor 2; a negative odd one deliberately stays as it is. A template without any
/// feature gets an empty box.
cv::Rect cropToFeatures(ShapeTemplateLevels& levels);

/// The template turned by `theta` degrees about `centre` (pixels of the finest image), cropped. It has the features of
/// `source` in their order; some may lie outside the image that the source was trained from.
ShapeTemplateLevels rotateTemplate(const ShapeTemplateLevels& source, float theta, cv::Point2f centre);

}  // namespace line2Dup
