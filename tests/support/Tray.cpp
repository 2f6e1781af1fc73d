#include "tests/support/Tray.h"

#include <algorithm>
#include <cmath>

#include "tests/support/RandomInput.h"
#include "tests/support/Scene.h"

namespace Quorvane::TestSupport {

namespace {

const cv::Scalar trayColour(120.0, 95.0, 70.0);
const cv::Scalar partColour(70.0, 170.0, 215.0);

/// Blur of the lens, in pixels.
constexpr double focus = 0.8;

/// The least gap between two parts as a share of their size, and in pixels. A template reaches up to 25 pixels beyond
/// its part.
constexpr double gapShare = 0.05;
constexpr double leastGap = 30.0;

}  // namespace

cv::Point2d PartPose::Place(cv::Point2d inPart) const {
    const double radians = -angle * CV_PI / 180.0;
    const cv::Point2d turned(std::cos(radians) * inPart.x - std::sin(radians) * inPart.y,
                             std::sin(radians) * inPart.x + std::cos(radians) * inPart.y);
    return middle + turned;
}

std::vector<cv::Point2d> TrayPartOutline(double partSize) {
    const double u = partSize / 100.0;
    return {{-44 * u, -22 * u}, {10 * u, -22 * u}, {10 * u, -34 * u}, {38 * u, -34 * u}, {48 * u, 2 * u},
            {30 * u, 14 * u},   {30 * u, 30 * u},  {-8 * u, 30 * u},  {-20 * u, 14 * u}, {-44 * u, 14 * u}};
}

Shape TrayPart(double partSize) {
    const double u = partSize / 100.0;
    const Shape plate = Polygon(TrayPartOutline(partSize));
    const Shape holes = Either(Disc({24 * u, -18 * u}, 7 * u), Disc({-33 * u, -4 * u}, 5 * u));
    return Without(plate, Either(holes, Rectangle({12 * u, 18 * u}, {24 * u, 7 * u}, 15.0)));
}

cv::Point2d TrayPartMark(double partSize) { return {-6.0 * partSize / 100.0, -5.0 * partSize / 100.0}; }

Tray RenderTray(const TraySettings& settings) {
    RandomInput random(settings.seed);
    const double cellWidth = static_cast<double>(settings.size.width) / settings.columns;
    const double cellHeight = static_cast<double>(settings.size.height) / settings.rows;
    const double room = settings.partSize + std::max(leastGap, settings.partSize * gapShare);
    const double freeX = std::max(cellWidth - room, 0.0) / 2.0;
    const double freeY = std::max(cellHeight - room, 0.0) / 2.0;

    Tray tray;
    Scene scene(settings.size, trayColour);
    for (int row = 0; row < settings.rows; ++row) {
        for (int column = 0; column < settings.columns; ++column) {
            PartPose pose;
            pose.middle = {(column + 0.5) * cellWidth + random.Real(-freeX, freeX),
                           (row + 0.5) * cellHeight + random.Real(-freeY, freeY)};
            pose.angle = tray.poses.empty() ? 0.0 : random.Real(0.0, 360.0);
            scene.Paint(Placed(TrayPart(settings.partSize), -pose.angle, pose.middle), partColour);
            tray.poses.push_back(pose);
        }
    }
    tray.picture = scene.Blur(focus).Light(1.0, settings.lightAtRight).Noise(settings.noise, settings.seed).Colour();
    return tray;
}

}  // namespace Quorvane::TestSupport
