#include "tests/reference/PlainFilling.h"

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "algorithms/TargetExtraction.h"
#include "tests/reference/PlainTargetExtraction.h"

namespace Quorvane::Reference {

namespace {

const MatcherSettings settings{{1, 2}, 30.0f};

cv::Mat CopyOf(const cv::Mat& image) {
    cv::Mat copy = cv::Mat::zeros(image.size(), image.type());
    image.copyTo(copy(cv::Rect(0, 0, image.cols, image.rows)));
    return copy;
}

cv::Mat Rotated(const cv::Mat& image, float angle) {
    const cv::Point2f middle(static_cast<float>(image.cols * 0.5), static_cast<float>(image.rows * 0.5));
    const cv::Mat motion = cv::getRotationMatrix2D(middle, static_cast<double>(angle), 1.0);
    cv::Mat rotated;
    cv::warpAffine(image, rotated, motion, image.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar());
    return rotated;
}

cv::Point2f Turned(cv::Point2f point, cv::Point2f centre, double degrees) {
    const double a = degrees * CV_PI / 180.0;
    const float dx = point.x - centre.x;
    const float dy = point.y - centre.y;
    return {static_cast<float>(std::cos(a) * dx - std::sin(a) * dy + centre.x),
            static_cast<float>(std::cos(a) * dy + std::sin(a) * dx + centre.y)};
}

std::vector<cv::Point> LargestOf(const std::vector<std::vector<cv::Point>>& contours) {
    std::size_t largest = 0;
    double area = 0.0;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        if (cv::contourArea(contours[i]) > area) {
            area = cv::contourArea(contours[i]);
            largest = i;
        }
    }
    return contours[largest];
}

}  // namespace

TrainedTemplates TrainAllAngles(const cv::Mat& image, cv::Point2f targetOffset) {
    const cv::Mat src = CopyOf(image);
    const cv::Mat mask = CopyOf(SmartFilling().CreateMask(image, true, 6, 0.6));
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(mask, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    const cv::Point2f middle(static_cast<float>(src.cols * 0.5), static_cast<float>(src.rows * 0.5));

    TrainedTemplates trained;
    for (float angle = 0.0f; angle <= 360.0f + 1e-5f; angle += 0.2f) {
        ShapeVariant variant{angle, 1.0f, {}, {-1.0f, -1.0f}, {-1.0f, -1.0f}};
        if (!contours.empty()) {
            variant.contour = LargestOf(contours);
            variant.targetOffset = targetOffset;
            variant.imageCentre = middle;
        }
        const cv::Mat rotated = Rotated(src, angle);
        if (trained.variants.empty()) {
            line2Dup::Detector detector(64, settings.levelSteps, settings.weakThreshold, 60.0f);
            const int id = detector.addShapeTemplate(rotated, "test", Rotated(mask, angle) > 0, 0);
            if (id < 0) return {};
            trained.templates.second.push_back(detector.templateLevels("test", id));
        } else {
            trained.templates.second.push_back(
                RotateTemplate(trained.templates.second.front(), angle - trained.variants.front().angle, middle));
        }
        trained.variants.push_back(variant);
    }
    return trained;
}

std::vector<FillingMatch> MatchTemplates(const cv::Mat& image, const TrainedTemplates& trained, int similarityPercent) {
    const cv::Mat whole = CopyOf(image)(cv::Rect(0, 0, image.cols - image.cols % 16, image.rows - image.rows % 16));
    const auto hits =
        MatchShapes(settings, {trained.templates}, whole.clone(), static_cast<float>(similarityPercent), cv::Mat());
    std::vector<cv::Rect> boxes;
    std::vector<float> scores;
    for (const line2Dup::MatchHit& hit : hits) {
        const auto id = static_cast<std::size_t>(hit.templateId);
        const ShapeVariant& v = trained.variants[id];
        const line2Dup::ShapeTemplate& t = trained.templates.second[id][0];
        const cv::RotatedRect outline = cv::minAreaRect(v.contour);
        boxes.emplace_back(static_cast<int>(hit.subX - static_cast<float>(t.tlX) + v.targetOffset.x),
                           static_cast<int>(hit.subY - static_cast<float>(t.tlY) + v.targetOffset.y),
                           static_cast<int>(outline.size.width * v.scale),
                           static_cast<int>(outline.size.height * v.scale));
        scores.push_back(hit.similarity);
    }
    std::vector<int> indices;
    cv_dnn::NMSFast_(boxes, scores, 0.0f, 0.4f, 1.0f, 0, indices, BoxOverlap);

    std::vector<FillingMatch> matches;
    for (const int index : indices) {
        const line2Dup::MatchHit& hit = hits[static_cast<std::size_t>(index)];
        const auto id = static_cast<std::size_t>(hit.templateId);
        const ShapeVariant& v = trained.variants[id];
        const float x = hit.subX - static_cast<float>(trained.templates.second[id][0].tlX);
        const float y = hit.subY - static_cast<float>(trained.templates.second[id][0].tlY);
        const cv::Point2f position =
            Turned({x + v.targetOffset.x, y + v.targetOffset.y}, {x + v.imageCentre.x, y + v.imageCentre.y}, -v.angle);
        matches.push_back({position.x, position.y, v.angle, v.scale, hit.templateId, hit.similarity});
    }
    return matches;
}

cv::Mat CutTemplate(const cv::Mat& image, cv::Point seed, cv::Rect& box) {
    return CropContourRegion(image, ExpandContour(image, FindColourRegion(image, seed, 10.0, 8, 20), 5), true, box);
}

FillingOutcome FillCopies(const cv::Mat& image, cv::Point seed, const FillingJob& job) {
    FillingOutcome outcome;
    outcome.destination = image.clone();
    cv::Rect box;
    const cv::Mat part = CutTemplate(image, seed, box);
    const cv::Point2f offset(job.centre.x - static_cast<float>(box.x), job.centre.y - static_cast<float>(box.y));
    SmartFilling().ExtractTemplatePoints(part, offset);
    outcome.matches = MatchTemplates(image, TrainAllAngles(part, offset), static_cast<int>(job.similarity * 100.0));

    for (const FillingMatch& match : outcome.matches) {
        std::vector<cv::Point2f> turned;
        cv::transform(job.shape, turned, cv::getRotationMatrix2D(job.centre, match.angle, 1.0));
        for (const cv::Point2f& point : turned) {
            const cv::Point2f dot(point.x + (match.x - job.centre.x), point.y + (match.y - job.centre.y));
            cv::circle(outcome.destination, cv::Point(cvRound(dot.x), cvRound(dot.y)), 1, cv::Scalar(0, 0, 255), -1);
        }
    }
    for (const FillingMatch& match : outcome.matches) {
        const std::vector<cv::Point2f> shape =
            TransformShape(job.shape, {match.x, match.y}, static_cast<double>(match.angle),
                           {match.x - job.centre.x, match.y - job.centre.y});
        for (std::size_t i = 0; i < shape.size(); ++i) {
            const cv::Point2f& from = shape[i];
            const cv::Point2f& to = shape[(i + 1) % shape.size()];
            const cv::Point2f gap(-1.0f, -1.0f);
            if (from == gap || to == gap) continue;
            cv::line(outcome.destination, {cvRound(from.x), cvRound(from.y)}, {cvRound(to.x), cvRound(to.y)},
                     cv::Scalar(0, 0, 0), 2, 8);
        }
        outcome.shapes.push_back(shape);
    }
    return outcome;
}

}  // namespace Quorvane::Reference
