#include "tests/reference/PlainHoleFilling.h"

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <queue>
#include <vector>

namespace Quorvane::Reference {

namespace {

using Contour = std::vector<cv::Point>;

std::vector<cv::Point> Region(const cv::Mat& lab, cv::Mat& visited, const cv::Point& start, double tolerance) {
    const cv::Vec3b seed = lab.at<cv::Vec3b>(start);
    std::vector<cv::Point> region;
    std::queue<cv::Point> queue;
    queue.push(start);
    visited.at<uchar>(start) = 255;
    while (!queue.empty()) {
        const cv::Point point = queue.front();
        queue.pop();
        region.push_back(point);
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                if (dx == 0 && dy == 0) continue;
                const cv::Point neighbour(point.x + dx, point.y + dy);
                if (!cv::Rect(cv::Point(0, 0), lab.size()).contains(neighbour)) continue;
                if (visited.at<uchar>(neighbour) != 0) continue;
                if (!(cv::norm(lab.at<cv::Vec3b>(neighbour), seed, cv::NORM_L2) <= tolerance)) continue;
                visited.at<uchar>(neighbour) = 255;
                queue.push(neighbour);
            }
        }
    }
    return region;
}

Contour Expanded(const Contour& contour, int pixels) {
    if (contour.empty()) return contour;
    const cv::Rect box = cv::boundingRect(contour);
    const cv::Point shift(pixels - box.x, pixels - box.y);
    Contour shifted = contour;
    for (cv::Point& point : shifted) point += shift;
    cv::Mat canvas = cv::Mat::zeros(box.height + 2 * pixels, box.width + 2 * pixels, CV_8UC1);
    cv::drawContours(canvas, std::vector<Contour>{shifted}, 0, cv::Scalar(255), cv::FILLED);
    const cv::Size side(2 * pixels + 1, 2 * pixels + 1);
    cv::Mat dilated;
    cv::dilate(canvas, dilated, cv::getStructuringElement(cv::MORPH_ELLIPSE, side), cv::Point(-1, -1), 1,
               cv::BORDER_CONSTANT, cv::morphologyDefaultBorderValue());
    std::vector<Contour> contours;
    cv::findContours(dilated, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    if (contours.empty()) return contour;
    for (cv::Point& point : contours[0]) point -= shift;
    return contours[0];
}

}  // namespace

cv::Mat LargeColourRegions(const cv::Mat& lab, double tolerance, int areaLimit) {
    cv::Mat mask = cv::Mat::zeros(lab.size(), CV_8UC1);
    cv::Mat visited = cv::Mat::zeros(lab.size(), CV_8UC1);
    for (int y = 0; y < lab.rows; ++y) {
        for (int x = 0; x < lab.cols; ++x) {
            if (visited.at<uchar>(y, x) != 0) continue;
            const std::vector<cv::Point> region = Region(lab, visited, {x, y}, tolerance);
            if (static_cast<int>(region.size()) <= areaLimit) continue;
            for (const cv::Point& point : region) mask.at<uchar>(point) = 255;
        }
    }
    return mask;
}

cv::Mat FillHoles(const cv::Mat& source, double colorTolerance, int areaLimit, int closeRadius, int expandRadius) {
    cv::Mat result = source.clone();
    if (source.empty()) return result;
    cv::Mat lab;
    cv::cvtColor(source, lab, cv::COLOR_BGR2Lab);
    const cv::Mat mask = LargeColourRegions(lab, colorTolerance, areaLimit);

    const cv::Size side(2 * closeRadius + 1, 2 * closeRadius + 1);
    cv::Mat closed;
    cv::morphologyEx(mask, closed, cv::MORPH_CLOSE, cv::getStructuringElement(cv::MORPH_ELLIPSE, side),
                     cv::Point(-1, -1), 1, cv::BORDER_CONSTANT, cv::morphologyDefaultBorderValue());
    cv::Mat holes;
    cv::subtract(closed, mask, holes);
    std::vector<Contour> contours;
    cv::findContours(holes, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    for (const Contour& contour : contours) {
        const double area = cv::contourArea(contour);
        if (!(area < areaLimit)) continue;
        const cv::Rect box = cv::boundingRect(contour);
        const int x = std::max(0, box.x - 10);
        const int y = std::max(0, box.y - 10);
        const cv::Rect around(x, y, std::min(box.width + 20, source.cols - x),
                              std::min(box.height + 20, source.rows - y));
        const cv::Scalar mean = cv::mean(result(around), mask(around));
        Contour painted = contour;
        if (area > 2.0 * expandRadius * expandRadius) painted = Expanded(contour, expandRadius);
        cv::drawContours(result, std::vector<Contour>{painted}, 0, mean, cv::FILLED, cv::LINE_8);
    }
    return result;
}

}  // namespace Quorvane::Reference
