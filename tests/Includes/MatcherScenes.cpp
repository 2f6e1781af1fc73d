#include "tests/Includes/MatcherScenes.h"

#include "tests/support/Scene.h"

namespace Quorvane::TestSupport {

namespace {

const cv::Scalar table(70.0, 90.0, 80.0);
const cv::Scalar paint(190.0, 160.0, 210.0);
constexpr double focus = 0.8;
constexpr double grain = 2.0;

}  // namespace

Shape Part(double extent) {
    const double u = extent / 10.0;
    const Shape body = Polygon({{-4.5 * u, -3.0 * u},
                                {3.0 * u, -3.5 * u},
                                {4.5 * u, 0.5 * u},
                                {1.0 * u, 1.0 * u},
                                {1.5 * u, 3.8 * u},
                                {-3.5 * u, 3.0 * u}});
    return Without(body,
                   Either(Disc({-1.5 * u, -0.5 * u}, 1.2 * u), Rectangle({2.3 * u, -1.6 * u}, {1.4 * u, u}, 20.0)));
}

Shape Part(double extent, const Pose& pose) { return Placed(Part(extent), -pose.angle, pose.centre); }

cv::Mat PartPicture(double extent, int side, bool colour) {
    return PartScene({side, side}, extent, {{{side * 0.5, side * 0.5}, 0.0}}, 0, colour);
}

cv::Mat PartScene(cv::Size size, double extent, const std::vector<Pose>& poses, std::uint32_t seed, bool colour) {
    Scene scene(size, table);
    for (const Pose& pose : poses) scene.Paint(Part(extent, pose), paint);
    scene.Blur(focus).Noise(grain, seed);
    return colour ? scene.Colour() : scene.Gray();
}

bool TrainAllAngles(line2Dup::Detector& detector, const cv::Mat& picture, int count, float step) {
    const int upright = detector.addShapeTemplate(picture, "part", cv::Mat(), 0);
    if (upright < 0) return false;
    const cv::Point2f centre(static_cast<float>(picture.cols) * 0.5f, static_cast<float>(picture.rows) * 0.5f);
    for (int i = 1; i < count; ++i) {
        detector.addRotatedTemplate("part", upright, static_cast<float>(i) * step, centre);
    }
    return true;
}

}  // namespace Quorvane::TestSupport
