#include "tests/support/MarkPlate.h"

#include <algorithm>

#include "tests/support/RandomInput.h"

namespace Quorvane::TestSupport {

std::vector<cv::Point2d> MarkPlate::Centres() const {
    const cv::Size2d cell(static_cast<double>(size.width) / grid.width, static_cast<double>(size.height) / grid.height);
    // At least half a pixel to each side, so that all fractions of a pixel occur.
    const double slackX = std::max(cell.width / 2.0 - 2.0 * radius, 0.5);
    const double slackY = std::max(cell.height / 2.0 - 2.0 * radius, 0.5);
    RandomInput random(seed);
    std::vector<cv::Point2d> centres;
    for (int row = 0; row < grid.height; ++row) {
        for (int column = 0; column < grid.width; ++column) {
            const double x = (column + 0.5) * cell.width - 0.5 + random.Real(-slackX, slackX);
            const double y = (row + 0.5) * cell.height - 0.5 + random.Real(-slackY, slackY);
            centres.emplace_back(x, y);
        }
    }
    return centres;
}

Scene MarkPlate::Render() const {
    Scene scene(size, background);
    for (const cv::Point2d& centre : Centres()) scene.Paint(Disc(centre, radius), brightness);
    return scene;
}

}  // namespace Quorvane::TestSupport
