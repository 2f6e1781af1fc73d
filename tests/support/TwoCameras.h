#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace Quorvane::TestSupport {

/// How two cameras look at one scene: camera 2 straight down on its right part, camera 1 on the part left of it.
struct TwoCameras {
    cv::Size view{360, 400};   ///< Of both pictures, in pixels.
    double overlap = 140.0;    ///< Columns that both show, if camera 1 is neither turned nor tilted.
    double shiftDown = 0.0;    ///< How much further down camera 1 looks, in pixels.
    double turn = 0.0;         ///< Of camera 1 about the middle of its picture, in degrees.
    double perspective = 0.0;  ///< Change of scale, as a share, between the left and the right side of picture 1.
    double light1 = 1.0;       ///< Brightness as a factor.
    double light2 = 1.0;
    double noise = 0.0;  ///< Deviation in gray levels.
    std::uint32_t seed = 1;
};

struct TwoViews {
    cv::Mat picture1;  ///< Upright
    cv::Mat picture2;
    cv::Matx33d homography;  ///< From pixels of picture 1 to pixels of picture 2.
    cv::Rect overlap1;       ///< Where the pictures overlap, with a margin for the turn and the tilt of camera 1.
    cv::Rect overlap2;
    cv::Rect inScene2;  ///< What picture 2 shows of the scene.
};

/// The pictures that the cameras take of a scene (8-bit with 3 channels), cut out of its middle and its right end. What
/// lies beyond the scene is mirrored.
TwoViews Photograph(const TwoCameras& cameras, const cv::Mat& scene);

/// A table under two cameras, as the guide and the example programs show them.
TwoViews PhotographTable();

/// An upright picture as a camera delivers it that is mounted so that a rotation by `rotateCode` (0 to 2 as OpenCV
/// counts them; none for others), then a flip top to bottom, then one left to right bring it upright.
cv::Mat Mounted(const cv::Mat& upright, int rotateCode, bool flipHorizontal, bool flipVertical);

/// The largest distance between where two homographies put the points of a rectangle.
double LargestDistance(const cv::Matx33d& a, const cv::Matx33d& b, const cv::Rect2d& area);

}  // namespace Quorvane::TestSupport
