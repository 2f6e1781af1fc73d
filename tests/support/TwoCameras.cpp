#include "tests/support/TwoCameras.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "tests/support/Pictures.h"
#include "tests/support/Scene.h"

namespace Quorvane::TestSupport {

namespace {

cv::Matx33d Shift(double x, double y) { return {1.0, 0.0, x, 0.0, 1.0, y, 0.0, 0.0, 1.0}; }

cv::Matx33d TurnAndTilt(double degrees, double tilt) {
    const double c = std::cos(degrees * CV_PI / 180.0);
    const double s = std::sin(degrees * CV_PI / 180.0);
    return {c, -s, 0.0, s, c, 0.0, tilt, 0.0, 1.0};
}

cv::Mat Lit(const cv::Mat& picture, double light, double noise, std::uint32_t seed) {
    if (light == 1.0 && noise == 0.0) return picture.clone();
    return Scene(picture).Light(light, light).Noise(noise, seed).Colour();
}

cv::Point2d Apply(const cv::Matx33d& homography, const cv::Point2d& point) {
    const cv::Vec3d mapped = homography * cv::Vec3d(point.x, point.y, 1.0);
    return {mapped[0] / mapped[2], mapped[1] / mapped[2]};
}

}  // namespace

TwoViews Photograph(const TwoCameras& cameras, const cv::Mat& scene) {
    const cv::Point origin2(scene.cols - cameras.view.width, (scene.rows - cameras.view.height) / 2);
    const cv::Point2d origin1(origin2.x + cameras.overlap - cameras.view.width, origin2.y + cameras.shiftDown);
    const cv::Point2d middle(0.5 * cameras.view.width, 0.5 * cameras.view.height);
    const cv::Matx33d toScene1 = Shift(origin1.x + middle.x, origin1.y + middle.y) *
                                 TurnAndTilt(cameras.turn, cameras.perspective / cameras.view.width) *
                                 Shift(-middle.x, -middle.y);

    TwoViews views;
    views.inScene2 = cv::Rect(origin2, cameras.view);
    views.homography = Shift(-origin2.x, -origin2.y) * toScene1;
    cv::Mat view1;
    cv::warpPerspective(scene, view1, toScene1, cameras.view, cv::INTER_CUBIC | cv::WARP_INVERSE_MAP,
                        cv::BORDER_REFLECT_101);
    views.picture1 = Lit(view1, cameras.light1, cameras.noise, cameras.seed);
    views.picture2 = Lit(scene(views.inScene2), cameras.light2, cameras.noise, cameras.seed + 1);

    const bool straight = cameras.turn == 0.0 && cameras.perspective == 0.0;
    const int width = static_cast<int>(cameras.overlap) + (straight ? 0 : cameras.view.width / 20);
    views.overlap1 = {cameras.view.width - width, 0, width, cameras.view.height};
    views.overlap2 = {0, 0, width, cameras.view.height};
    return views;
}

TwoViews PhotographTable() {
    cv::Mat scene;
    cv::resize(LoadColourPicture("coffee.png"), scene, {}, 1.5, 1.5, cv::INTER_CUBIC);
    TwoCameras cameras;
    cameras.view = {520, 560};
    cameras.overlap = 200.0;
    cameras.shiftDown = 10.0;
    cameras.turn = 1.0;
    cameras.light1 = 0.85;
    cameras.noise = 1.5;
    return Photograph(cameras, scene);
}

cv::Mat Mounted(const cv::Mat& upright, int rotateCode, bool flipHorizontal, bool flipVertical) {
    cv::Mat mounted = upright.clone();
    if (flipHorizontal) cv::flip(mounted, mounted, 1);
    if (flipVertical) cv::flip(mounted, mounted, 0);
    if (rotateCode == cv::ROTATE_90_CLOCKWISE) cv::rotate(mounted, mounted, cv::ROTATE_90_COUNTERCLOCKWISE);
    if (rotateCode == cv::ROTATE_180) cv::rotate(mounted, mounted, cv::ROTATE_180);
    if (rotateCode == cv::ROTATE_90_COUNTERCLOCKWISE) cv::rotate(mounted, mounted, cv::ROTATE_90_CLOCKWISE);
    return mounted;
}

double LargestDistance(const cv::Matx33d& a, const cv::Matx33d& b, const cv::Rect2d& area) {
    constexpr int steps = 20;
    double largest = 0.0;
    for (int row = 0; row <= steps; ++row) {
        for (int column = 0; column <= steps; ++column) {
            const cv::Point2d point(area.x + area.width * column / steps, area.y + area.height * row / steps);
            largest = std::max(largest, cv::norm(Apply(a, point) - Apply(b, point)));
        }
    }
    return largest;
}

}  // namespace Quorvane::TestSupport
