#include "tests/reference/PlainTargetExtraction.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <queue>

#include "algorithms/TargetExtraction.h"

namespace Quorvane::Reference {

std::vector<cv::Point> FindColourRegion(const cv::Mat& image, cv::Point seed, double maxDifference, int directionCount,
                                        int squareSize) {
    const int s = squareSize;
    const auto seedColour = image.at<cv::Vec3b>(seed);
    cv::Mat visited = cv::Mat::zeros((image.rows - 1 + s) / s, (image.cols - 1 + s) / s, CV_8U);
    cv::Mat mask = cv::Mat::zeros(image.size(), CV_8U);
    const cv::Rect grid({}, visited.size());

    for (int i = 0; i < directionCount; ++i) {
        const double angle = 2.0 * CV_PI * i / directionCount;
        int px = static_cast<int>(std::cos(angle) * 10.0 + seed.x);
        int py = static_cast<int>(std::sin(angle) * 10.0 + seed.y);
        px = std::min(std::max(px, 0), image.cols - 1);
        py = std::min(std::max(py, 0), image.rows - 1);
        const cv::Point start(px / s, py / s);
        if (!grid.contains(start) || visited.at<uchar>(start) != 0) continue;

        std::queue<cv::Point> waiting;
        visited.at<uchar>(start) = 255;
        waiting.push(start);
        while (!waiting.empty()) {
            const cv::Point square = waiting.front();
            waiting.pop();
            const int x = square.x * s;
            const int y = square.y * s;
            const cv::Rect bounds(x, y, std::min(image.cols - x, s), std::min(image.rows - y, s));
            double least = std::numeric_limits<double>::max();
            for (int r = bounds.y; r < bounds.y + bounds.height; ++r) {
                for (int c = bounds.x; c < bounds.x + bounds.width; ++c) {
                    const double difference = LabColourDistance(image.at<cv::Vec3b>(r, c), seedColour);
                    if (difference < least) least = difference;
                }
            }
            if (!(least < maxDifference)) continue;
            mask(bounds).setTo(255);
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    const cv::Point neighbour(square.x + dx, square.y + dy);
                    if (!grid.contains(neighbour) || visited.at<uchar>(neighbour) != 0) continue;
                    visited.at<uchar>(neighbour) = 255;
                    waiting.push(neighbour);
                }
            }
        }
    }

    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(mask, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    if (contours.empty()) return {};
    std::size_t largest = 0;
    double largestArea = 0.0;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        const double area = cv::contourArea(contours[i]);
        if (area > largestArea) {
            largestArea = area;
            largest = i;
        }
    }
    return contours[largest];
}

std::vector<cv::Point> ExpandContour(const cv::Mat& image, const std::vector<cv::Point>& contour, int distance) {
    if (contour.empty()) return contour;
    cv::Mat filled = cv::Mat::zeros(image.size(), CV_8U);
    cv::drawContours(filled, std::vector<std::vector<cv::Point>>{contour}, 0, cv::Scalar(255), -1, cv::LINE_8);
    cv::Mat distances;
    cv::distanceTransform(255 - filled, distances, cv::DIST_L2, 5, CV_32F);
    cv::Mat near = cv::Mat::zeros(image.size(), CV_8U);
    for (int r = 0; r < image.rows; ++r) {
        for (int c = 0; c < image.cols; ++c) {
            if (distances.at<float>(r, c) <= static_cast<float>(distance)) near.at<uchar>(r, c) = 255;
        }
    }
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(near, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    return contours.empty() ? contour : contours.front();
}

}  // namespace Quorvane::Reference
