#include "tests/support/Boards.h"

#include <algorithm>
#include <cmath>
#include <opencv2/objdetect/aruco_board.hpp>
#include <opencv2/objdetect/aruco_dictionary.hpp>

namespace Quorvane::TestSupport {

namespace {

constexpr double paper = 225.0;
constexpr double ink = 25.0;
constexpr double table = 95.0;

/// The angle between the optical axis and a ray, from the radius at which the fisheye shows it:
/// radius = angle * (1 + k1 angle^2 + k2 angle^4 + k3 angle^6 + k4 angle^8), solved by Newton's method.
double AngleOf(double radius, const cv::Vec4d& D) {
    constexpr int steps = 12;
    double angle = radius;
    for (int i = 0; i < steps; ++i) {
        const double a2 = angle * angle;
        const double value = angle * (1.0 + a2 * (D[0] + a2 * (D[1] + a2 * (D[2] + a2 * D[3])))) - radius;
        const double slope = 1.0 + a2 * (3.0 * D[0] + a2 * (5.0 * D[1] + a2 * (7.0 * D[2] + a2 * 9.0 * D[3])));
        angle -= value / slope;
    }
    return angle;
}

double RadiusOf(double angle, const cv::Vec4d& D) {
    const double a2 = angle * angle;
    return angle * (1.0 + a2 * (D[0] + a2 * (D[1] + a2 * (D[2] + a2 * D[3]))));
}

cv::Matx33d TurnAbout(int axis, double degrees) {
    const double c = std::cos(degrees * CV_PI / 180.0);
    const double s = std::sin(degrees * CV_PI / 180.0);
    cv::Matx33d turn = cv::Matx33d::eye();
    const int i = (axis + 1) % 3;
    const int j = (axis + 2) % 3;
    turn(i, i) = c;
    turn(i, j) = -s;
    turn(j, i) = s;
    turn(j, j) = c;
    return turn;
}

/// Where the board's plane is met by the pixel's ray; not-a-number where it is not.
cv::Point2d BoardPoint(const CameraModel& camera, const Pose& pose, const cv::Point2d& pixel) {
    const cv::Vec3d direction = pose.turn.t() * camera.Ray(pixel);
    const cv::Vec3d eye = pose.turn.t() * (-pose.shift);
    const double distance = -eye[2] / direction[2];
    if (!(distance > 0.0) || !std::isfinite(distance)) return {std::nan(""), std::nan("")};
    return {eye[0] + distance * direction[0], eye[1] + distance * direction[1]};
}

double LevelAt(const Board& board, const cv::Point2d& point) {
    return std::isfinite(point.x) && std::isfinite(point.y) ? board.level(point) : table;
}

/// The mean level over a pixel whose corners lie at these points of the board. Within a pixel the mapping is taken to
/// be bilinear, which is exact to far below a thousandth of a pixel.
double MeanLevel(const Board& board, const cv::Point2d& topLeft, const cv::Point2d& topRight,
                 const cv::Point2d& bottomLeft, const cv::Point2d& bottomRight) {
    const auto at = [&](double u, double v) {
        return (topLeft * (1.0 - u) + topRight * u) * (1.0 - v) + (bottomLeft * (1.0 - u) + bottomRight * u) * v;
    };
    constexpr int coarse = 3;
    const double first = LevelAt(board, topLeft);
    bool even = true;
    for (int i = 0; i < coarse && even; ++i) {
        for (int j = 0; j < coarse && even; ++j) even = LevelAt(board, at(j / 2.0, i / 2.0)) == first;
    }
    if (even) return first;
    constexpr int grid = 12;
    double sum = 0.0;
    for (int i = 0; i < grid; ++i) {
        for (int j = 0; j < grid; ++j) sum += LevelAt(board, at((j + 0.5) / grid, (i + 0.5) / grid));
    }
    return sum / (grid * grid);
}

}  // namespace

cv::Point2d CameraModel::Project(const cv::Vec3d& point) const {
    double x = point[0] / point[2];
    double y = point[1] / point[2];
    if (fisheye) {
        const double r = std::hypot(x, y);
        const double scale = r > 0.0 ? RadiusOf(std::atan(r), D) / r : 1.0;
        x *= scale;
        y *= scale;
    }
    return {K(0, 0) * x + K(0, 2), K(1, 1) * y + K(1, 2)};
}

cv::Vec3d CameraModel::Ray(const cv::Point2d& pixel) const {
    const double x = (pixel.x - K(0, 2)) / K(0, 0);
    const double y = (pixel.y - K(1, 2)) / K(1, 1);
    if (!fisheye) return {x, y, 1.0};
    const double r = std::hypot(x, y);
    const double angle = AngleOf(r, D);
    if (!(angle < CV_PI / 2.0)) return {x, y, 0.0};
    const double scale = r > 0.0 ? std::tan(angle) / r : 1.0;
    return {x * scale, y * scale, 1.0};
}

CameraModel FisheyeCamera(cv::Size size) {
    CameraModel camera;
    const double f = 0.46 * size.width;
    camera.K = {f, 0.0, size.width / 2.0 + 4.3, 0.0, f * 1.01, size.height / 2.0 - 6.7, 0.0, 0.0, 1.0};
    camera.D = {0.08, -0.012, 0.006, -0.0015};
    camera.fisheye = true;
    camera.size = size;
    return camera;
}

CameraModel PinholeCamera(cv::Size size) {
    CameraModel camera;
    const double f = 1.1 * size.width;
    camera.K = {f, 0.0, size.width / 2.0 + 2.6, 0.0, f, size.height / 2.0 - 3.4, 0.0, 0.0, 1.0};
    camera.size = size;
    return camera;
}

CameraModel ChessboardCamera() {
    CameraModel camera;
    camera.K = cv::Matx33d(532.338, 0.0, 342.431, 0.0, 532.690, 233.263, 0.0, 0.0, 1.0);
    camera.D = cv::Vec4d(0.101802, -0.897044, 4.489520, -7.693030);
    camera.fisheye = true;
    camera.size = {640, 480};
    return camera;
}

cv::Vec3d Pose::ToCamera(const cv::Point2d& boardPoint) const {
    return turn * cv::Vec3d(boardPoint.x, boardPoint.y, 0.0) + shift;
}

Pose PoseOf(const cv::Point2d& centre, const cv::Vec3d& place, double aboutX, double aboutY, double aboutZ) {
    Pose pose;
    pose.turn = TurnAbout(2, aboutZ) * TurnAbout(1, aboutY) * TurnAbout(0, aboutX);
    pose.shift = place - pose.turn * cv::Vec3d(centre.x, centre.y, 0.0);
    return pose;
}

Board CircleBoard(cv::Size pattern, double radius) {
    Board board;
    const double width = pattern.width - 1.0;
    const double height = pattern.height - 1.0;
    board.level = [=](const cv::Point2d& p) {
        constexpr double margin = 1.0;
        if (p.x < -margin || p.y < -margin || p.x > width + margin || p.y > height + margin) return table;
        const double dx = p.x - std::clamp(std::round(p.x), 0.0, width);
        const double dy = p.y - std::clamp(std::round(p.y), 0.0, height);
        return dx * dx + dy * dy < radius * radius ? ink : paper;
    };
    board.centre = {width / 2.0, height / 2.0};
    for (int row = 0; row < pattern.height; ++row) {
        for (int column = 0; column < pattern.width; ++column) board.points.emplace_back(column, row);
    }
    return board;
}

Board CharucoBoardPrint(cv::Size squares, double squareLength) {
    // A square is 12 cells wide: the marker's 7 bits and black border, and a cell and a half of paper around it. With
    // two dots a cell everything falls on whole dots.
    constexpr int dotsPerSquare = 24;
    const cv::aruco::CharucoBoard layout(squares, 1.0f, 0.75f,
                                         cv::aruco::getPredefinedDictionary(cv::aruco::DICT_7X7_250));
    cv::Mat print;
    layout.generateImage(squares * dotsPerSquare, print);
    Board board;
    board.level = [=](const cv::Point2d& p) {
        const double x = p.x / squareLength;
        const double y = p.y / squareLength;
        if (x < -1.0 || y < -1.0 || x > squares.width + 1.0 || y > squares.height + 1.0) return table;
        const int column = static_cast<int>(std::floor(x * dotsPerSquare));
        const int row = static_cast<int>(std::floor(y * dotsPerSquare));
        if (column < 0 || row < 0 || column >= print.cols || row >= print.rows) return paper;
        return print.at<uchar>(row, column) != 0 ? paper : ink;
    };
    board.centre = cv::Point2d(squares.width, squares.height) * (squareLength / 2.0);
    for (int row = 1; row < squares.height; ++row) {
        for (int column = 1; column < squares.width; ++column) {
            board.points.emplace_back(column * squareLength, row * squareLength);
        }
    }
    return board;
}

Board Covered(Board board, const cv::Point2d& from, const cv::Point2d& to) {
    board.level = [level = board.level, from, to](const cv::Point2d& p) {
        const bool covered = p.x >= from.x && p.y >= from.y && p.x <= to.x && p.y <= to.y;
        return covered ? paper : level(p);
    };
    return board;
}

cv::Mat Photograph(const CameraModel& camera, const Board& board, const Pose& pose) {
    const auto boardRow = [&](int y) {
        std::vector<cv::Point2d> row;
        for (int x = 0; x <= camera.size.width; ++x) row.push_back(BoardPoint(camera, pose, {x - 0.5, y - 0.5}));
        return row;
    };
    cv::Mat picture(camera.size, CV_8UC1);
    std::vector<cv::Point2d> above = boardRow(0);
    for (int y = 0; y < picture.rows; ++y) {
        const std::vector<cv::Point2d> below = boardRow(y + 1);
        for (int x = 0; x < picture.cols; ++x) {
            const auto left = static_cast<std::size_t>(x);
            picture.at<uchar>(y, x) =
                cv::saturate_cast<uchar>(MeanLevel(board, above[left], above[left + 1], below[left], below[left + 1]));
        }
        above = below;
    }
    return picture;
}

std::vector<cv::Point2d> TruePoints(const CameraModel& camera, const Board& board, const Pose& pose) {
    std::vector<cv::Point2d> points;
    for (const cv::Point2d& point : board.points) points.push_back(camera.Project(pose.ToCamera(point)));
    return points;
}

std::vector<Pose> PosesOverThePicture(const CameraModel& camera, const Board& board, double boardWidth) {
    // Place of the board's centre as a share of the picture, share of the picture that the board fills, three angles.
    struct Shot {
        cv::Point2d place;
        double share;
        double aboutX, aboutY, aboutZ;
    };
    const Shot shots[] = {
        {{0.50, 0.50}, 0.62, 0.0, 0.0, 0.0},    {{0.33, 0.36}, 0.45, 22.0, -18.0, 4.0},
        {{0.66, 0.37}, 0.45, 20.0, 20.0, -6.0}, {{0.34, 0.64}, 0.45, -24.0, -16.0, 3.0},
        {{0.67, 0.63}, 0.45, -20.0, 22.0, 5.0}, {{0.50, 0.45}, 0.55, 30.0, 5.0, -3.0},
        {{0.48, 0.52}, 0.55, -5.0, 25.0, 2.0},  {{0.52, 0.50}, 0.60, -12.0, -14.0, 0.0},
    };
    std::vector<Pose> poses;
    for (const Shot& shot : shots) {
        const cv::Point2d pixel(shot.place.x * camera.size.width, shot.place.y * camera.size.height);
        const double distance = boardWidth * camera.K(0, 0) / (shot.share * camera.size.width);
        poses.push_back(
            PoseOf(board.centre, cv::Vec3d(camera.Ray(pixel)) * distance, shot.aboutX, shot.aboutY, shot.aboutZ));
    }
    return poses;
}

}  // namespace Quorvane::TestSupport
