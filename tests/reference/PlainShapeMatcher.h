#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <utility>
#include <vector>

#include "Includes/line2Dup.h"
#include "tests/reference/PlainGradientFeatures.h"

namespace Quorvane::Reference {

/// The eight response maps by the table of 256 responses.
std::vector<cv::Mat> ComputeResponseMaps(const cv::Mat& spread);

/// OR over the block of T by T pixels to the right of and below each pixel.
cv::Mat SpreadOrientations(const cv::Mat& source, int T);

cv::Mat Linearize(const cv::Mat& responseMap, int T);

/// Sums of responses at all positions, position by position; CV_16U, for `fewFeatures` by the rules of the byte
/// routine.
cv::Mat SimilarityEverywhere(const std::vector<cv::Mat>& linearMemories, const line2Dup::ShapeTemplate& templ,
                             cv::Size size, int T, bool fewFeatures);

/// The window around a centre, likewise; what lies outside the maps is 0.
cv::Mat SimilarityAround(const std::vector<cv::Mat>& linearMemories, const line2Dup::ShapeTemplate& templ,
                         cv::Size size, int T, cv::Point centre);

/// A template turned about a centre and cropped.
line2Dup::ShapeTemplateLevels RotateTemplate(const line2Dup::ShapeTemplateLevels& source, float theta,
                                             cv::Point2f centre);

/// What a search needs to know of a detector.
struct MatcherSettings {
    std::vector<int> levelSteps;
    float weakThreshold;
};
using TemplateClass = std::pair<std::string, std::vector<line2Dup::ShapeTemplateLevels>>;

/// All templates of a detector's class.
TemplateClass TemplatesOf(const line2Dup::Detector& detector, const std::string& classId, int count);

/// The whole search by whole response maps: every template summed at every position of the coarsest level with the
/// library's four similarity routines, every hit refined in its own window.
std::vector<line2Dup::MatchHit> MatchShapes(const MatcherSettings& settings, const std::vector<TemplateClass>& classes,
                                            const cv::Mat& source, float threshold, const cv::Mat& mask);

}  // namespace Quorvane::Reference
