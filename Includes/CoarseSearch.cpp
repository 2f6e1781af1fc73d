// A position passes the threshold only if few features are missing there: each response is at most 4, so of N features
// no more than (4 N - least passing sum) / 4 may find no response. Whether a feature is missing is one bit for each
// position (`ResponseBits`), and misses are counted for 128 positions at once (`MissCounter`).
//
// Neighbouring templates are first counted together: a feature is missing in all of a group's templates if its label
// is missing in the whole 4 by 4 square in which the templates have it, and that too is one bit for each position, of
// an image spread by 3 pixels more. Few blocks of positions stay open; there each template is counted on its own, and
// only where it may pass are its responses summed.
//
// The grid is searched as one flat array, as the similarity routines do: a template that hangs over the right edge goes
// on in the next row of the grid.

#include "Includes/CoarseSearch.h"

#include <algorithm>
#include <array>
#include <opencv2/core.hpp>
#include <opencv2/core/hal/intrin.hpp>

#include "Includes/HitRefinement.h"
#include "Includes/LabelVectors.h"
#include "Includes/MissCounter.h"
#include "Includes/ResponseBits.h"
#include "Includes/ResponseMaps.h"
#include "Includes/TemplateGroups.h"

namespace line2Dup {

namespace {

/// Positions at which responses are summed at once.
constexpr int positionsInSum = 16;
using Sixteen = std::array<uchar, positionsInSum>;

/// The image of the spread orientations, spread by `groupReach` pixels more to the right and downwards. What lies
/// beyond the right edge is what the flat grid has there: the beginning of the next row of blocks.
cv::Mat spreadFurther(const cv::Mat& spread) {
    cv::Mat extended = cv::Mat::zeros(spread.rows + groupReach, spread.cols + groupReach, CV_8U);
    spread.copyTo(extended(cv::Rect(cv::Point(), spread.size())));
    if (spread.rows > coarseStep) {
        const cv::Rect nextRow(0, coarseStep, groupReach, spread.rows - coarseStep);
        spread(nextRow).copyTo(extended(cv::Rect(cv::Point(spread.cols, 0), nextRow.size())));
    }
    const auto stride = [](const cv::Mat& image) { return static_cast<int>(image.step1()); };
    cv::Mat wide = cv::Mat::zeros(extended.rows, spread.cols, CV_8U);
    cv::Mat further = cv::Mat::zeros(spread.size(), CV_8U);
    for (int i = 0; i <= groupReach; ++i) {
        orRowsUnaligned(extended.ptr() + i, stride(extended), wide.ptr(), stride(wide), wide.cols, wide.rows);
    }
    for (int i = 0; i <= groupReach; ++i) {
        orRowsUnaligned(wide.ptr(i), stride(wide), further.ptr(), stride(further), further.cols, further.rows);
    }
    return further;
}

/// Place of a pixel in the linearised grid.
struct GridPlace {
    int phase;
    std::ptrdiff_t first;
};

GridPlace gridPlaceOf(int x, int y, int gridWidth) {
    return {(y % coarseStep) * coarseStep + x % coarseStep,
            static_cast<std::ptrdiff_t>(y / coarseStep) * gridWidth + x / coarseStep};
}

/// The number of positions, as a flat array, at which the template lies in the grid.
std::ptrdiff_t positionsOf(const ShapeTemplate& templ, cv::Size grid) {
    const int spanX = grid.width - ((templ.width - 1) / coarseStep + 1);
    const int spanY = grid.height - ((templ.height - 1) / coarseStep + 1);
    if (spanX <= 0 || spanY <= 0) return 0;
    const std::ptrdiff_t positions = static_cast<std::ptrdiff_t>(spanY) * grid.width + spanX + 1;
    return std::min(positions, static_cast<std::ptrdiff_t>(grid.area()));
}

std::ptrdiff_t mostPositions(const std::vector<ShapeTemplateLevels>& templates, const TemplateGroup& group,
                             cv::Size grid) {
    std::ptrdiff_t most = 0;
    for (std::size_t id = group.first; id < group.last; ++id) {
        most = std::max(most, positionsOf(templates[id].back(), grid));
    }
    return most;
}

/// Positions that may be read behind the last one: a template whose features keep within its size reads at most one
/// block and a row of the grid further than the grid goes.
std::ptrdiff_t reachOf(cv::Size grid) { return grid.width + positionsInBlock; }

/// The number of positions in whole blocks.
std::ptrdiff_t inBlocks(std::ptrdiff_t positions) {
    return (positions + positionsInBlock - 1) / positionsInBlock * positionsInBlock;
}

cv::Mat spreadOverBlocks(const cv::Mat& orientations) {
    cv::Mat spread;
    spreadOrientations(orientations, spread, coarseStep);
    return spread;
}

cv::Mat linearised(const cv::Mat& image) {
    cv::Mat result;
    linearize(image, result, coarseStep);
    return result;
}

/// Whether any percentage, 100 at most, can be above the threshold.
bool canBePassed(float threshold) {
    constexpr float fullPercentage = 100.0f;
    return fullPercentage > threshold;
}

/// A feature's spread orientations from the grid's first position on, as far as they go.
struct PlacedFeature {
    std::size_t label;
    const uchar* spread;
    std::ptrdiff_t count;
};

/// What is missing at sixteen positions: features without any response, and features without their own label.
struct Missing {
    Sixteen any{};
    Sixteen own{};
};

/// Adds what a feature misses at sixteen positions; behind the last position of the grid that is all.
void addSixteen(const PlacedFeature& feature, std::ptrdiff_t position, Missing& missing) {
    const uchar* spread = feature.spread + position;
    const std::ptrdiff_t available = feature.count - position;
    const uchar* own = ownOrientations[feature.label].data();
    const uchar* found = foundOrientations[feature.label].data();
#if CV_SIMD128
    if (available >= positionsInSum) {
        // A comparison that holds is 255, so subtracting it counts by one.
        const auto count = [&](Sixteen& counts, const uchar* wanted) {
            const cv::v_uint8x16 there = cv::v_and(cv::v_load(spread), cv::v_load(wanted));
            const cv::v_uint8x16 misses = cv::v_eq(there, cv::v_setzero_u8());
            cv::v_store(counts.data(), cv::v_sub_wrap(cv::v_load(counts.data()), misses));
        };
        count(missing.any, found);
        count(missing.own, own);
        return;
    }
#endif
    for (std::size_t i = 0; i < positionsInSum; ++i) {
        const int orientations = static_cast<std::ptrdiff_t>(i) < available ? spread[i] : 0;
        if ((orientations & found[i]) == 0) ++missing.any[i];
        if ((orientations & own[i]) == 0) ++missing.own[i];
    }
}

/// What the search of one class goes through, template by template, without allocating anew.
class TemplateSearch {
public:
    TemplateSearch(const cv::Mat& linearSpread, cv::Size grid, const ResponseBits& bits,
                   const ResponseBits& furtherBits, const uchar* neverMissing)
        : spread_(linearSpread), grid_(grid), bits_(bits), furtherBits_(furtherBits), neverMissing_(neverMissing) {}

