#include "calibration/DualCameraMatching.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/Homography.h"
#include "calibration/ImageOrientation.h"
#include "calibration/LastError.h"

namespace Quorvane::CameraCalibration {

namespace {

/// A camera's pairs shift alike, and so gather in one cluster; what is wrong falls into the other.
constexpr int displacementClusters = 2;

/// What AKAZE finds in one picture.
struct Features {
    std::vector<cv::KeyPoint> keypoints;
    cv::Mat descriptors;
};

/// A match that passed the ratio test, with the displacement from picture 1 to picture 2.
struct Candidate {
    cv::DMatch match;
    double length;
    float absDy;
};

struct DisplacementMeans {
    double length = 0.0;
    float absDy = 0.0f;
};

/// The second conversion decides. Hosts' thresholds are tuned to its weights, which take blue for red, and gray
/// pictures are refused by it; a single conversion would change both.
cv::Mat FeatureGray(const cv::Mat& oriented) {
    cv::Mat gray;
    if (oriented.channels() == 3) {
        cv::cvtColor(oriented, gray, cv::COLOR_BGR2GRAY);
    } else if (oriented.channels() == 1) {
        gray = oriented.clone();
    }
    cv::cvtColor(oriented, gray, cv::COLOR_RGB2GRAY);
    return gray;
}

/// 255 inside the rectangle, 0 elsewhere. The corner moves into the picture without the width and height giving way; a
/// rectangle behind the picture's last column or row gets a negative size, which OpenCV refuses.
cv::Mat OverlapMask(cv::Size picture, const cv::Rect& roi) {
    const int x = std::max(roi.x, 0);
    const int y = std::max(roi.y, 0);
    const cv::Rect clipped(x, y, std::min(roi.width, picture.width - x), std::min(roi.height, picture.height - y));
    cv::Mat mask = cv::Mat::zeros(picture, CV_8U);
    mask(clipped).setTo(255);
    return mask;
}

/// Throws where a float picture holds a value that is not a number or beyond all brightness. The detector sorts
/// gradients into a table by their strength over the greatest one: where that overflows, it writes far outside the
/// table.
void RefuseUncountableGradients(const cv::Mat& gray) {
    constexpr double brightest = 1e17;  // 32 times that, the gain of the gradient, has a square that a float can hold
    constexpr bool quiet = false;
    if (gray.depth() == CV_32F) cv::checkRange(gray, quiet, nullptr, -brightest, brightest);
}

/// A black picture in place of a float one whose levels are all but the same. Either shows no feature, but the detector
/// divides by the square of a picture's contrast: where that vanishes, it finds features that lie nowhere and crashes.
cv::Mat BlackIfFaint(const cv::Mat& gray) {
    constexpr double faintest = 1e-6;  // of full brightness; features begin at some hundredths of it
    if (gray.depth() != CV_32F) return gray;
    double darkest = 0.0;
    double brightest = 0.0;
    cv::minMaxLoc(gray, &darkest, &brightest);
    if (brightest - darkest >= faintest) return gray;
    return cv::Mat::zeros(gray.size(), gray.type());
}

Features DetectFeatures(cv::AKAZE& detector, const cv::Mat& gray, const cv::Mat& mask) {
    RefuseUncountableGradients(gray);
    Features features;
    detector.detectAndCompute(BlackIfFaint(gray), mask, features.keypoints, features.descriptors, false);
    return features;
}

cv::Ptr<cv::AKAZE> MakeDetector() {
    constexpr int fullDescriptor = 0;
    constexpr int descriptorChannels = 3;
    constexpr float threshold = 0.001f;  // of the detector's response
    constexpr int octaves = 4;
    constexpr int layersPerOctave = 4;
    constexpr int unlimitedPoints = -1;
    return cv::AKAZE::create(cv::AKAZE::DESCRIPTOR_MLDB, fullDescriptor, descriptorChannels, threshold, octaves,
                             layersPerOctave, cv::KAZE::DIFF_PM_G2, unlimitedPoints);
}

/// The two nearest features of picture 1 (train) for each one of picture 2 (query).
std::vector<std::vector<cv::DMatch>> NearestTwo(const cv::Mat& descriptors1, const cv::Mat& descriptors2) {
    constexpr int tables = 12;
    constexpr int keyBits = 20;
    constexpr int probeLevel = 2;
    constexpr int checks = 32;
    constexpr float exact = 0.0f;
    constexpr bool sorted = true;
    cv::FlannBasedMatcher matcher(cv::makePtr<cv::flann::LshIndexParams>(tables, keyBits, probeLevel),
                                  cv::makePtr<cv::flann::SearchParams>(checks, exact, sorted));
    std::vector<std::vector<cv::DMatch>> nearest;
    matcher.knnMatch(descriptors2, descriptors1, nearest, 2, cv::noArray(), false);
    return nearest;
}

/// The matches whose best neighbour is clearly nearer than the second. The hash tables find fewer than two for some.
std::vector<Candidate> RatioTest(const std::vector<std::vector<cv::DMatch>>& nearest, double ratioThreshold,
                                 const std::vector<cv::KeyPoint>& keypoints1,
                                 const std::vector<cv::KeyPoint>& keypoints2) {
    std::vector<Candidate> candidates;
    for (const std::vector<cv::DMatch>& neighbours : nearest) {
        if (neighbours.size() < 2) continue;
        const cv::DMatch& best = neighbours[0];
        if (!(static_cast<double>(best.distance) < static_cast<double>(neighbours[1].distance) * ratioThreshold)) {
            continue;
        }
        const cv::Point2f& point1 = keypoints1[static_cast<std::size_t>(best.trainIdx)].pt;
        const cv::Point2f& point2 = keypoints2[static_cast<std::size_t>(best.queryIdx)].pt;
        candidates.push_back({best, Distance(point2, point1), std::abs(point2.y - point1.y)});
    }
    return candidates;
}

DisplacementMeans MeanDisplacement(const std::vector<Candidate>& candidates) {
    DisplacementMeans means;
    if (candidates.empty()) return means;
    for (const Candidate& candidate : candidates) {
        means.length += candidate.length;
        means.absDy += candidate.absDy;
    }
    means.length /= static_cast<double>(candidates.size());
    means.absDy /= static_cast<float>(candidates.size());
    return means;
}

/// The candidates that are displaced about as far as all of them are in the mean, and not much more in y.
std::vector<cv::DMatch> KeepNearTheMean(const std::vector<Candidate>& candidates, double yDeviationFactor,
                                        double lengthTolerance) {
    const DisplacementMeans means = MeanDisplacement(candidates);
    const float largestAbsDy = static_cast<float>(yDeviationFactor) * means.absDy;
    const double longest = (1.0 + lengthTolerance) * means.length;
    const double shortest = (1.0 - lengthTolerance) * means.length;
    std::vector<cv::DMatch> kept;
    for (const Candidate& candidate : candidates) {
        if (candidate.absDy <= largestAbsDy && candidate.length <= longest && candidate.length >= shortest) {
            kept.push_back(candidate.match);
        }
    }
    return kept;
}

/// The vectors from the query's point to the train's point, one per match.
std::vector<cv::Point2f> DisplacementVectors(const std::vector<cv::DMatch>& matches,
                                             const std::vector<cv::KeyPoint>& keypoints1,
                                             const std::vector<cv::KeyPoint>& keypoints2) {
    std::vector<cv::Point2f> vectors;
    for (const cv::DMatch& match : matches) {
        const auto train = static_cast<std::size_t>(match.trainIdx);
        const auto query = static_cast<std::size_t>(match.queryIdx);
        CV_Assert(train < keypoints1.size() && query < keypoints2.size());
        vectors.push_back(keypoints1[train].pt - keypoints2[query].pt);
    }
    return vectors;
}

/// The label that most carry; of several, the one that is met first.
int CommonestLabel(const std::vector<int>& labels) {
    std::map<int, int> counts;
    for (const int label : labels) ++counts[label];
    return *std::max_element(labels.begin(), labels.end(), [&](int a, int b) { return counts[a] < counts[b]; });
}

}  // namespace

std::vector<int> kMeansCluster(const std::vector<cv::Point2f>& vectors, int clusterCount) {
    const auto cluster = [&] {
        constexpr int iterations = 100;
        constexpr double smallestMove = 1.0;  // of a centre, in pixels
        constexpr int attempts = 3;
        std::vector<int> labels;
        if (static_cast<int>(vectors.size()) < clusterCount) return labels;
        const cv::TermCriteria criteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, iterations, smallestMove);
        cv::Mat centers;
        cv::kmeans(vectors, clusterCount, labels, criteria, attempts, cv::KMEANS_PP_CENTERS, centers);
        return labels;
    };
    return ReportingExceptions("kMeansCluster", cluster, [] { return std::vector<int>(); });
}

