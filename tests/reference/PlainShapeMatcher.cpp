#include "tests/reference/PlainShapeMatcher.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace Quorvane::Reference {

using line2Dup::GradientFeature;
using line2Dup::MatchHit;
using line2Dup::ShapeTemplate;
using line2Dup::ShapeTemplateLevels;

namespace {

void CutCorner(ShapeTemplateLevels& levels) {
    int minX = INT_MAX;
    int minY = INT_MAX;
    int maxX = INT_MIN;
    int maxY = INT_MIN;
    for (const ShapeTemplate& level : levels) {
        const int factor = 1 << level.pyramidLevel;
        for (const GradientFeature& feature : level.features) {
            minX = std::min(minX, feature.x * factor);
            minY = std::min(minY, feature.y * factor);
            maxX = std::max(maxX, feature.x * factor);
            maxY = std::max(maxY, feature.y * factor);
        }
    }
    if (minX % 2 == 1) --minX;
    if (minY % 2 == 1) --minY;
    for (ShapeTemplate& level : levels) {
        level.width = (maxX - minX) >> level.pyramidLevel;
        level.height = (maxY - minY) >> level.pyramidLevel;
        level.tlX = minX >> level.pyramidLevel;
        level.tlY = minY >> level.pyramidLevel;
        for (GradientFeature& feature : level.features) {
            feature.x -= level.tlX;
            feature.y -= level.tlY;
        }
    }
}

float Percent(int raw, std::size_t features) {
    return static_cast<float>(raw) * 100.0f / static_cast<float>(4 * features);
}

struct Level {
    std::vector<cv::Mat> memories;
    cv::Size size;
    int T;
};

std::vector<Level> PrepareLevels(const MatcherSettings& settings, const cv::Mat& source, const cv::Mat& mask) {
    std::vector<Level> levels;
    cv::Mat image = source;
    cv::Mat imageMask = mask;
    for (const int T : settings.levelSteps) {
        if (!levels.empty()) {
            const cv::Size half(image.cols / 2, image.rows / 2);
            cv::Mat smaller;
            cv::pyrDown(image, smaller, half);
            image = smaller;
            if (!imageMask.empty()) {
                cv::Mat smallerMask;
                cv::resize(imageMask, smallerMask, half, 0.0, 0.0, cv::INTER_NEAREST);
                imageMask = smallerMask;
            }
        }
        const cv::Mat quantised = ComputeGradients(image, settings.weakThreshold).quantised;
        cv::Mat masked = cv::Mat::zeros(quantised.size(), CV_8U);
        quantised.copyTo(masked, imageMask);
        Level level{{}, masked.size(), T};
        for (const cv::Mat& map : ComputeResponseMaps(SpreadOrientations(masked, T))) {
            level.memories.push_back(Linearize(map, T));
        }
        levels.push_back(level);
    }
    return levels;
}

cv::Mat Everywhere(const Level& level, const ShapeTemplate& templ) {
    cv::Mat sums;
    if (templ.features.size() < 64) {
        line2Dup::similarity_64_simd_safe(level.memories, templ, sums, level.size, level.T);
        sums.convertTo(sums, CV_16U);
    } else {
        line2Dup::similarity_safe(level.memories, templ, sums, level.size, level.T);
    }
    return sums;
}

cv::Mat Around(const Level& level, const ShapeTemplate& templ, cv::Point centre) {
    cv::Mat sums;
    if (templ.features.size() < 64) {
        line2Dup::similarityLocal_64(level.memories, templ, sums, level.size, level.T, centre);
        sums.convertTo(sums, CV_16U);
    } else {
        line2Dup::similarityLocal(level.memories, templ, sums, level.size, level.T, centre);
    }
    return sums;
}

void Refine(MatchHit& hit, const Level& level, const ShapeTemplate& templ) {
    const int T = level.T;
    const int border = 8 * T;
    const int offset = T / 2 + T % 2 - 1;
    const int x = std::min(std::max(hit.x * 2 + 1, border), level.size.width - templ.width - border);
    const int y = std::min(std::max(hit.y * 2 + 1, border), level.size.height - templ.height - border);
    const cv::Mat sums = Around(level, templ, {x, y});
    float best = 0.0f;
    int bestR = -1;
    int bestC = -1;
    for (int r = 0; r < 16; ++r) {
        for (int c = 0; c < 16; ++c) {
            const float score = Percent(sums.at<ushort>(r, c), templ.features.size());
            if (score > best) {
                best = score;
                bestR = r;
                bestC = c;
            }
        }
    }
    double weight = 0.0;
    double sumR = 0.0;
    double sumC = 0.0;
    for (int r = bestR - 1; r <= bestR + 1; ++r) {
        for (int c = bestC - 1; c <= bestC + 1; ++c) {
            if (r < 0 || c < 0 || r >= 16 || c >= 16) continue;
            weight += sums.at<ushort>(r, c);
            sumR += sums.at<ushort>(r, c) * r;
            sumC += sums.at<ushort>(r, c) * c;
        }
    }
    const bool heavy = weight > 1e-5;
    const float subR = heavy ? static_cast<float>(sumR / weight) : static_cast<float>(bestR);
    const float subC = heavy ? static_cast<float>(sumC / weight) : static_cast<float>(bestC);
    hit.similarity = best;
    hit.x = (x / T - 8 + bestC) * T + offset;
    hit.y = (y / T - 8 + bestR) * T + offset;
    hit.subX = (static_cast<float>(x / T - 8) + subC) * static_cast<float>(T) + static_cast<float>(offset);
    hit.subY = (static_cast<float>(y / T - 8) + subR) * static_cast<float>(T) + static_cast<float>(offset);
}

}  // namespace

