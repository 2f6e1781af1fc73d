// The shape matcher from the inside: what it sees of a picture, what a template is, and where it finds one.

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "Includes/line2Dup.h"
#include "examples/demo/Sections.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/Pictures.h"
#include "tests/support/RandomInput.h"

namespace Demo {

namespace {

using line2Dup::Detector;
using line2Dup::GradientFeature;
using line2Dup::MatchHit;
using line2Dup::ShapeTemplate;
using Quorvane::TestSupport::CapturedStream;

constexpr float weakThreshold = 30.0f;
constexpr float strongThreshold = 60.0f;
constexpr int featureCount = 64;
constexpr float angleStep = 0.5f;
constexpr int angles = 720;
constexpr double degreesOfLabel = 22.5;

cv::Scalar ColourOf(int label) {
    const cv::Mat hue(1, 1, CV_8UC3, cv::Scalar(label * 180.0 / 8.0, 230, 255));
    cv::Mat colour;
    cv::cvtColor(hue, colour, cv::COLOR_HSV2BGR);
    const auto bgr = colour.at<cv::Vec3b>(0, 0);
    return {static_cast<double>(bgr[0]), static_cast<double>(bgr[1]), static_cast<double>(bgr[2])};
}

/// Each label in its colour, black where there is none.
cv::Mat ColouredOrientations(const cv::Mat& quantised) {
    cv::Mat picture(quantised.size(), CV_8UC3, cv::Scalar::all(0));
    for (int label = 0; label < 8; ++label) picture.setTo(ColourOf(label), quantised == (1 << label));
    return picture;
}

/// The eight labels as a fan of edges, each drawn as it lies in a picture.
cv::Mat Legend() {
    cv::Mat picture(220, 220, CV_8UC3, cv::Scalar::all(0));
    const cv::Point2d middle(110.0, 110.0);
    for (int label = 0; label < 8; ++label) {
        const double radians = label * degreesOfLabel * CV_PI / 180.0;
        const cv::Point2d gradient(std::cos(radians), std::sin(radians));
        cv::line(picture, cv::Point(middle - gradient * 80.0), cv::Point(middle + gradient * 80.0), ColourOf(label), 5,
                 cv::LINE_AA);
        cv::putText(picture, std::to_string(label), cv::Point(middle + gradient * 95.0 + cv::Point2d(-6.0, 6.0)),
                    cv::FONT_HERSHEY_SIMPLEX, 0.6, cv::Scalar::all(255), 1, cv::LINE_AA);
    }
    return picture;
}

/// A picture in colour, a whole number of times larger.
cv::Mat Enlarged(const cv::Mat& image, int factor) {
    cv::Mat picture = image;
    if (picture.channels() == 1) cv::cvtColor(image, picture, cv::COLOR_GRAY2BGR);
    return Magnified(picture, cv::Rect(cv::Point(), picture.size()), factor);
}

/// Every feature as a short line along its edge, the template's crop origin at `origin`.
void DrawFeatures(cv::Mat& picture, const ShapeTemplate& level, const cv::Point2d& origin, double scale) {
    constexpr double length = 2.5;  // pixels of the level
    for (const GradientFeature& feature : level.features) {
        const double radians = feature.theta * CV_PI / 180.0;
        const cv::Point2d along(-std::sin(radians), std::cos(radians));
        const cv::Point2d place = (origin + cv::Point2d(feature.x + 0.5, feature.y + 0.5)) * scale;
        cv::line(picture, cv::Point(place - along * (length * scale)), cv::Point(place + along * (length * scale)),
                 ColourOf(feature.label), 2, cv::LINE_AA);
    }
}

cv::Mat WithFeatures(const cv::Mat& image, const ShapeTemplate& level, int factor) {
    cv::Mat picture = Enlarged(image, factor) * 0.6;
    DrawFeatures(picture, level, cv::Point2d(level.tlX, level.tlY), factor);
    return picture;
}

cv::Mat HalfOf(const cv::Mat& image) {
    cv::Mat half;
    cv::pyrDown(image, half, image.size() / 2);
    return half;
}

void ShowOrientations(Report& report) {
    const cv::Mat picture = Quorvane::TestSupport::LoadGrayPicture("photographer.png");
    const auto pyramid =
        line2Dup::ColorGradient(weakThreshold, featureCount, strongThreshold).makePyramid(picture, cv::Mat());
    const cv::Mat fine = ColouredOrientations(pyramid->quantised);
    pyramid->downsample();
    report.Heading("What it sees: the directions of strong gradients");
    report.Paragraph(
        "A direction is one of eight labels; opposite ones count as the same, so that a bright part on a dark table "
        "and a dark one on a bright table look alike. A pixel has a label only if five of the nine around it agree.");
    report.Pictures({{picture, "The photograph"},
                     {fine, "The fine level: each label in a colour of its own"},
                     {Enlarged(ColouredOrientations(pyramid->quantised), 2), "The coarse level, half as large"},
                     {Legend(), "The labels: gradients along these lines, from dark to bright or back"}});
}

/// A photograph of coins, large enough that their relief shows.
cv::Mat Coins() {
    cv::Mat large;
    cv::resize(Quorvane::TestSupport::LoadColourPicture("coins.png"), large, {}, 2.0, 2.0, cv::INTER_CUBIC);
    return large(cv::Rect(0, 0, large.cols / 32 * 32, large.rows / 32 * 32)).clone();
}

/// One coin of them, with some of the ground around it.
const cv::Rect oneCoin(492, 328, 112, 112);

Detector TrainedOnOneCoin(const cv::Mat& coins) {
    Detector detector(featureCount, {1, 2}, weakThreshold, strongThreshold);
    cv::Mat mask = cv::Mat::zeros(oneCoin.size(), CV_8U);
    cv::circle(mask, cv::Point(oneCoin.size() / 2), oneCoin.width / 2 - 4, cv::Scalar(255), cv::FILLED);
    detector.addShapeTemplate(coins(oneCoin).clone(), "coin", mask, 0);
    const cv::Point2f centre(static_cast<float>(oneCoin.width) * 0.5f, static_cast<float>(oneCoin.height) * 0.5f);
    for (int i = 1; i < angles; ++i) detector.addRotatedTemplate("coin", 0, static_cast<float>(i) * angleStep, centre);
    return detector;
}

void ShowTemplate(Report& report, const Detector& detector, const cv::Mat& coins) {
    const cv::Mat coin = coins(oneCoin).clone();
    constexpr int turnedBy = 60;
    const auto& upright = detector.templateLevels("coin", 0);
    const auto& turned = detector.templateLevels("coin", static_cast<int>(turnedBy / angleStep));
    cv::Mat turnedCoin;
    cv::warpAffine(coin, turnedCoin,
                   cv::getRotationMatrix2D(cv::Point2f(oneCoin.size()) * 0.5f - cv::Point2f(0.5f, 0.5f), turnedBy, 1.0),
                   coin.size());
    report.Heading("A template: some scattered points and their directions");
    report.Paragraph(
        "The strongest gradients of the trained picture, kept apart from each other. To search for the shape at any "
        "angle, only these points are turned, not the picture.");
    report.Pictures({{Enlarged(coin, 4), "The trained picture, four times enlarged"},
                     {WithFeatures(coin, upright[0], 4), std::to_string(upright[0].features.size()) +
                                                             " features of the fine level, drawn along the edges"},
                     {WithFeatures(HalfOf(coin), upright[1], 8),
                      std::to_string(upright[1].features.size()) + " features of the coarse level"},
                     {WithFeatures(turnedCoin, turned[0], 4),
                      "The features turned by 60 degrees, over the picture turned by as much"}});
}

/// The photograph as another shot would show it: turned about its middle, darker, with noise.
struct Shot {
    double angle;
    double light;
    double noise;

