#pragma once

/// `line2Dup`, the shape matcher: finds a trained shape in an image by the directions of its edges.
///
/// An image becomes gradients whose directions are quantised to eight labels (`ColorGradient.h`). A template is a few
/// dozen scattered points of strong gradient with their labels (`ShapeTemplate.h`), which can be rotated without any
/// image. A position of a template scores by how many of its points find their label near them in the image
/// (`ResponseMaps.h`, `Similarity.h`). `Detector` puts these together: templates by class, and a search from a coarse
/// to a fine pyramid level.
///
///     line2Dup::Detector detector(64, {1, 2}, 30.0f, 60.0f);
///     const int upright = detector.addShapeTemplate(picture, "part", mask, 0);
///     for (int degrees = 1; degrees < 360; ++degrees) {
///         detector.addRotatedTemplate("part", upright, static_cast<float>(degrees), centreOfPicture);
///     }
///     for (const line2Dup::MatchHit& hit : detector.match(scene, 80.0f, {"part"}, cv::Mat())) { ... }
///
/// Image coordinates are pixels, x to the right and y down; angles are degrees. Programming errors are `cv::Exception`.

#include "Includes/ColorGradient.h"
#include "Includes/Detector.h"
#include "Includes/FeatureSelection.h"
#include "Includes/OrientationLabel.h"
#include "Includes/ResponseMaps.h"
#include "Includes/ShapeTemplate.h"
#include "Includes/Similarity.h"
#include "Includes/StageTimer.h"
