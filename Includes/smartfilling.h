#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

#include "Includes/Detector.h"
#include "Includes/ShapeVariantSet.h"
#include "Includes/Suppression.h"

namespace Quorvane {

/// One accepted copy of the target.
struct FillingMatch {
    float x;  ///< The target in the image, pixels.
    float y;
    float angle;  ///< Of the copy against the template, degrees, positive is counter-clockwise.
    float scale;
    int templateId;
    float similarity;  ///< Percent.
};

/// The point turned about `centre` by `angleDegrees`, from the x axis towards the y axis: clockwise as one looks at an
/// image, whose y axis points down.
cv::Point2f RotatePoint(cv::Point2f point, cv::Point2f centre, double angleDegrees);

/// The front end of the shape matcher for the filling job: trains it with all rotations of one template image and turns
/// its hits in a camera image into places of the target. The matcher's class is always "test".
///
///     line2Dup::Detector detector(64, {1, 2}, 30.0f, 60.0f);
///     const SmartFilling filling;
///     const auto variants = filling.TrainTemplateFromMat(part, detector, true, true, target, {0.0f, 360.0f}, 0.2f,
///                                                        {1.0f}, 0.0f, 6);
///     for (const FillingMatch& match : filling.MatchTemplates(image, detector, variants, 80)) { ... }
///
/// Notices go to standard output and standard error. Exceptions of OpenCV pass through unless told otherwise.
class SmartFilling {
public:
    /// The smaller part of the image by Otsu's threshold, CV_8U of 0 and 255: bright pixels, or the dark ones if the
    /// bright ones are more than `whiteRatioLimit` of all. `equalise` spreads the histogram first. With `morphRadius`
    /// above 0 the mask is closed and then dilated by a disc of that radius in pixels.
    /// An empty image raises `cv::Error::StsAssert`.
    cv::Mat CreateMask(const cv::Mat& mRotated_img, bool equalise, int morphRadius, double whiteRatioLimit) const;

    /// Trains the detector with every rotation and scale of the ranges (see `ShapeVariantSet`) and returns the variant
    /// of each template: the position in the list is the template's id. With `rotateFromFirst` features are extracted
    /// once and rotated for all other variants (scales are then not followed); without it each variant is trained from
    /// its own image. Features come from the mask of `CreateMask` (histogram spread, limit 0.6) or, without `autoMask`,
    /// from the whole image. `targetOffset` is the target in the image.
    ///
    /// If a template cannot be trained, a line on standard error says so and the list is empty.
    std::vector<ShapeVariant> TrainTemplateFromMat(const cv::Mat& image, line2Dup::Detector& detector,
                                                   bool rotateFromFirst, bool autoMask, cv::Point2f targetOffset,
                                                   std::vector<float> angleRange, float angleStep,
                                                   std::vector<float> scaleRange, float scaleStep,
                                                   int morphRadius) const;

    /// The places in the image of up to about 800 features; their number is printed to standard output, twice.
    std::vector<cv::Point2f> ExtractTemplatePoints(const cv::Mat& image, cv::Point2f targetOffset) const;

    /// Finds the copies of the trained template, best first, of overlapping ones the best. The image is cut at the
    /// right and the bottom to multiples of 16 pixels. `variants` are what training returned.
    std::vector<FillingMatch> MatchTemplates(const cv::Mat& image, line2Dup::Detector& detector,
                                             const std::vector<ShapeVariant>& variants, int similarityPercent) const;

    /// Draws the points as red dots once per match: turned about `targetCentre` by the match's angle, and shifted from
    /// there to the match.
    void DrawMatchedShapes(std::vector<cv::Point2f> points, cv::Point2f targetCentre,
                           const std::vector<FillingMatch>& matches, cv::Mat& result) const;
};

}  // namespace Quorvane
