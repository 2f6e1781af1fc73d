#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Includes/ColorGradient.h"
#include "Includes/ShapeTemplate.h"

namespace line2Dup {

/// One place at which a template was found.
struct MatchHit {
    int x;  ///< Position of the template's crop origin in the finest image, pixels.
    int y;
    float similarity;  ///< Percent, 100 is perfect.
    std::string classId;
    int templateId;
    float subX;  ///< The same position to sub-pixel precision; 0 until a refinement has set it.
    float subY;
};

/// More similar hits come first; of equally similar ones those of the lower template id.
bool operator<(const MatchHit& a, const MatchHit& b);
/// Hits at the same place with the same similarity and class are duplicates; template and sub-pixel position do not
/// count.
bool operator==(const MatchHit& a, const MatchHit& b);

/// Templates grouped by class, and the search for them.
///
/// `match` scores every template over the whole image at the coarsest pyramid level and refines each hit level by level
/// in a small window. A `Detector` serves one thread at a time; `match` does not change it.
class Detector {
public:
    /// `levelSteps` are the steps of the position grid of each pyramid level in pixels, finest first; their number is
    /// that of the levels. The thresholds and the feature count are those of `ColorGradient`.
    Detector(int featureCount, std::vector<int> levelSteps, float weakThreshold, float strongThreshold);

    /// Trains a template from an image. `objectMask` (CV_8U, of the image's size, may be empty) tells where features
    /// may lie; `overrideFeatureCount` above 0 replaces the feature count, which halves from level to level. Returns
    /// the template's id in its class, or -1 if the image has too few features at any level, of which lines on standard
    /// output tell. A mask of another size raises `cv::Exception`. Either way the class stays, if new without
    /// templates.
    int addShapeTemplate(cv::Mat source, const std::string& classId, cv::Mat objectMask, int overrideFeatureCount);

    /// Trains a template by rotating the features of another one by `theta` degrees about `centre` (pixels of the
    /// finest image; positive turns anti-clockwise on the screen). No image is touched. Returns the new id. A class or
    /// an id that does not exist raises `std::out_of_range`.
    int addRotatedTemplate(const std::string& classId, int sourceId, float theta, cv::Point2f centre);

    /// All places at which templates of the given classes are found with a similarity of about `threshold` percent or
    /// more, best first, without duplicates. No class ids mean all classes; unknown ones are skipped.
    ///
    /// The similarity must be above the threshold at the coarsest level and at least the threshold at the finer ones.
    /// `source` has one channel or three; `mask` (CV_8U, may be empty) tells where the image counts. At every level the
    /// number of pixels must be a multiple of 16, and width and height multiples of the level's step. Prints the time
    /// of its two stages to standard output.
    ///
    /// Raises `cv::Exception` if the sizes are not as told or a template has 8192 features or more.
    std::vector<MatchHit> match(cv::Mat source, float threshold, const std::vector<std::string>& classIds,
                                cv::Mat mask) const;

    /// A trained template. If there is no such class or id, a line on standard error says so and the result is empty.
    const ShapeTemplateLevels& templateLevels(const std::string& classId, int templateId) const;

private:
    std::shared_ptr<ColorGradient> modality_;
    int pyramidLevels_;
    std::vector<int> levelSteps_;
    std::map<std::string, std::vector<ShapeTemplateLevels>> classTemplates_;
};

}  // namespace line2Dup
