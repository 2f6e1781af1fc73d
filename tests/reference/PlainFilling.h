#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Includes/smartfilling.h"
#include "tests/reference/PlainShapeMatcher.h"

namespace Quorvane::Reference {

/// A template image trained at all angles: variant and template with the same index belong together.
struct TrainedTemplates {
    std::vector<ShapeVariant> variants;
    TemplateClass templates{"test", {}};
};

/// Training of the filling job, step by step: the image and its mask are rotated for every angle from 0 to 360 in steps
/// of 0.2 degrees, whether that is used or not. Empty where the image has too few features.
TrainedTemplates TrainAllAngles(const cv::Mat& image, cv::Point2f targetOffset);

/// The search for the trained templates, with whole response maps and one rectangle per hit.
std::vector<FillingMatch> MatchTemplates(const cv::Mat& image, const TrainedTemplates& trained, int similarityPercent);

/// What a host gives to the filling job.
struct FillingJob {
    cv::Point2f centre;
    std::vector<cv::Point2f> shape;
    double similarity = 0.8;
};

/// The job after the template was cut out, step by step: matches, their transformed shapes, and the drawing.
struct FillingOutcome {
    std::vector<FillingMatch> matches;
    std::vector<std::vector<cv::Point2f>> shapes;
    cv::Mat destination;
};

/// The template image around the point `seed` of the object's colour and the place of its corner in the image.
cv::Mat CutTemplate(const cv::Mat& image, cv::Point seed, cv::Rect& box);

/// The whole job from the point of the object's dominant colour on.
FillingOutcome FillCopies(const cv::Mat& image, cv::Point seed, const FillingJob& job);

}  // namespace Quorvane::Reference
