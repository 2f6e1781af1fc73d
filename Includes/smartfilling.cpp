// Training enumerates some 1800 rotations of the template image, but after the first one only features are rotated: a
// rotated image of the others would be seen by nobody and is not made. In matching, hits of one job share one outline,
// so its rectangle is found once.

#include "Includes/smartfilling.h"

#include <cmath>
#include <exception>
#include <iostream>
#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <utility>

#include "Includes/StageTimer.h"

namespace Quorvane {

namespace {

using line2Dup::Detector;
using line2Dup::MatchHit;
using line2Dup::ShapeTemplateLevels;
using line2Dup::StageTimer;

const std::string classId = "test";

constexpr int noTemplate = -1;

/// Share of white above which a mask made for training is turned around.
constexpr double trainingWhiteRatio = 0.6;

/// The matcher wants whole blocks of this many pixels.
constexpr int block = 16;

// Hits of boxes that overlap by more than this are one copy; every score counts and none is left out.
constexpr float overlapLimit = 0.4f;
constexpr float anyScore = 0.0f;
constexpr float fixedThreshold = 1.0f;
constexpr int allBoxes = 0;

constexpr int dotRadius = 1;
const cv::Scalar dotColour(0, 0, 255);

cv::Mat GrayOf(const cv::Mat& image) {
    if (image.channels() != 3 && image.channels() != 4) return image.clone();
    cv::Mat gray;
    cv::cvtColor(image, gray, image.channels() == 3 ? cv::COLOR_BGR2GRAY : cv::COLOR_BGRA2GRAY);
    return gray;
}

cv::Mat WholeMask(const cv::Mat& image) { return {image.size(), CV_8U, cv::Scalar(255)}; }

/// Towards zero. What an int cannot hold becomes its lowest value.
int Truncated(float value) {
    constexpr float limit = 2147483648.0f;  // 2^31
    return value >= -limit && value < limit ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

cv::Mat ImageOf(const ShapeVariantSet& set, const ShapeVariant& variant) {
    return ShapeVariantSet::RotateImage(set.src, variant.angle, variant.scale);
}

/// Trains a template from the image of one variant; its id, or -1 if there are too few features.
int AddFromImage(const ShapeVariantSet& set, const ShapeVariant& variant, const cv::Mat& turned, Detector& detector) {
    cv::Mat turnedMask;
    if (!set.mask.empty()) turnedMask = ShapeVariantSet::RotateImage(set.mask, variant.angle, variant.scale) > 0;
    return detector.addShapeTemplate(turned, classId, turnedMask, 0);
}

/// Trains templates one variant after the other: from its own image, or from the first one's features.
class Training {
public:
    Training(const ShapeVariantSet& set, Detector& detector, bool rotateFromFirst)
        : set_(set), detector_(detector), rotateFromFirst_(rotateFromFirst) {}

    /// Whether the next template is extracted from the image of its variant.
    bool NeedsImage() const { return extract_; }

    /// The id of the new template. Throws `std::runtime_error` if it could not be extracted.
    int Add(const ShapeVariant& variant, const cv::Mat& image) {
        if (!extract_) {
            const cv::Point2f centre(static_cast<float>(set_.src.cols) * 0.5f,
                                     static_cast<float>(set_.src.rows) * 0.5f);
            return detector_.addRotatedTemplate(classId, firstId_, variant.angle - firstAngle_, centre);
        }
        const int id = AddFromImage(set_, variant, image, detector_);
        const ShapeTemplateLevels& levels = detector_.templateLevels(classId, id);
        if (levels.empty() || levels.front().features.empty()) {
            throw std::runtime_error("first template has no features");
        }
        firstAngle_ = variant.angle;
        firstId_ = id;
        extract_ = !rotateFromFirst_;
        return id;
    }

private:
    const ShapeVariantSet& set_;
    Detector& detector_;
    bool rotateFromFirst_;
    bool extract_ = true;
    float firstAngle_ = 0.0f;
    int firstId_ = noTemplate;
};

/// Where a hit puts the frame of the template image: the position of the hit is that of the feature box, which is
/// `tlX`, `tlY` away from the image's corner.
struct HitFrame {
    HitFrame(const MatchHit& hit, const Detector& detector) {
        const line2Dup::ShapeTemplate& finest = detector.templateLevels(classId, hit.templateId).at(0);
        x_ = hit.subX - static_cast<float>(finest.tlX);
        y_ = hit.subY - static_cast<float>(finest.tlY);
    }

    cv::Point2f At(cv::Point2f inTemplate) const { return {x_ + inTemplate.x, y_ + inTemplate.y}; }

private:
    float x_;
    float y_;
};

/// The upright size of a variant's outline. Variants of one training have the same outline, so that the last one is
/// remembered.
class OutlineSizes {
public:
    cv::Size Of(const ShapeVariant& variant) {
        if (last_ == nullptr || variant.contour != *last_) {
            size_ = cv::minAreaRect(variant.contour).size;
            last_ = &variant.contour;
        }
        return {Truncated(size_.width * variant.scale), Truncated(size_.height * variant.scale)};
    }

private:
    const std::vector<cv::Point>* last_ = nullptr;
    cv::Size2f size_;
};

/// The hits that stay when of overlapping boxes only the best does, best first. Boxes are anchored at the target and
/// have the size of the unrotated outline: they serve for nothing else.
std::vector<int> Suppress(const std::vector<MatchHit>& hits, const Detector& detector,
                          const std::vector<ShapeVariant>& variants) {
    std::vector<cv::Rect> boxes;
    std::vector<float> scores;
    boxes.reserve(hits.size());
    scores.reserve(hits.size());
    OutlineSizes sizes;
    for (const MatchHit& hit : hits) {
        const ShapeVariant& variant = variants.at(static_cast<std::size_t>(hit.templateId));
        const cv::Point2f target = HitFrame(hit, detector).At(variant.targetOffset);
        boxes.emplace_back(cv::Point(Truncated(target.x), Truncated(target.y)), sizes.Of(variant));
        scores.push_back(hit.similarity);
    }
    std::vector<int> indices;
    cv_dnn::NMSFast_(boxes, scores, anyScore, overlapLimit, fixedThreshold, allBoxes, indices, BoxOverlap);
    return indices;
}

/// The image without what exceeds whole blocks at its right and its lower edge. Filters look beyond the edges of a mere
/// part of an image, so that it has to be copied, unless it is none.
cv::Mat WholeBlocks(const cv::Mat& image) {
    const cv::Mat part = image(cv::Rect(0, 0, image.cols / block * block, image.rows / block * block));
    return part.isSubmatrix() ? part.clone() : part;
}

FillingMatch MatchOf(const MatchHit& hit, const Detector& detector, const ShapeVariant& variant) {
    const HitFrame frame(hit, detector);
    const cv::Point2f target =
        RotatePoint(frame.At(variant.targetOffset), frame.At(variant.imageCentre), static_cast<double>(-variant.angle));
    return {target.x, target.y, variant.angle, variant.scale, hit.templateId, hit.similarity};
}

}  // namespace

cv::Point2f RotatePoint(cv::Point2f point, cv::Point2f centre, double angleDegrees) {
    const float dx = point.x - centre.x;
    const float dy = point.y - centre.y;
    const double radians = angleDegrees * CV_PI / 180.0;
    const double x = std::cos(radians) * dx - std::sin(radians) * dy + centre.x;
    const double y = std::cos(radians) * dy + std::sin(radians) * dx + centre.y;
    return {static_cast<float>(x), static_cast<float>(y)};
}

cv::Mat SmartFilling::CreateMask(const cv::Mat& mRotated_img, bool equalise, int morphRadius,
                                 double whiteRatioLimit) const {
    if (mRotated_img.empty()) {
        cv::error(cv::Error::StsAssert, "!mRotated_img.empty()", "SmartFilling::CreateMask", "Includes\\smartfilling",
                  __LINE__);
    }
    cv::Mat gray = GrayOf(mRotated_img);
    if (equalise) cv::equalizeHist(gray, gray);
    cv::Mat mask;
    cv::threshold(gray, mask, 0.0, 255.0, cv::THRESH_OTSU);
    if (static_cast<double>(cv::countNonZero(mask)) / static_cast<double>(mask.total()) > whiteRatioLimit) {
        cv::bitwise_not(mask, mask);
    }
    if (morphRadius > 0) {
        const int side = 2 * morphRadius + 1;
        const cv::Mat disc = cv::getStructuringElement(cv::MORPH_ELLIPSE, {side, side});
        cv::morphologyEx(mask, mask, cv::MORPH_CLOSE, disc, {-1, -1}, 1, cv::BORDER_CONSTANT);
        cv::dilate(mask, mask, disc, {-1, -1}, 1, cv::BORDER_CONSTANT);
    }
    if (mask.type() != CV_8U) mask.convertTo(mask, CV_8U);
    return mask;
}

std::vector<ShapeVariant> SmartFilling::TrainTemplateFromMat(const cv::Mat& image, Detector& detector,
                                                             bool rotateFromFirst, bool autoMask,
                                                             cv::Point2f targetOffset, std::vector<float> angleRange,
                                                             float angleStep, std::vector<float> scaleRange,
                                                             float scaleStep, int morphRadius) const {
    StageTimer timer;
    ShapeVariantSet set(image, autoMask ? CreateMask(image, true, morphRadius, trainingWhiteRatio) : WholeMask(image));
    set.angleRange = std::move(angleRange);
    set.angleStep = angleStep;
    set.scaleRange = std::move(scaleRange);
    set.scaleStep = scaleStep;
    set.Produce(targetOffset);

    std::vector<ShapeVariant> trained;
    trained.reserve(set.variants.size());
    Training training(set, detector, rotateFromFirst);
    for (ShapeVariant& variant : set.variants) {
        // An image that cannot be turned is the caller's to hear of; failures of the training are not.
        const cv::Mat turned = training.NeedsImage() ? ImageOf(set, variant) : cv::Mat();
        try {
            if (training.Add(variant, turned) != noTemplate) trained.push_back(std::move(variant));
        } catch (const std::exception& failure) {
            std::cerr << "[异常] 模板添加失败，angle = " << variant.angle << "，错误信息: " << failure.what()
                      << std::endl;
            return {};
        }
    }
    timer.elapsed("");
    std::cout << " TrainTemplateFromMat 完成" << std::endl << std::endl;
    return trained;
}

std::vector<cv::Point2f> SmartFilling::ExtractTemplatePoints(const cv::Mat& image, cv::Point2f targetOffset) const {
    constexpr int manyFeatures = 800;
    Detector detector(manyFeatures, {1, 2}, 30.0f, 60.0f);
    ShapeVariantSet set(image, WholeMask(image));
    set.angleRange = {0.0f};
    set.angleStep = 1.0f;
    set.scaleRange = {1.0f};
    set.scaleStep = 0.02f;
    set.Produce(targetOffset);

    const ShapeVariant& variant = set.variants.front();
    const int id = AddFromImage(set, variant, ImageOf(set, variant), detector);
    const ShapeTemplateLevels& levels = detector.templateLevels(classId, id);
    if (levels.empty()) return {};
    const line2Dup::ShapeTemplate& finest = levels.front();
    std::cout << finest.features.size() << std::endl;
    std::vector<cv::Point2f> points;
    points.reserve(finest.features.size());
    for (const line2Dup::GradientFeature& feature : finest.features) {
        points.emplace_back(static_cast<float>(feature.x + finest.tlX), static_cast<float>(feature.y + finest.tlY));
    }
    std::cout << points.size() << std::endl;
    return points;
}

std::vector<FillingMatch> SmartFilling::MatchTemplates(const cv::Mat& image, Detector& detector,
                                                       const std::vector<ShapeVariant>& variants,
                                                       int similarityPercent) const {
    const cv::Mat whole = WholeBlocks(image);
    std::cout << "匹配图尺寸: "
              << "[" << whole.cols << " x " << whole.rows << "]" << std::endl;
    StageTimer timer;
    const std::vector<MatchHit> hits =
        detector.match(whole, static_cast<float>(similarityPercent), {classId}, cv::Mat());
    timer.elapsed("");

    std::vector<FillingMatch> matches;
    for (const int index : Suppress(hits, detector, variants)) {
        const MatchHit& hit = hits[static_cast<std::size_t>(index)];
        matches.push_back(MatchOf(hit, detector, variants[static_cast<std::size_t>(hit.templateId)]));
    }
    return matches;
}

void SmartFilling::DrawMatchedShapes(std::vector<cv::Point2f> points, cv::Point2f targetCentre,
                                     const std::vector<FillingMatch>& matches, cv::Mat& result) const {
    if (points.empty()) return;
    std::vector<cv::Point2f> turned;
    for (const FillingMatch& match : matches) {
        cv::transform(points, turned, cv::getRotationMatrix2D(targetCentre, static_cast<double>(match.angle), 1.0));
        const cv::Point2f shift(match.x - targetCentre.x, match.y - targetCentre.y);
        for (const cv::Point2f& point : turned) {
            cv::circle(result, cv::Point(point + shift), dotRadius, dotColour, cv::FILLED, cv::LINE_8);
        }
    }
}

}  // namespace Quorvane