std::vector<cv::Mat> ComputeResponseMaps(const cv::Mat& spread) {
    // Eight blocks of 32: sixteen entries for the low nibble of a spread byte, sixteen for the high one.
    std::array<uchar, 256> table{};
    for (int label = 0; label < 8; ++label) {
        for (int nibble = 0; nibble < 16; ++nibble) {
            for (int bit = 0; bit < 8; ++bit) {
                if ((nibble >> (bit % 4) & 1) == 0) continue;
                const int around = std::abs(label - bit);
                const int distance = std::min(around, 8 - around);
                const int response = distance == 0 ? 4 : distance == 1 ? 3 : 0;
                uchar& entry = table[static_cast<std::size_t>(label * 32 + (bit / 4) * 16 + nibble)];
                entry = std::max(entry, static_cast<uchar>(response));
            }
        }
    }
    std::vector<cv::Mat> maps(8);
    for (std::size_t label = 0; label < 8; ++label) {
        maps[label].create(spread.size(), CV_8U);
        for (int r = 0; r < spread.rows; ++r) {
            for (int c = 0; c < spread.cols; ++c) {
                const std::size_t byte = spread.at<uchar>(r, c);
                maps[label].at<uchar>(r, c) =
                    std::max(table[label * 32 + (byte & 15u)], table[label * 32 + 16 + (byte >> 4)]);
            }
        }
    }
    return maps;
}

cv::Mat SpreadOrientations(const cv::Mat& source, int T) {
    cv::Mat spread = cv::Mat::zeros(source.size(), CV_8U);
    for (int r = 0; r < source.rows; ++r) {
        for (int c = 0; c < source.cols; ++c) {
            for (int y = r; y < std::min(r + T, source.rows); ++y) {
                for (int x = c; x < std::min(c + T, source.cols); ++x) {
                    spread.at<uchar>(r, c) = static_cast<uchar>(spread.at<uchar>(r, c) | source.at<uchar>(y, x));
                }
            }
        }
    }
    return spread;
}

cv::Mat Linearize(const cv::Mat& responseMap, int T) {
    const int width = responseMap.cols / T;
    cv::Mat linear(T * T, (responseMap.rows / T) * width, CV_8U);
    for (int r = 0; r < responseMap.rows; ++r) {
        for (int c = 0; c < responseMap.cols; ++c) {
            linear.at<uchar>((r % T) * T + c % T, (r / T) * width + c / T) = responseMap.at<uchar>(r, c);
        }
    }
    return linear;
}

cv::Mat SimilarityEverywhere(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Size size,
                             int T, bool fewFeatures) {
    const int W = size.width / T;
    const int H = size.height / T;
    cv::Mat sums = cv::Mat::zeros(H, W, CV_16U);
    const int spanX = W - ((templ.width - 1) / T + 1);
    const int spanY = H - ((templ.height - 1) / T + 1);
    const int least = fewFeatures ? 1 : 0;
    if (spanX < least || spanY < least) return sums;
    const int positions = std::min(spanY * W + spanX + 1, W * H);
    for (int p = 0; p < positions; ++p) {
        int sum = 0;
        for (const GradientFeature& feature : templ.features) {
            if (feature.x < 0 || feature.x >= size.width || feature.y < 0 || feature.y >= size.height) continue;
            const cv::Mat& memory = linearMemories[static_cast<std::size_t>(feature.label)];
            const int column = (feature.y / T) * W + feature.x / T + p;
            if (column < memory.cols) sum += memory.at<uchar>((feature.y % T) * T + feature.x % T, column);
        }
        sums.at<ushort>(p / W, p % W) = static_cast<ushort>(sum);
    }
    return sums;
}

