#include "tests/support/Shapes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Quorvane::TestSupport {

namespace {

/// Rotation by an angle in degrees, from the x axis towards the y axis.
class Turn {
public:
    explicit Turn(double degrees)
        : cosine_(std::cos(degrees * CV_PI / 180.0)), sine_(std::sin(degrees * CV_PI / 180.0)) {}

    cv::Point2d Forth(const cv::Point2d& p) const { return {cosine_ * p.x - sine_ * p.y, sine_ * p.x + cosine_ * p.y}; }
    cv::Point2d Back(const cv::Point2d& p) const { return {cosine_ * p.x + sine_ * p.y, cosine_ * p.y - sine_ * p.x}; }

private:
    double cosine_;
    double sine_;
};

double DistanceToSegment(const cv::Point2d& p, const cv::Point2d& a, const cv::Point2d& b) {
    const cv::Point2d along = b - a;
    const double length2 = along.dot(along);
    const double t = length2 > 0.0 ? std::clamp((p - a).dot(along) / length2, 0.0, 1.0) : 0.0;
    return cv::norm(p - a - along * t);
}

}  // namespace

Shape Disc(cv::Point2d centre, double radius) {
    return [=](const cv::Point2d& p) { return cv::norm(p - centre) - radius; };
}

Shape Ring(cv::Point2d centre, double radius, double width) {
    return [=](const cv::Point2d& p) { return std::abs(cv::norm(p - centre) - radius) - width / 2.0; };
}

Shape HalfPlane(cv::Point2d through, double direction) {
    const cv::Point2d normal = Turn(direction).Forth({1.0, 0.0});
    return [=](const cv::Point2d& p) { return -(p - through).dot(normal); };
}

Shape Rectangle(cv::Point2d centre, cv::Size2d size, double angle) {
    const Turn turn(angle);
    return [=](const cv::Point2d& p) {
        const cv::Point2d q = turn.Back(p - centre);
        const double dx = std::abs(q.x) - size.width / 2.0;
        const double dy = std::abs(q.y) - size.height / 2.0;
        return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0);
    };
}

Shape Polygon(std::vector<cv::Point2d> corners) {
    return [corners = std::move(corners)](const cv::Point2d& p) {
        double distance = std::numeric_limits<double>::max();
        bool inside = false;
        for (std::size_t i = 0, j = corners.size() - 1; i < corners.size(); j = i++) {
            const cv::Point2d& a = corners[i];
            const cv::Point2d& b = corners[j];
            distance = std::min(distance, DistanceToSegment(p, a, b));
            if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) inside = !inside;
        }
        return inside ? -distance : distance;
    };
}

Shape Stroke(std::vector<cv::Point2d> points, double width) {
    return [points = std::move(points), width](const cv::Point2d& p) {
        double distance = std::numeric_limits<double>::max();
        for (std::size_t i = 1; i < points.size(); ++i) {
            distance = std::min(distance, DistanceToSegment(p, points[i - 1], points[i]));
        }
        return distance - width / 2.0;
    };
}

Shape Cross(cv::Point2d centre, double length, double width, double angle) {
    return Either(Rectangle(centre, {length, width}, angle), Rectangle(centre, {width, length}, angle));
}

Shape Either(Shape a, Shape b) {
    return [a = std::move(a), b = std::move(b)](const cv::Point2d& p) { return std::min(a(p), b(p)); };
}

Shape Both(Shape a, Shape b) {
    return [a = std::move(a), b = std::move(b)](const cv::Point2d& p) { return std::max(a(p), b(p)); };
}

Shape Without(Shape a, Shape b) {
    return [a = std::move(a), b = std::move(b)](const cv::Point2d& p) { return std::max(a(p), -b(p)); };
}

Shape Placed(Shape shape, double angle, cv::Point2d shift) {
    const Turn turn(angle);
    return [shape = std::move(shape), turn, shift](const cv::Point2d& p) { return shape(turn.Back(p - shift)); };
}

}  // namespace Quorvane::TestSupport
