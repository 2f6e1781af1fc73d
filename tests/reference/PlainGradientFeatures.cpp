#include "tests/reference/PlainGradientFeatures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace Quorvane::Reference {

using line2Dup::GradientFeature;

GradientImages ComputeGradients(const cv::Mat& source, float weakThreshold) {
    GradientImages images;
    cv::Mat blurred;
    cv::GaussianBlur(source, blurred, {7, 7}, 0.0, 0.0, cv::BORDER_REPLICATE);
    cv::Mat dx;
    cv::Mat dy;
    cv::Sobel(blurred, dx, CV_32F, 1, 0, 3, 1.0, 0.0, cv::BORDER_REPLICATE);
    cv::Sobel(blurred, dy, CV_32F, 0, 1, 3, 1.0, 0.0, cv::BORDER_REPLICATE);
    cv::Mat strongestDx(source.size(), CV_32F);
    cv::Mat strongestDy(source.size(), CV_32F);
    images.magnitude.create(source.size(), CV_32F);
    // Pixels of four channels are read as if they had three.
    const int channels = std::min(source.channels(), 3);
    for (int r = 0; r < source.rows; ++r) {
        for (int c = 0; c < source.cols; ++c) {
            const float* x = dx.ptr<float>(r) + c * channels;
            const float* y = dy.ptr<float>(r) + c * channels;
            int k = 0;
            for (int other = 1; other < channels; ++other) {
                if (x[other] * x[other] + y[other] * y[other] > x[k] * x[k] + y[k] * y[k]) k = other;
            }
            strongestDx.at<float>(r, c) = x[k];
            strongestDy.at<float>(r, c) = y[k];
            images.magnitude.at<float>(r, c) = x[k] * x[k] + y[k] * y[k];
        }
    }
    cv::phase(strongestDx, strongestDy, images.rawAngle, true);
    cv::Mat labels;
    images.rawAngle.convertTo(labels, CV_8U, 16.0 / 360.0);
    labels.row(0) = 0;
    labels.row(labels.rows - 1) = 0;
    labels.col(0) = 0;
    labels.col(labels.cols - 1) = 0;
    images.quantised = cv::Mat::zeros(source.size(), CV_8U);
    for (int r = 1; r < source.rows - 1; ++r) {
        for (int c = 1; c < source.cols - 1; ++c) {
            if (!(images.magnitude.at<float>(r, c) > weakThreshold * weakThreshold)) continue;
            std::array<int, 8> votes{};
            for (int i = -1; i <= 1; ++i) {
                for (int j = -1; j <= 1; ++j) ++votes[labels.at<uchar>(r + i, c + j) % 8u];
            }
            const auto most = std::max_element(votes.begin(), votes.end());
            if (*most >= 5) images.quantised.at<uchar>(r, c) = static_cast<uchar>(1 << (most - votes.begin()));
        }
    }
    return images;
}

std::vector<GradientFeature> ExtractFeatures(const GradientImages& images, const cv::Mat& mask, std::size_t wanted,
                                             float strongThreshold) {
    cv::Mat eroded;
    if (!mask.empty()) cv::erode(mask, eroded, cv::Mat(), {-1, -1}, 1, cv::BORDER_REPLICATE);
    struct Candidate {
        GradientFeature feature;
        float score;
    };
    std::vector<Candidate> candidates;
    cv::Mat valid(images.magnitude.size(), CV_8U, cv::Scalar(255));
    for (int r = 2; r < valid.rows - 2; ++r) {
        for (int c = 2; c < valid.cols - 2; ++c) {
            if (!eroded.empty() && eroded.at<uchar>(r, c) == 0) continue;
            float score = 0.0f;
            if (valid.at<uchar>(r, c) != 0) {
                score = images.magnitude.at<float>(r, c);
                const cv::Rect around(c - 2, r - 2, 5, 5);
                double most = 0.0;
                cv::minMaxLoc(images.magnitude(around), nullptr, &most);
                if (static_cast<float>(most) > score) {
                    score = 0.0f;
                } else {
                    valid(around) = 0;
                    valid.at<uchar>(r, c) = 255;
                }
            }
            const int orientation = images.quantised.at<uchar>(r, c);
            if (score > strongThreshold * strongThreshold && orientation > 0) {
                const int label = static_cast<int>(std::lround(std::log2(orientation)));
                candidates.push_back({{c, r, label, images.rawAngle.at<float>(r, c)}, score});
            }
        }
    }
    std::vector<GradientFeature> features;
    if (candidates.size() < wanted && candidates.size() <= 4) return features;
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
    auto spacing = static_cast<float>(candidates.size() / wanted + 1);
    bool widening = true;
    while (true) {
        for (const Candidate& candidate : candidates) {
            bool far = true;
            for (const GradientFeature& other : features) {
                const int dx = candidate.feature.x - other.x;
                const int dy = candidate.feature.y - other.y;
                far = far && static_cast<float>(dx * dx + dy * dy) >= spacing * spacing;
            }
            if (far) features.push_back(candidate.feature);
        }
        if (widening && features.size() >= wanted) {
            features.clear();
            spacing += 1.0f;
            continue;
        }
        if (!widening && features.size() >= wanted) return features;
        widening = false;
        spacing -= 1.0f;
        if (spacing < 3.0f) return features;
    }
}

}  // namespace Quorvane::Reference
