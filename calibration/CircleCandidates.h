#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <optional>
#include <vector>

namespace Quorvane::CameraCalibration {

/// Circles of a picture by the gradient Hough transform, in the order of their votes, with settings that follow the
/// picture: its noise chooses the blur, its strongest gradient the edge threshold, its count of edge pixels the votes
/// that a circle needs. Centres and radii are in pixels and good to about two of them. Between two centres there are
/// at least three quarters of the picture's longer side: of circles nearer to each other only the one with the most
/// votes is a candidate.
///
/// `image` is 8-bit with 1, 3 or 4 channels. OpenCV's exceptions pass: for an empty picture, for another depth or
/// channel count, and for a picture so flat that its strongest gradient gives the edge threshold 0.
void DetectCircleCandidates(const cv::Mat& image, std::vector<cv::Point2f>& centers, std::vector<double>& radii);

/// The candidate nearest the middle of a picture, among those with a radius above 20 pixels and a distance to it that
/// is less than the picture's longer side. Of several at the same distance it is the first.
std::optional<std::size_t> NearestCandidate(const cv::Size& picture, const std::vector<cv::Point2f>& centers,
                                            const std::vector<double>& radii);

}  // namespace Quorvane::CameraCalibration
