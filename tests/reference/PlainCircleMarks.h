#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane::Reference {

struct CircleMark {
    cv::Point2f centre;
    double radius;
    double similarity;
};

/// What a search does to the picture and asks of the Hough transform, as plain numbers.
struct CircleSearch {
    int blurSide;
    bool sharpen;
    int openSide;
    int leastRadius;
    int greatestRadius;
};

/// The cleaned gray image on which the search works.
cv::Mat CleanedGray(const cv::Mat& source, const CircleSearch& search);

/// The Hough transform's candidates on a cleaned gray image.
std::vector<cv::Vec3f> CircleCandidates(const cv::Mat& gray, double radius, const CircleSearch& search);

/// The score of a candidate from its definition: a gray copy of the whole image for each, and the means of the rings
/// and the choice of the contour in loops.
float CircleMarkScore(const cv::Mat& gray, const cv::Vec3f& candidate);

/// All marks of a picture, in the order of the Hough transform.
std::vector<CircleMark> CircleMarks(const cv::Mat& source, double radius, double tolerance, double minSimilarity,
                                    const CircleSearch& search);

}  // namespace Quorvane::Reference
