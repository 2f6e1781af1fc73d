#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Includes/CoarseSearch.h"
#include "Includes/ColorGradient.h"
#include "Includes/Detector.h"
#include "Includes/FineLevel.h"
#include "Includes/HitRefinement.h"
#include "Includes/ShapeTemplate.h"
#include "Includes/WindowSums.h"

namespace line2Dup {

/// The search of `PlainSearch.h`, faster, for what jobs use it for: two levels with steps 1 and 2, no mask, a threshold
/// above 0, and templates of few features. The hits are the same in every field and in the same order.
class FastSearch {
public:
    /// Whether images like this one can be searched so.
    static bool takesImage(const cv::Mat& source, const cv::Mat& mask, const std::vector<int>& levelSteps,
                           float threshold);
    /// Whether all of these templates can be searched for so.
    static bool takesTemplates(const std::vector<ShapeTemplateLevels>& templates);

    FastSearch(const ColorGradient& modality, const cv::Mat& source);

    /// Appends the hits of all templates of a class, in the order of the templates. Of equal hits of one template that
    /// follow each other only the first is there.
    void matchClass(float threshold, std::vector<MatchHit>& hits, const std::string& classId,
                    const std::vector<ShapeTemplateLevels>& templates);

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    /// The window of one candidate, and what was found in it.
    struct Window {
        cv::Point centre;
        int templateId;
        std::size_t next;  // the next window of its cluster
        bool hit;          // whether the place reaches the threshold
        RefinedPlace place;
    };

    /// Windows of one template that lie near to each other.
    struct Cluster {
        int templateId;
        cv::Rect origins;   // the crop origins of all its windows
        bool inImage;       // whether no feature leaves the image in any of them
        std::size_t first;  // its windows
        std::size_t last;
    };

    void refineCandidates(const std::vector<CoarseCandidate>& candidates,
                          const std::vector<ShapeTemplateLevels>& templates, float threshold);
    void appendHits(std::vector<MatchHit>& hits, const std::string& classId) const;
    static bool isSameHit(const Window& a, const Window& b);
    void arrangeWindows(const std::vector<ShapeTemplateLevels>& templates,
                        const std::vector<CoarseCandidate>& candidates);
    void putIntoCluster(std::size_t window, int templateId, std::size_t firstCluster);
    void findClustersInImage(const std::vector<ShapeTemplateLevels>& templates);
    void refine(const Cluster& cluster, const ShapeTemplate& templ, float threshold);

    cv::Size size_;
    FineLevel fine_;
    CoarseSearch coarse_;
    WindowSums sums_;
    // Of the candidates at work: a window for each of them, and the clusters template by template.
    std::vector<Window> windows_;
    std::vector<Cluster> clusters_;
};

}  // namespace line2Dup