    cv::Mat Motion(cv::Size size) const {
        return cv::getRotationMatrix2D(cv::Point2f(size) * 0.5f - cv::Point2f(0.5f, 0.5f), angle, 1.0);
    }

    cv::Mat Of(const cv::Mat& photograph) const {
        cv::Mat shot;
        cv::warpAffine(photograph, shot, Motion(photograph.size()), photograph.size(), cv::INTER_CUBIC,
                       cv::BORDER_REPLICATE);
        Quorvane::TestSupport::RandomInput random(7);
        for (int y = 0; y < shot.rows; ++y) {
            for (int x = 0; x < shot.cols; ++x) {
                for (int k = 0; k < 3; ++k) {
                    uchar& value = shot.at<cv::Vec3b>(y, x)[k];
                    value = cv::saturate_cast<uchar>(value * light + noise * random.Normal());
                }
            }
        }
        return shot;
    }
};

/// The coin's middle in the shot.
cv::Point2d TruePlace(const Shot& shot, cv::Size size) {
    const cv::Mat motion = shot.Motion(size);
    const cv::Point2d middle = (cv::Point2d(oneCoin.tl()) + cv::Point2d(oneCoin.br())) * 0.5;
    const auto at = [&](int row, int column) { return motion.at<double>(row, column); };
    return {at(0, 0) * middle.x + at(0, 1) * middle.y + at(0, 2), at(1, 0) * middle.x + at(1, 1) * middle.y + at(1, 2)};
}

cv::Point2d PlaceOf(const MatchHit& hit, const ShapeTemplate& level) {
    return {hit.subX - static_cast<float>(level.tlX) + static_cast<float>(oneCoin.width) * 0.5f,
            hit.subY - static_cast<float>(level.tlY) + static_cast<float>(oneCoin.height) * 0.5f};
}

/// The best hit and the best one of each other coin.
std::vector<MatchHit> BestOfEachPlace(const Detector& detector, const std::vector<MatchHit>& hits) {
    std::vector<MatchHit> best;
    const auto placeOf = [&](const MatchHit& hit) {
        return PlaceOf(hit, detector.templateLevels("coin", hit.templateId)[0]);
    };
    for (const MatchHit& hit : hits) {
        const bool known = std::any_of(best.begin(), best.end(), [&](const MatchHit& other) {
            return cv::norm(placeOf(hit) - placeOf(other)) < oneCoin.width * 0.5;
        });
        if (!known) best.push_back(hit);
    }
    return best;
}

void ShowHits(Report& report, const Detector& detector, const cv::Mat& coins) {
    constexpr float threshold = 42.0f;
    report.Heading("What it finds: this coin among the others");
    report.Paragraph(
        "The photograph is turned, darkened and given noise, and searched with the templates of all 720 angles. Other "
        "coins have the rim in common with the one that was trained, but not the head.");
    for (const Shot& shot : {Shot{0.0, 1.0, 0.0}, Shot{33.3, 0.7, 4.0}}) {
        const cv::Mat picture = shot.Of(coins);
        std::vector<MatchHit> hits;
        double milliseconds = 0.0;
        {
            const CapturedStream out(std::cout);
            const auto begin = std::chrono::steady_clock::now();
            hits = detector.match(picture, threshold, {"coin"}, cv::Mat());
            milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
        }
        cv::Mat drawn = picture.clone();
        std::vector<std::vector<std::string>> grid{{"", "similarity", "angle", "x", "y", "off the true place"}};
        const std::vector<MatchHit> best = BestOfEachPlace(detector, hits);
        for (std::size_t i = 0; i < best.size(); ++i) {
            const ShapeTemplate& level = detector.templateLevels("coin", best[i].templateId)[0];
            const cv::Point2d place = PlaceOf(best[i], level);
            const double error = cv::norm(place - TruePlace(shot, picture.size()));
            if (i == 0) DrawFeatures(drawn, level, cv::Point2d(best[i].subX, best[i].subY), 1.0);
            cv::circle(drawn, cv::Point(place), oneCoin.width / 2,
                       i == 0 ? cv::Scalar(0, 255, 0) : cv::Scalar(0, 140, 255), 2, cv::LINE_AA);
            cv::putText(drawn, Number(best[i].similarity, 0),
                        cv::Point(place) + cv::Point(-14, oneCoin.height / 2 + 14), cv::FONT_HERSHEY_SIMPLEX, 0.55,
                        cv::Scalar(255, 255, 255), 1, cv::LINE_AA);
            grid.push_back({std::to_string(i + 1), Number(best[i].similarity, 1) + " %",
                            Number(best[i].templateId * static_cast<double>(angleStep), 1) + " deg", Number(place.x, 2),
                            Number(place.y, 2), error < oneCoin.width ? Number(error, 2) + " px" : "another coin"});
        }
        report.PictureWithGrid({drawn, "Turned by " + Number(shot.angle, 1) +
                                           " degrees: the best hit in green, with "
                                           "its features; other coins above the threshold in orange"},
                               "Threshold " + Number(threshold, 0) + " %, " + std::to_string(hits.size()) +
                                   " hits at all angles and places, " + Milliseconds(milliseconds),
                               grid);
    }
}

}  // namespace

void ShapeMatcherSection(Report& report) {
    report.Section("Shape matcher",
                   "The search behind the filling: it finds a trained shape at any angle by the directions of its "
                   "edges, whatever the light, and says where to a fraction of a pixel.");
    ShowOrientations(report);
    const cv::Mat coins = Coins();
    const Detector detector = TrainedOnOneCoin(coins);
    ShowTemplate(report, detector, coins);
    ShowHits(report, detector, coins);
}

}  // namespace Demo
