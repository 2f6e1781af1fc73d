#include "algorithms/IntelligentFilling.h"

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "Includes/line2Dup.h"
#include "Includes/smartfilling.h"
#include "TruncateToInt.h"
#include "algorithms/TargetExtraction.h"
#include "framework/NumberText.h"
#include "geometry/ImageOperators.h"

namespace Quorvane {

namespace {

// The statuses that this algorithm has.
constexpr int cameToItsEnd = 0;
constexpr int targetNotFound = 1;
constexpr int invalidParameters = 3;

// Percentages lie between these two. Nothing is above the greatest, and everything is above a negative one, so that
// figures beyond them find what these do; not-a-number, which nothing can reach, is taken as the greatest.
constexpr double percent = 100.0;
constexpr double belowAllPercentages = -1.0;

/// Half the side in pixels of the square around the marked point that is asked for the object's colour.
constexpr float sampleReach = 15.0f;

// The colour region: how far a colour may be from the object's in Lab, from how many points around the colour sample it
// starts, the side in pixels of the squares it grows by, and the pixels added around it.
constexpr double colourLimit = 10.0;
constexpr int startDirections = 8;
constexpr int squareSide = 20;
constexpr int outlineMargin = 5;

/// A template larger than this share of the image is a region that ran away over the background.
constexpr double largestTemplateShare = 0.5;

// The matcher: features of a template, grid step of each pyramid level, and its two gradient thresholds.
constexpr int featureCount = 64;
const std::vector<int> levelSteps{1, 2};
constexpr float weakThreshold = 30.0f;
constexpr float strongThreshold = 60.0f;

// All angles in degrees, one scale; the radius in pixels by which the template's mask is closed and widened.
const std::vector<float> allAngles{0.0f, 360.0f};
constexpr float angleStep = 0.2f;
const std::vector<float> oneScale{1.0f};
constexpr float noScaleStep = 0.0f;
constexpr int maskRadius = 6;

constexpr int lineWidth = 2;
const cv::Scalar lineColour(0, 0, 0);
/// A point of a list that breaks the line.
const cv::Point2f gap(-1.0f, -1.0f);

/// The parameters of one run.
struct Job {
    int similarityPercent;
    cv::Point2f centre;
    std::vector<double> shapeX;
    std::vector<double> shapeY;
};

/// Towards zero: 0.291 gives 29.
int WholePercent(double fraction) {
    const double percentage = fraction * percent;
    if (!(percentage < percent)) return static_cast<int>(percent);
    return static_cast<int>(std::max(percentage, belowAllPercentages));
}

Job ReadJob(const AlgorithmParameters& parameters) {
    Job job;
    job.similarityPercent = WholePercent(parameters.GetParameter("SimilarityMin").ToDouble());
    job.centre.x = static_cast<float>(parameters.GetParameter("TargetShapeCenter_X").ToDouble());
    job.centre.y = static_cast<float>(parameters.GetParameter("TargetShapeCenter_Y").ToDouble());
    job.shapeX = parameters.GetParameter("TargetShapePoints_X").ToDoubleVec();
    job.shapeY = parameters.GetParameter("TargetShapePoints_Y").ToDoubleVec();
    return job;
}

std::vector<cv::Point2f> PointsOf(const std::vector<double>& x, const std::vector<double>& y) {
    std::vector<cv::Point2f> points;
    points.reserve(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) points.emplace_back(static_cast<float>(x[i]), static_cast<float>(y[i]));
    return points;
}

std::vector<cv::Point> SquareAround(cv::Point2f centre) {
    const int left = TruncateToInt(centre.x - sampleReach);
    const int right = TruncateToInt(centre.x + sampleReach);
    const int top = TruncateToInt(centre.y - sampleReach);
    const int bottom = TruncateToInt(centre.y + sampleReach);
    return {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

/// The object of the given colour as a template image, and its place in the picture.
cv::Mat CutTemplate(const cv::Mat& source, cv::Point colourPoint, cv::Rect& box) {
    const auto region = FindColourRegion(source, colourPoint, colourLimit, startDirections, squareSide, false);
    return CropContourRegion(source, ExpandContour(source, region, outlineMargin), true, box);
}

bool IsTooLarge(const cv::Mat& part, const cv::Mat& source) {
    const double share = static_cast<double>(source.cols) * source.rows * largestTemplateShare;
    return static_cast<double>(part.rows) * part.cols > share;
}

std::vector<FillingMatch> FindCopies(const cv::Mat& source, const cv::Mat& part, cv::Point2f target,
                                     int similarityPercent) {
    const SmartFilling filling;
    // For the two lines with the count of points that it prints.
    filling.ExtractTemplatePoints(part, target);
    line2Dup::Detector detector(featureCount, levelSteps, weakThreshold, strongThreshold);
    const std::vector<ShapeVariant> variants = filling.TrainTemplateFromMat(
        part, detector, true, true, target, allAngles, angleStep, oneScale, noScaleStep, maskRadius);
    return filling.MatchTemplates(source, detector, variants, similarityPercent);
}

void DrawClosedLine(const std::vector<cv::Point2f>& points, cv::Mat& image) {
    for (std::size_t i = 0; i < points.size(); ++i) {
        const cv::Point2f& from = points[i];
        const cv::Point2f& to = points[(i + 1) % points.size()];
        if (from == gap || to == gap) continue;
        cv::line(image, cv::Point(from), cv::Point(to), lineColour, lineWidth, cv::LINE_8);
    }
}

void StoreCopy(std::size_t number, const std::vector<cv::Point2f>& shape, cv::Point2f offset, float angle,
               cv::Point2f centre, AlgorithmResult& results) {
    std::vector<std::string> x;
    std::vector<std::string> y;
    for (const cv::Point2f& point : shape) {
        x.push_back(FixedText(point.x));
        y.push_back(FixedText(point.y));
    }
    const std::string key = "OutputShape_" + std::to_string(number);
    results.SetResult(key + "_X", x);
    results.SetResult(key + "_Y", y);
    results.SetResult(key + "_OffsetX", FixedText(offset.x));
    results.SetResult(key + "_OffsetY", FixedText(offset.y));
    results.SetResult(key + "_OffsetAngle", FixedText(angle));
    results.SetResult(key + "_OffsetRotateCenterX", FixedText(centre.x));
    // Hosts ask for the key with this spelling.
    results.SetResult(key + "_OffsetRotateCentetY", FixedText(centre.y));
}

}  // namespace

IntelligentFilling::IntelligentFilling() {
    parameters_->SetParameter("SimilarityMin", 0.8f);
    parameters_->SetParameter("TargetShapeCenter_X", 0.0);
    parameters_->SetParameter("TargetShapeCenter_Y", 0.0);
    results_->SetResult("AlgorithmErrorMsg", "");
    results_->SetResult("OutputShapeCount", "0");
}

IntelligentFilling::~IntelligentFilling() = default;

int IntelligentFilling::Execute(const cv::Mat& source, cv::Mat& destination) {
    const auto fail = [this](int status, const char* message) {
        results_->SetResult("AlgorithmErrorMsg", message);
        return status;
    };
    destination = source.clone();

    const Job job = ReadJob(*parameters_);
    if (job.shapeX.empty() || job.shapeX.size() != job.shapeY.size()) {
        return fail(invalidParameters,
                    "The number of parameters<vecTargetShapePoints_X> is inconsistent with the number of "
                    "parameters<vecTargetShapePoints_Y>.");
    }
    const std::vector<cv::Point2f> shape = PointsOf(job.shapeX, job.shapeY);

    const cv::Point colourPoint =
        UtilityFunctions::findDominantLABColorPointInContour(source, SquareAround(job.centre));
    if (colourPoint == cv::Point(-1, -1)) return fail(targetNotFound, "Can't find dominant LAB color point!");

    cv::Rect box;
    const cv::Mat part = CutTemplate(source, colourPoint, box);
    if (IsTooLarge(part, source)) return fail(invalidParameters, "Can't find target template!");

    const SmartFilling filling;
    const cv::Point2f target = job.centre - cv::Point2f(box.tl());
    const std::vector<FillingMatch> matches = FindCopies(source, part, target, job.similarityPercent);

    filling.DrawMatchedShapes(shape, job.centre, matches, destination);
    results_->SetResult("OutputShapeCount", std::to_string(matches.size()));
    for (std::size_t i = 0; i < matches.size(); ++i) {
        const FillingMatch& match = matches[i];
        const cv::Point2f place(match.x, match.y);
        const cv::Point2f offset = place - job.centre;
        // Turned about the copy's own place and not about the marked point, unlike the dots: hosts count on both.
        const auto copy = TransformShape(shape, place, static_cast<double>(match.angle), offset);
        DrawClosedLine(copy, destination);
        StoreCopy(i + 1, copy, offset, match.angle, job.centre, *results_);
    }
    return cameToItsEnd;
}

}  // namespace Quorvane