    /// Sets the blocks up to `positions` in which any of the group's templates may miss no more than `allowed`
    /// features.
    void openBlocks(const TemplateGroup& group, int allowed, std::ptrdiff_t positions) {
        groupPositions_ = positions;
        open_.clear();
        arrays_.clear();
        for (const GroupFeature& feature : group.features) {
            if (feature.label < 0) {
                --allowed;
                continue;
            }
            const GridPlace place = gridPlaceOf(feature.x, feature.y, grid_.width);
            arrays_.add(bitsFrom(furtherBits_, feature.label, place),
                        bitsFrom(furtherBits_, feature.otherLabel, place));
        }
        arrays_.fillUp(neverMissing_);
        if (allowed < 0) return;
        const MissCounter counter(allowed);
        BlockMask mask{};
        for (std::ptrdiff_t block = 0; block * positionsInBlock < positions; ++block) {
            if (counter.hasOpen(arrays_, block, mask)) open_.push_back(block);
        }
    }

    bool hasOpenBlocks() const { return !open_.empty(); }

    /// Appends the candidates that one template has in the open blocks.
    void search(const ShapeTemplate& templ, int templateId, int allowed, int passingSum,
                std::vector<CoarseCandidate>& candidates) {
        const cv::Rect image(0, 0, grid_.width * coarseStep, grid_.height * coarseStep);
        features_.clear();
        arrays_.clear();
        for (const GradientFeature& feature : templ.features) {
            if (!image.contains({feature.x, feature.y})) {
                --allowed;
                continue;
            }
            const GridPlace place = gridPlaceOf(feature.x, feature.y, grid_.width);
            features_.push_back({static_cast<std::size_t>(feature.label), spread_.ptr(place.phase) + place.first,
                                 spread_.cols - place.first});
            const uchar* array = bitsFrom(bits_, feature.label, place);
            arrays_.add(array, array);
        }
        arrays_.fillUp(neverMissing_);
        if (allowed < 0) return;
        const MissCounter counter(allowed);
        const std::ptrdiff_t positions = positionsOf(templ, grid_);
        BlockMask mask{};
        for (const std::ptrdiff_t block : open_) {
            if (!counter.hasOpen(arrays_, block, mask)) continue;
            for (int part = 0; part < positionsInBlock / positionsInSum; ++part) {
                if (mask.bytes[2 * part] == 0 && mask.bytes[2 * part + 1] == 0) continue;
                const std::ptrdiff_t first = block * positionsInBlock + part * positionsInSum;
                addPassing(first, positions, passingSum, templateId, candidates);
            }
        }
    }

private:
    /// A feature far beyond its template's size counts as never missing, since its bits may not reach far enough. That
    /// opens too many positions at worst.
    const uchar* bitsFrom(const ResponseBits& bits, int label, const GridPlace& place) const {
        const bool reaches = place.first + inBlocks(groupPositions_) <= grid_.area() + reachOf(grid_);
        return reaches ? bits.from(label, place.phase, place.first) : neverMissing_;
    }