cv::Mat SimilarityAround(const std::vector<cv::Mat>& linearMemories, const ShapeTemplate& templ, cv::Size size, int T,
                         cv::Point centre) {
    const int W = size.width / T;
    cv::Mat sums = cv::Mat::zeros(16, 16, CV_16U);
    for (const GradientFeature& feature : templ.features) {
        const int x = feature.x + (centre.x / T - 8) * T;
        const int y = feature.y + (centre.y / T - 8) * T;
        if (x < 0 || x >= size.width || y < 0 || y >= size.height) continue;
        const cv::Mat& memory = linearMemories[static_cast<std::size_t>(feature.label)];
        for (int r = 0; r < 16; ++r) {
            for (int c = 0; c < 16; ++c) {
                const int column = (y / T + r) * W + x / T + c;
                if (column >= memory.cols) continue;
                ushort& sum = sums.at<ushort>(r, c);
                sum = static_cast<ushort>(sum + memory.at<uchar>((y % T) * T + x % T, column));
            }
        }
    }
    return sums;
}

ShapeTemplateLevels RotateTemplate(const ShapeTemplateLevels& source, float theta, cv::Point2f centre) {
    const double angle = static_cast<double>(-theta / 180.0f) * 3.141592653589793;
    ShapeTemplateLevels rotated(source.size());
    for (std::size_t l = 0; l < source.size(); ++l) {
        if (l > 0) {
            centre.x /= 2.0f;
            centre.y /= 2.0f;
        }
        rotated[l].pyramidLevel = static_cast<int>(l);
        for (const GradientFeature& feature : source[l].features) {
            const float dx = static_cast<float>(feature.x + source[l].tlX) - centre.x;
            const float dy = static_cast<float>(feature.y + source[l].tlY) - centre.y;
            const auto x = static_cast<float>(static_cast<double>(dx) * std::cos(angle) -
                                              static_cast<double>(dy) * std::sin(angle));
            const auto y = static_cast<float>(static_cast<double>(dy) * std::cos(angle) +
                                              static_cast<double>(dx) * std::sin(angle));
            float direction = feature.theta - theta;
            while (direction > 360.0f) direction -= 360.0f;
            while (direction < 0.0f) direction += 360.0f;
            const int label = static_cast<int>(direction * 16.0f / 360.0f + 0.5f) & 7;
            rotated[l].features.push_back(
                {static_cast<int>(x + centre.x + 0.5f), static_cast<int>(y + centre.y + 0.5f), label, direction});
        }
    }
    CutCorner(rotated);
    return rotated;
}

TemplateClass TemplatesOf(const line2Dup::Detector& detector, const std::string& classId, int count) {
    TemplateClass templates{classId, {}};
    for (int id = 0; id < count; ++id) templates.second.push_back(detector.templateLevels(classId, id));
    return templates;
}

std::vector<MatchHit> MatchShapes(const MatcherSettings& settings, const std::vector<TemplateClass>& classes,
                                  const cv::Mat& source, float threshold, const cv::Mat& mask) {
    const std::vector<Level> levels = PrepareLevels(settings, source, mask);
    std::vector<MatchHit> hits;
    for (const TemplateClass& templates : classes) {
        for (std::size_t id = 0; id < templates.second.size(); ++id) {
            const ShapeTemplateLevels& templ = templates.second[id];
            const Level& coarsest = levels.back();
            const int offset = coarsest.T / 2 + coarsest.T % 2 - 1;
            const cv::Mat sums = Everywhere(coarsest, templ.back());
            std::vector<MatchHit> candidates;
            for (int r = 0; r < sums.rows; ++r) {
                for (int c = 0; c < sums.cols; ++c) {
                    const float score = Percent(sums.at<ushort>(r, c), templ.back().features.size());
                    if (score > threshold) {
                        candidates.push_back({c * coarsest.T + offset, r * coarsest.T + offset, score, templates.first,
                                              static_cast<int>(id), 0.0f, 0.0f});
                    }
                }
            }
            for (int l = static_cast<int>(levels.size()) - 2; l >= 0; --l) {
                std::vector<MatchHit> kept;
                for (MatchHit hit : candidates) {
                    Refine(hit, levels[static_cast<std::size_t>(l)], templ[static_cast<std::size_t>(l)]);
                    if (!(hit.similarity < threshold)) kept.push_back(hit);
                }
                candidates = kept;
            }
            hits.insert(hits.end(), candidates.begin(), candidates.end());
        }
    }
    std::stable_sort(hits.begin(), hits.end(), [](const MatchHit& a, const MatchHit& b) {
        return a.similarity != b.similarity ? a.similarity > b.similarity : a.templateId < b.templateId;
    });
    std::vector<MatchHit> distinct;
    for (const MatchHit& hit : hits) {
        const bool same = !distinct.empty() && distinct.back().x == hit.x && distinct.back().y == hit.y &&
                          distinct.back().similarity == hit.similarity && distinct.back().classId == hit.classId;
        if (!same) distinct.push_back(hit);
    }
    return distinct;
}

}  // namespace Quorvane::Reference
