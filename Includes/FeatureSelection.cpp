#include "Includes/FeatureSelection.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <opencv2/imgproc.hpp>

#include "Includes/MatcherError.h"
#include "Includes/OrientationLabel.h"

namespace line2Dup {

namespace {

/// A feature is the strongest pixel of a square that reaches this far around it.
constexpr int suppressionRadius = 2;
/// A template needs more candidates than this.
constexpr std::size_t tooFewCandidates = 4;
/// Features that were closer than this many pixels would say the same thing twice.
constexpr float leastSpacing = 3.0f;

bool isStrongestAround(const cv::Mat& magnitude, int r, int c) {
    const float own = magnitude.at<float>(r, c);
    for (int y = r - suppressionRadius; y <= r + suppressionRadius; ++y) {
        const auto* row = magnitude.ptr<float>(y);
        for (int x = c - suppressionRadius; x <= c + suppressionRadius; ++x) {
            if (row[x] > own) return false;
        }
    }
    return true;
}

void excludeNeighbours(cv::Mat& valid, int r, int c) {
    for (int y = r - suppressionRadius; y <= r + suppressionRadius; ++y) {
        for (int x = c - suppressionRadius; x <= c + suppressionRadius; ++x) {
            if (y != r || x != c) valid.at<uchar>(y, x) = 0;
        }
    }
}

bool isFarFromAll(const GradientFeature& feature, const std::vector<GradientFeature>& others, float squaredSpacing) {
    return std::none_of(others.begin(), others.end(), [&](const GradientFeature& other) {
        const std::int64_t dx = feature.x - other.x;
        const std::int64_t dy = feature.y - other.y;
        return !(static_cast<float>(dx * dx + dy * dy) >= squaredSpacing);
    });
}

void addAllThatFit(const std::vector<FeatureCandidate>& candidates, float spacing,
                   std::vector<GradientFeature>& features) {
    for (const FeatureCandidate& candidate : candidates) {
        if (isFarFromAll(candidate.feature, features, spacing * spacing)) features.push_back(candidate.feature);
    }
}

}  // namespace

std::vector<FeatureCandidate> findCandidates(const ColorGradientPyramid& pyramid) {
    const cv::Mat& magnitude = pyramid.magnitude;
    cv::Mat mask;
    if (!pyramid.mask.empty() && !magnitude.empty()) {
        require(pyramid.mask.size() == magnitude.size(), "mask.empty() || mask.size() == magnitude.size()",
                "line2Dup::ColorGradientPyramid::extractFeatures");
        cv::erode(pyramid.mask, mask, cv::Mat(), cv::Point(-1, -1), 1, cv::BORDER_REPLICATE);
    }
    const float squaredThreshold = pyramid.strongThreshold * pyramid.strongThreshold;
    cv::Mat valid(magnitude.size(), CV_8U, cv::Scalar(255));
    std::vector<FeatureCandidate> candidates;
    for (int r = suppressionRadius; r < magnitude.rows - suppressionRadius; ++r) {
        for (int c = suppressionRadius; c < magnitude.cols - suppressionRadius; ++c) {
            if (!mask.empty() && mask.at<uchar>(r, c) == 0) continue;
            // Of equal neighbours the first one stays: it takes the others' validity away.
            if (valid.at<uchar>(r, c) == 0 || !isStrongestAround(magnitude, r, c)) continue;
            excludeNeighbours(valid, r, c);
            const float score = magnitude.at<float>(r, c);
            const uchar orientation = pyramid.quantised.at<uchar>(r, c);
            if (score > squaredThreshold && orientation != 0) {
                candidates.push_back({{c, r, getLabel(orientation), pyramid.rawAngle.at<float>(r, c)}, score});
            }
        }
    }
    return candidates;
}

bool selectFeatures(std::vector<FeatureCandidate> candidates, std::size_t wanted,
                    std::vector<GradientFeature>& features) {
    wanted = std::max<std::size_t>(wanted, 1);
    if (candidates.size() < wanted) {
        if (candidates.size() <= tooFewCandidates) {
            std::cout << "too few features, abort" << std::endl;
            return false;
        }
        std::cout << "have no enough features, exaustive mode" << std::endl;
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const FeatureCandidate& a, const FeatureCandidate& b) { return a.score > b.score; });
    const std::size_t spacing = candidates.size() / wanted + 1;
    selectScattered(candidates, features, wanted, static_cast<float>(spacing));
    return true;
}

void selectScattered(const std::vector<FeatureCandidate>& candidates, std::vector<GradientFeature>& features,
                     std::size_t wanted, float spacing) {
    features.clear();
    if (wanted <= 1) {
        if (!candidates.empty()) features.push_back(candidates.front().feature);
        return;
    }
    addAllThatFit(candidates, spacing, features);
    while (features.size() >= wanted) {
        features.clear();
        spacing += 1.0f;
        addAllThatFit(candidates, spacing, features);
    }
    spacing -= 1.0f;
    while (spacing >= leastSpacing) {
        addAllThatFit(candidates, spacing, features);
        if (features.size() >= wanted) return;
        spacing -= 1.0f;
    }
}

}  // namespace line2Dup
