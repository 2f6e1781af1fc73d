#include "examples/demo/FillingScenes.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"

namespace Demo {

namespace {

using Quorvane::TestSupport::LoadColourPicture;
using Quorvane::TestSupport::PartPose;
using Quorvane::TestSupport::RenderTray;
using Quorvane::TestSupport::Scene;
using Quorvane::TestSupport::Tray;
using Quorvane::TestSupport::TrayPartMark;
using Quorvane::TestSupport::TraySettings;

/// The saucer with its cup in the photograph "coffee.png", and how much smaller it is laid out.
const cv::Point2f saucerMiddle(279.0f, 228.0f);
const cv::Size2f saucerSize(408.0f, 320.0f);
const cv::Point2f cupMiddle(288.0f, 130.0f);
const cv::Size2f cupSize(248.0f, 236.0f);
constexpr double shrink = 0.36;

/// 1 on the object, 0 beside it, with a soft edge.
cv::Mat ObjectMask(cv::Size size) {
    cv::Mat mask = cv::Mat::zeros(size, CV_8U);
    cv::ellipse(mask, cv::RotatedRect(saucerMiddle, saucerSize, 12.0f), cv::Scalar(255), cv::FILLED);
    cv::ellipse(mask, cv::RotatedRect(cupMiddle, cupSize, 0.0f), cv::Scalar(255), cv::FILLED);
    cv::GaussianBlur(mask, mask, {}, 2.0);
    return mask;
}

/// From the photograph to the picture: shrunk, turned about the saucer's middle, and laid down at the pose.
cv::Mat Motion(const PartPose& pose) {
    cv::Mat motion = cv::getRotationMatrix2D(saucerMiddle, pose.angle, shrink);
    motion.at<double>(0, 2) += pose.middle.x - saucerMiddle.x;
    motion.at<double>(1, 2) += pose.middle.y - saucerMiddle.y;
    return motion;
}

void LayDown(const cv::Mat& photograph, const cv::Mat& mask, const PartPose& pose, cv::Mat& picture) {
    cv::Mat object;
    cv::Mat share;
    cv::warpAffine(photograph, object, Motion(pose), picture.size(), cv::INTER_AREA);
    cv::warpAffine(mask, share, Motion(pose), picture.size(), cv::INTER_AREA);
    for (int y = 0; y < picture.rows; ++y) {
        for (int x = 0; x < picture.cols; ++x) {
            const double a = share.at<uchar>(y, x) / 255.0;
            for (int k = 0; k < 3; ++k) {
                uchar& value = picture.at<cv::Vec3b>(y, x)[k];
                value = cv::saturate_cast<uchar>(value * (1.0 - a) + object.at<cv::Vec3b>(y, x)[k] * a);
            }
        }
    }
}

std::vector<cv::Point2f> InPicture(const std::vector<cv::Point2d>& inPart, const PartPose& pose) {
    std::vector<cv::Point2f> points;
    for (const cv::Point2d& point : inPart) points.emplace_back(pose.Place(point));
    return points;
}

}  // namespace

FillingScene PhotographedCoins() {
    FillingScene scene;
    cv::resize(LoadColourPicture("coins.png"), scene.picture, {}, 2.0, 2.0, cv::INTER_CUBIC);
    // The second coin of the first row; the job is a cross.
    scene.mark = {200.0, 114.0};
    const auto at = [&](double x, double y) { return cv::Point2f(scene.mark + cv::Point2d(x, y)); };
    scene.shape = {at(-6, -24), at(6, -24), at(6, -6), at(24, -6), at(24, 6),   at(6, 6),
                   at(6, 24),   at(-6, 24), at(-6, 6), at(-24, 6), at(-24, -6), at(-6, -6)};
    return scene;
}

FillingScene CupsOnGravel() {
    FillingScene scene;
    cv::Mat gravel;
    cv::resize(LoadColourPicture("gravel.png"), gravel, {960, 960}, 0.0, 0.0, cv::INTER_CUBIC);
    // In the shade, so that no stone is as bright as the cups.
    scene.picture = gravel(cv::Rect(0, 120, 960, 720)) * 0.7;

    cv::Mat photograph;
    cv::GaussianBlur(LoadColourPicture("coffee.png"), photograph, {}, 1.0);  // so that shrinking leaves no jagged edges
    const cv::Mat mask = ObjectMask(photograph.size());
    scene.poses = {{{150.0, 150.0}, 0.0},   {{470.3, 130.6}, 65.0}, {{800.7, 170.2}, 212.0}, {{160.5, 540.4}, 131.0},
                   {{430.2, 400.8}, 300.0}, {{690.0, 560.5}, 17.5}, {{850.6, 400.3}, 90.0}};
    for (const PartPose& pose : scene.poses) LayDown(photograph, mask, pose, scene.picture);
    scene.picture = Scene(scene.picture).Noise(2.0, 11).Colour();

    // On the bare glaze left of the cup; the job is an arrow along the saucer's rim.
    const auto inPart = [](double x, double y) { return cv::Point2d(x - saucerMiddle.x, y - saucerMiddle.y) * shrink; };
    scene.markInPart = inPart(140, 230);
    scene.mark = scene.poses.front().Place(scene.markInPart);
    scene.shape = InPicture({inPart(100, 180), inPart(165, 180), inPart(165, 165), inPart(200, 190), inPart(165, 215),
                             inPart(165, 200), inPart(100, 200)},
                            scene.poses.front());
    return scene;
}

FillingScene TrayOfParts() {
    constexpr double partSize = 130.0;
    TraySettings settings;
    settings.size = {960, 720};
    settings.partSize = partSize;
    settings.noise = 5.0;
    settings.lightAtRight = 0.55;
    settings.seed = 8;
    const Tray tray = RenderTray(settings);

    FillingScene scene{tray.picture, tray.poses, {}, TrayPartMark(partSize), {}};
    scene.mark = tray.poses.front().Place(scene.markInPart);
    scene.shape =
        InPicture({{-45, -18}, {-8, -18}, {-8, -26}, {12, -10}, {-8, 6}, {-8, -2}, {-45, -2}}, tray.poses.front());
    return scene;
}

}  // namespace Demo
