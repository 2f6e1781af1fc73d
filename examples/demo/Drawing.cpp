#include "examples/demo/Drawing.h"

#include <opencv2/imgproc.hpp>

#include "examples/demo/Report.h"

namespace Demo {

namespace {

// Blue, green, red.
const cv::Scalar caliperColour(200, 160, 0);
const cv::Scalar fitColour(0, 255, 0);
const cv::Scalar pointColour(0, 0, 255);
const cv::Scalar truthColour(255, 160, 0);

constexpr int markerSize = 14;  // pixels of the drawing

}  // namespace

Drawing::Drawing(const cv::Mat& picture, const cv::Rect& part, int factor)
    : image_(Magnified(picture, part, factor)), corner_(part.tl()), factor_(factor) {
    if (image_.channels() == 1) cv::cvtColor(image_, image_, cv::COLOR_GRAY2BGR);
}

void Drawing::Arrow(const cv::Point2d& from, const cv::Point2d& to) {
    constexpr double tipLength = 6.0;
    const double length = cv::norm(At(to) - At(from));
    cv::arrowedLine(image_, At(from), At(to), caliperColour, 1, cv::LINE_AA, 0, tipLength / length);
}

void Drawing::Rectangle(const cv::Point2d& center, const cv::Point2d& half) {
    cv::rectangle(image_, At(center - half), At(center + half), caliperColour, 1, cv::LINE_AA);
}

void Drawing::Points(const std::vector<cv::Point2f>& points) {
    for (const cv::Point2f& p : points) cv::circle(image_, At(p), 2, pointColour, cv::FILLED, cv::LINE_AA);
}

void Drawing::Cross(const cv::Point2d& p) {
    cv::drawMarker(image_, At(p), pointColour, cv::MARKER_CROSS, markerSize, 1, cv::LINE_AA);
}

void Drawing::Truth(const cv::Point2d& p) {
    cv::drawMarker(image_, At(p), truthColour, cv::MARKER_TILTED_CROSS, markerSize, 1, cv::LINE_AA);
}

void Drawing::Fit(const Quorvane::Line& line, float reach) {
    cv::Point2f from;
    cv::Point2f to;
    line.getEndPoints(from, to, reach);
    cv::line(image_, At(from), At(to), fitColour, 1, cv::LINE_AA);
}

void Drawing::Fit(const cv::Point2d& center, double radius) {
    cv::circle(image_, At(center), cvRound(radius * factor_), fitColour, 1, cv::LINE_AA);
}

void Drawing::Fit(const std::vector<cv::Point2f>& curve) {
    std::vector<cv::Point> polyline;
    polyline.reserve(curve.size());
    for (const cv::Point2f& p : curve) polyline.push_back(At(p));
    cv::polylines(image_, polyline, false, fitColour, 1, cv::LINE_AA);
}

/// The centre of a pixel lies in the middle of its enlarged square.
cv::Point Drawing::At(const cv::Point2d& p) const {
    const cv::Point2d q = (p - cv::Point2d(corner_)) * factor_ + cv::Point2d(1.0, 1.0) * ((factor_ - 1) / 2.0);
    return {cvRound(q.x), cvRound(q.y)};
}

}  // namespace Demo