std::vector<cv::DMatch> FilterMatches_VectorKMeansCluster(const std::vector<cv::DMatch>& matches,
                                                          const std::vector<cv::KeyPoint>& keypoints1,
                                                          const std::vector<cv::KeyPoint>& keypoints2,
                                                          int clusterCount) {
    const auto filter = [&] {
        std::vector<cv::DMatch> filtered;
        const std::vector<int> labels =
            kMeansCluster(DisplacementVectors(matches, keypoints1, keypoints2), clusterCount);
        if (labels.empty()) return filtered;
        const int commonest = CommonestLabel(labels);
        for (std::size_t i = 0; i < matches.size(); ++i) {
            if (labels[i] == commonest) filtered.push_back(matches[i]);
        }
        return filtered;
    };
    return ReportingExceptions("FilterMatches_VectorKMeansCluster", filter, [] { return std::vector<cv::DMatch>(); });
}

bool CalibrationMatchPointsForDualCam(const cv::Mat& image1, const ImageDirFlags& dir1, const cv::Rect& roi1,
                                      const cv::Mat& image2, const ImageDirFlags& dir2, const cv::Rect& roi2,
                                      const double& ratioThreshold, const double& yDeviationFactor,
                                      const double& lengthTolerance, std::vector<cv::Point2f>& points1,
                                      std::vector<cv::Point2f>& points2) {
    return ReportingExceptions("CalibrationMatchPointsForDualCam", [&] {
        points1.clear();
        points2.clear();
        if (image1.empty() || image2.empty()) return FailWith(missingImagesText);
        const cv::Mat oriented1 = OrientImage(image1, dir1);
        const cv::Mat oriented2 = OrientImage(image2, dir2);
        const cv::Mat gray1 = FeatureGray(oriented1);
        const cv::Mat gray2 = FeatureGray(oriented2);
        const cv::Mat mask1 = OverlapMask(gray1.size(), roi1);
        const cv::Mat mask2 = OverlapMask(gray2.size(), roi2);

        const cv::Ptr<cv::AKAZE> detector = MakeDetector();
        const Features features1 = DetectFeatures(*detector, gray1, mask1);
        const Features features2 = DetectFeatures(*detector, gray2, mask2);
        const std::vector<std::vector<cv::DMatch>> nearest = NearestTwo(features1.descriptors, features2.descriptors);

        const std::vector<Candidate> candidates =
            RatioTest(nearest, ratioThreshold, features1.keypoints, features2.keypoints);
        const std::vector<cv::DMatch> kept = KeepNearTheMean(candidates, yDeviationFactor, lengthTolerance);
        const std::vector<cv::DMatch> pairs =
            FilterMatches_VectorKMeansCluster(kept, features1.keypoints, features2.keypoints, displacementClusters);
        for (const cv::DMatch& pair : pairs) {
            points2.push_back(features2.keypoints[static_cast<std::size_t>(pair.queryIdx)].pt);
            points1.push_back(features1.keypoints[static_cast<std::size_t>(pair.trainIdx)].pt);
        }
        return true;
    });
}

}  // namespace Quorvane::CameraCalibration
