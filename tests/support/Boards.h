#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <vector>

namespace Quorvane::TestSupport {

/// A camera that is known exactly. Directions and points are in the camera's frame: x to the right, y down, z ahead.
struct CameraModel {
    cv::Matx33d K = cv::Matx33d::eye();  ///< Camera matrix without skew.
    cv::Vec4d D;                         ///< Fisheye coefficients k1 to k4.
    bool fisheye = false;                ///< Otherwise a pinhole camera without distortion.
    cv::Size size;                       ///< Of its pictures, in pixels.

    /// The pixel that shows a point ahead of the camera.
    cv::Point2d Project(const cv::Vec3d& point) const;
    /// The direction, with z = 1, that a pixel looks in; z = 0 where it looks sideways or back.
    cv::Vec3d Ray(const cv::Point2d& pixel) const;
};

/// A wide camera with a strong barrel distortion, and one that shows straight lines straight.
CameraModel FisheyeCamera(cv::Size size = {640, 480});
CameraModel PinholeCamera(cv::Size size = {640, 480});

/// The camera that took the photograph `chessboard.png`: a fisheye calibration from the corners in 13 photographs of
/// its series.
CameraModel ChessboardCamera();

/// Where the board's frame lies: point of the camera = turn * point of the board + shift. The board is the plane
/// z = 0 of its frame, x along its rows, y down its columns.
struct Pose {
    cv::Matx33d turn;
    cv::Vec3d shift;

    cv::Vec3d ToCamera(const cv::Point2d& boardPoint) const;
};

/// A board seen with its point `centre` at `place` in the camera's frame, turned about its x, y and z axis, in this
/// order, by the angles in degrees.
Pose PoseOf(const cv::Point2d& centre, const cv::Vec3d& place, double aboutX, double aboutY, double aboutZ);

/// What is printed on a board: the gray level at a point of its plane. Levels outside the board belong to the table
/// that it lies on.
struct Board {
    std::function<double(const cv::Point2d&)> level;
    cv::Point2d centre;
    /// The points that a calibration finds, in the order of a grid: centres of circles, or inner corners of squares.
    std::vector<cv::Point2d> points;
};

/// Dark circles on white paper in a symmetric grid of one unit; the first one lies at (0, 0).
Board CircleBoard(cv::Size pattern, double radius = 0.25);

/// A ChArUco board with markers of `cv::aruco::DICT_7X7_250` on white paper; lengths in any unit, the marker three
/// quarters of the square. Its frame begins at the outer corner of the first square. The margin is one square wide.
Board CharucoBoardPrint(cv::Size squares, double squareLength);

/// The board with a part of it, given by its two corners, covered with white paper.
Board Covered(Board board, const cv::Point2d& from, const cv::Point2d& to);

/// The picture that the camera takes of the board: 8-bit gray, each pixel the mean over its area.
cv::Mat Photograph(const CameraModel& camera, const Board& board, const Pose& pose);

/// Where the board's points truly lie in such a picture.
std::vector<cv::Point2d> TruePoints(const CameraModel& camera, const Board& board, const Pose& pose);

/// Poses that show a board of the given width (in its own unit) all over the picture, tilted in every direction: what
/// an operator is told to shoot.
std::vector<Pose> PosesOverThePicture(const CameraModel& camera, const Board& board, double boardWidth);

}  // namespace Quorvane::TestSupport
