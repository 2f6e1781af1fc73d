#pragma once

#include <opencv2/core.hpp>
#include <vector>

/// Steps of `CalibrationMatchPointsForDualCam`.
namespace Quorvane::CameraCalibration {

/// The matches whose displacement, from the query's point in `keypoints2` to the train's point in `keypoints1`, lies in
/// the largest of `clusterCount` clusters of displacements; in their order. Of clusters of the same size the one wins
/// that is met first. Empty for fewer matches than clusters.
///
/// An exception of OpenCV, also one for a match that refers to no keypoint, becomes the last error and gives an empty
/// list.
std::vector<cv::DMatch> FilterMatches_VectorKMeansCluster(const std::vector<cv::DMatch>& matches,
                                                          const std::vector<cv::KeyPoint>& keypoints1,
                                                          const std::vector<cv::KeyPoint>& keypoints2,
                                                          int clusterCount);

/// The number of the cluster, from 0, that each vector belongs to. Begins with random centres, from OpenCV's generator
/// of this thread. Empty for fewer vectors than clusters. An exception of OpenCV becomes the last error and gives an
/// empty list.
std::vector<int> kMeansCluster(const std::vector<cv::Point2f>& vectors, int clusterCount);

}  // namespace Quorvane::CameraCalibration