    void addPassing(std::ptrdiff_t first, std::ptrdiff_t positions, int passingSum, int templateId,
                    std::vector<CoarseCandidate>& candidates) const {
        Missing missing;
        for (const PlacedFeature& feature : features_) addSixteen(feature, first, missing);
        // A response is 3 for a neighbour of the label and one more for the label itself.
        const int greatest = fullResponse * static_cast<int>(features_.size());
        const std::ptrdiff_t count = std::min<std::ptrdiff_t>(positionsInSum, positions - first);
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            const auto k = static_cast<std::size_t>(i);
            if (greatest - neighbourResponse * missing.any[k] - missing.own[k] < passingSum) continue;
            const auto position = static_cast<int>(first + i);
            candidates.push_back(
                {templateId, {position % grid_.width * coarseStep, position / grid_.width * coarseStep}});
        }
    }

    const cv::Mat& spread_;
    cv::Size grid_;
    const ResponseBits& bits_;
    const ResponseBits& furtherBits_;
    const uchar* neverMissing_;
    std::ptrdiff_t groupPositions_ = 0;
    std::vector<std::ptrdiff_t> open_;
    std::vector<PlacedFeature> features_;
    MissArrays arrays_;
};

}  // namespace

CoarseSearch::CoarseSearch(const cv::Mat& orientations)
    : CoarseSearch(cv::Size(orientations.cols / coarseStep, orientations.rows / coarseStep),
                   spreadOverBlocks(orientations)) {}

CoarseSearch::CoarseSearch(cv::Size grid, const cv::Mat& spread) : CoarseSearch(grid, spread, linearised(spread)) {}

CoarseSearch::CoarseSearch(cv::Size grid, const cv::Mat& spread, const cv::Mat& linearSpread)
    : grid_(grid),
      bits_(linearSpread, reachOf(grid)),
      furtherBits_(linearised(spreadFurther(spread)), reachOf(grid)),
      neverMissing_(static_cast<std::size_t>(grid.area() / 8 + positionsInBlock)),
      linearSpread_(linearSpread) {}

void CoarseSearch::find(const std::vector<ShapeTemplateLevels>& templates, float threshold, const Taker& take) const {
    if (templates.empty() || !canBePassed(threshold)) return;
    TemplateSearch search(linearSpread_, grid_, bits_, furtherBits_, neverMissing_.data());
    std::vector<CoarseCandidate> candidates;
    for (const TemplateGroup& group : groupTemplates(templates, grid_ * coarseStep)) {
        const auto featureCount = static_cast<int>(group.features.size());
        const int passingSum = leastPassingSum(group.features.size(), threshold);
        if (passingSum > fullResponse * featureCount) continue;
        const int allowed = (fullResponse * featureCount - passingSum) / fullResponse;
        search.openBlocks(group, allowed, mostPositions(templates, group, grid_));
        if (!search.hasOpenBlocks()) continue;
        for (std::size_t id = group.first; id < group.last; ++id) {
            search.search(templates[id].back(), static_cast<int>(id), allowed, passingSum, candidates);
            if (candidates.size() < fullPortion) continue;
            take(candidates);
            candidates.clear();
        }
    }
    if (!candidates.empty()) take(candidates);
}

}  // namespace line2Dup
