#include "tests/reference/PlainCircleMarks.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace Quorvane::Reference {

namespace {

cv::Mat WholeGray(const cv::Mat& image) {
    cv::Mat gray;
    switch (image.channels()) {
        case 1: gray = image.clone(); break;
        case 3: cv::cvtColor(image, gray, cv::COLOR_BGR2GRAY); break;
        case 4: cv::cvtColor(image, gray, cv::COLOR_BGRA2GRAY); break;
        default: break;
    }
    return gray;
}

double MeanUnder(const cv::Mat& image, const cv::Mat& mask) {
    double sum = 0.0;
    int count = 0;
    for (int r = 0; r < image.rows; ++r) {
        for (int c = 0; c < image.cols; ++c) {
            if (mask.at<uchar>(r, c) == 0) continue;
            sum += image.at<uchar>(r, c);
            ++count;
        }
    }
    return sum * (1.0 / count);
}

double ShapeOf(const std::vector<std::vector<cv::Point>>& contours, int radius) {
    std::size_t best = contours.size();
    double bestArea = 0.0;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        if (cv::contourArea(contours[i], false) > bestArea) {
            best = i;
            bestArea = cv::contourArea(contours[i], false);
        }
    }
    if (best == contours.size()) return 0.0;
    const double perimeter = cv::arcLength(contours[best], true);
    const double roundness = perimeter == 0.0 ? 0.0 : 12.566370614359172 * bestArea / (perimeter * perimeter);
    const double expected = radius * 6.283185307179586;
    double miss = std::abs(perimeter - expected);
    if (miss < 0.001) miss = 0.001;
    miss /= expected;
    if (miss > 1.0) miss = 1.0;
    return (roundness + 1.0 - miss) * 0.5;
}

}  // namespace

cv::Mat CleanedGray(const cv::Mat& source, const CircleSearch& search) {
    cv::Mat blurred;
    cv::GaussianBlur(WholeGray(source), blurred, cv::Size(search.blurSide, search.blurSide), 2.0, 2.0,
                     cv::BORDER_DEFAULT);
    cv::Mat sharpened = blurred;
    if (search.sharpen) {
        const cv::Mat kernel = (cv::Mat_<float>(3, 3) << 0, -1, 0, -1, 5, -1, 0, -1, 0);
        cv::filter2D(blurred, sharpened, CV_8U, kernel, cv::Point(1, 1), 0.0, cv::BORDER_DEFAULT);
    }
    const cv::Mat kernel = cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(search.openSide, search.openSide));
    cv::Mat eroded;
    cv::Mat opened;
    cv::erode(sharpened, eroded, kernel);
    cv::dilate(eroded, opened, kernel);
    return opened;
}

std::vector<cv::Vec3f> CircleCandidates(const cv::Mat& gray, double radius, const CircleSearch& search) {
    std::vector<cv::Vec3f> candidates;
    cv::HoughCircles(gray, candidates, cv::HOUGH_GRADIENT, 2.0, radius, 50.0, 25.0, search.leastRadius,
                     search.greatestRadius);
    return candidates;
}

float CircleMarkScore(const cv::Mat& gray, const cv::Vec3f& candidate) {
    const cv::Mat whole = WholeGray(gray);
    if (whole.empty()) return 0.0f;
    const int cx = cvRound(candidate[0]);
    const int cy = cvRound(candidate[1]);
    const int r = cvRound(candidate[2]);
    const int reach = r + r / 2;
    const int left = std::max(cx - reach, 0);
    const int top = std::max(cy - reach, 0);
    const cv::Rect rectangle(left, top, std::min(2 * reach, whole.cols - cx + reach),
                             std::min(2 * reach, whole.rows - cy + reach));
    cv::Mat patch = whole(rectangle).clone();

    double least = 0.0;
    double most = 0.0;
    cv::minMaxLoc(patch, &least, &most);
    if (least != most) patch = (patch - least) * (255.0 / (most - least));
    patch.convertTo(patch, CV_8U, 1.7000000476837158, -85.0);

    const int thickness = std::max(r / 5, 3);
    cv::Mat inner = cv::Mat::zeros(patch.size(), CV_8UC1);
    cv::Mat outer = cv::Mat::zeros(patch.size(), CV_8UC1);
    cv::circle(inner, cv::Point(cx - left, cy - top), r, cv::Scalar(255), thickness);
    cv::circle(outer, cv::Point(cx - left, cy - top), r + thickness, cv::Scalar(255), thickness);
    if (cv::countNonZero(inner) == 0 || cv::countNonZero(outer) == 0) return 0.0f;
    const double ringMean = MeanUnder(patch, inner);
    const double outerMean = MeanUnder(patch, outer);

    cv::Mat region;
    if (ringMean > outerMean) {
        cv::inRange(patch, cv::Scalar(ringMean), cv::Scalar(255.0), region);
    } else {
        cv::inRange(patch, cv::Scalar(0.0), cv::Scalar(ringMean), region);
    }
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(region, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    const double shape = ShapeOf(contours, r);

    const auto contrast = static_cast<float>(std::fabs(ringMean - outerMean));
    float contrastScore = 0.0f;
    if (contrast > 60.0f) {
        contrastScore = (contrast - 60.0f) / 194.0f * 0.5f + 0.5f;
    } else if (contrast > 0.0f) {
        contrastScore = contrast / 60.0f * 0.5f;
    }
    contrastScore = std::clamp(contrastScore, 0.0f, 1.0f);
    return static_cast<float>(static_cast<double>(contrastScore) * 0.3 + shape * 0.7);
}

std::vector<CircleMark> CircleMarks(const cv::Mat& source, double radius, double tolerance, double minSimilarity,
                                    const CircleSearch& search) {
    const cv::Mat gray = CleanedGray(source, search);
    std::vector<CircleMark> marks;
    for (const cv::Vec3f& candidate : CircleCandidates(gray, radius, search)) {
        const double found = candidate[2];
        if (found < radius - tolerance) continue;
        if (found > radius + tolerance) continue;
        const double score = CircleMarkScore(gray, candidate);
        const double similarity = score < 1.0 ? score : 1.0;
        if (similarity >= minSimilarity) marks.push_back({{candidate[0], candidate[1]}, found, similarity});
    }
    return marks;
}

}  // namespace Quorvane::Reference
