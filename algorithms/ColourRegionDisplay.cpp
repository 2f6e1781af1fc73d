#include "algorithms/ColourRegionDisplay.h"

#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/highgui.hpp>
#include <opencv2/imgproc.hpp>

#include "algorithms/TargetExtraction.h"

namespace Quorvane {

namespace {

constexpr int windowWidth = 800;
constexpr int windowHeight = 600;

constexpr const char* growthWindow = "Debug - Processing Square";
constexpr const char* maskWindow = "Debug - Current Mask";
constexpr const char* finalMaskWindow = "Debug - Final Mask";
constexpr const char* allContoursWindow = "Debug - All Contours";
constexpr const char* finalContourWindow = "Debug - Final Contour";

// How long each step stays on the screen, in milliseconds. Zero waits for a key.
constexpr int squareDelay = 50;
constexpr int acceptedDelay = 100;
constexpr int untilKey = 0;

const cv::Scalar green(0, 255, 0);
const cv::Scalar blue(255, 0, 0);
const cv::Scalar red(0, 0, 255);
const cv::Scalar yellow(0, 255, 255);
const cv::Scalar cyan(255, 255, 0);

void OpenWindow(const char* title) {
    cv::namedWindow(title, cv::WINDOW_NORMAL);
    cv::resizeWindow(title, windowWidth, windowHeight);
}

void Show(const char* title, const cv::Mat& image) { cv::imshow(title, FitToWindow(image, windowWidth, windowHeight)); }

void Dot(cv::Mat& image, cv::Point centre, int radius, const cv::Scalar& colour) {
    cv::circle(image, centre, radius, colour, cv::FILLED);
}

void WriteSquare(const cv::Rect& square, double difference) {
    std::cout << difference << ", Position: (" << square.x << ", " << square.y << ")" << std::endl;
}

}  // namespace

ColourRegionDisplay::ColourRegionDisplay(const cv::Mat& image, cv::Point seed,
                                         const std::vector<cv::Point>& startPoints)
    : image_(image), growth_(image.clone()) {
    OpenWindow(growthWindow);
    OpenWindow(maskWindow);
    Dot(growth_, seed, 3, green);
    for (const cv::Point& point : startPoints) Dot(growth_, point, 2, blue);
}

void ColourRegionDisplay::Processing(const cv::Rect& square) {
    cv::Mat picture = growth_.clone();
    cv::rectangle(picture, square, red, 1);
    Show(growthWindow, picture);
    cv::waitKey(squareDelay);
}

void ColourRegionDisplay::Rejected(const cv::Rect& square, double difference) {
    std::cout << "Square rejected. Diff: ";
    WriteSquare(square, difference);
}

void ColourRegionDisplay::Accepted(const cv::Rect& square, double difference, const cv::Mat& mask) {
    std::cout << "Square " << ++acceptedCount_ << " accepted. Diff: ";
    WriteSquare(square, difference);
    Show(maskWindow, mask);
    cv::rectangle(growth_, square, yellow, 2);
    Show(growthWindow, growth_);
    cv::waitKey(acceptedDelay);
}

void ColourRegionDisplay::Queued(const cv::Rect& square) {
    Dot(growth_, {square.x + square.width / 2, square.y + square.height / 2}, 2, cyan);
}

cv::Mat ColourRegionDisplay::Closed(const cv::Mat& mask) const {
    std::cout << "Total squares accepted: " << acceptedCount_ << std::endl;
    cv::Mat closed;
    const cv::Mat element = cv::getStructuringElement(cv::MORPH_ELLIPSE, {3, 3});
    cv::morphologyEx(mask, closed, cv::MORPH_CLOSE, element, {-1, -1}, 1, cv::BORDER_CONSTANT);
    Show(finalMaskWindow, closed);
    return closed;
}

void ColourRegionDisplay::AllContours(const std::vector<std::vector<cv::Point>>& contours) {
    std::cout << "Found " << contours.size() << " contours" << std::endl;
    cv::Mat picture = image_.clone();
    for (std::size_t i = 0; i < contours.size(); ++i) {
        cv::drawContours(picture, contours, static_cast<int>(i), green, 2);
        std::cout << "Contour " << i << " area: " << cv::contourArea(contours[i]) << std::endl;
    }
    Show(allContoursWindow, picture);
}

void ColourRegionDisplay::NoContour() {
    std::cout << "No contours found!" << std::endl;
    cv::waitKey(untilKey);
}

void ColourRegionDisplay::FinalContour(const std::vector<cv::Point>& contour) {
    cv::Mat picture = image_.clone();
    cv::drawContours(picture, std::vector<std::vector<cv::Point>>{contour}, 0, red, 3);
    Show(finalContourWindow, picture);
    std::cout << "Press any key to close all windows..." << std::endl;
    cv::waitKey(untilKey);
    cv::destroyAllWindows();
}

}  // namespace Quorvane
