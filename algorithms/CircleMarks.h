#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane {

/// Finds round marks of a known radius. Candidates come from OpenCV's Hough transform for circles on a cleaned gray
/// image; `CircleMarkScore` on that same cleaned image decides which of them is a mark.
///
/// `source` is an 8-bit image of 1, 3 (blue, green, red) or 4 (blue, green, red, alpha) channels, which stays as it
/// is. `radius` and `tolerance` are pixels: a mark's radius lies in `radius` minus to plus `tolerance`, both limits
/// included. `minSimilarity` is the least score of a mark.
///
/// The three lists, empty when handed in, receive the marks in the order of the Hough transform, which is that of
/// falling support by edge pixels; index i of all three belongs to one mark. Centres and radii are pixels, the centre
/// of the first pixel being (0, 0); similarities are 0 to 1. A centre is the middle of a cell of the accumulator, which
/// is 2 pixels wide: its coordinates are odd whole numbers.
///
/// Other depths and channel counts end in the `cv::Exception` that OpenCV has for them. The same is thrown for an
/// image that is narrower or lower than a candidate's patch (see `CircleMarkScore`).
void FindCircleMarks(const cv::Mat& source, double radius, double tolerance, double minSimilarity,
                     std::vector<cv::Point2f>& centres, std::vector<double>& radii, std::vector<double>& similarities);

/// How well a candidate (x, y, radius in pixels) passes for a round mark: 0 for not at all, about 1 for a mark that is
/// perfectly round, of the expected circumference and in full contrast. Nothing limits it to 1.
///
/// The score looks at a patch of half a radius around the candidate, stretched to full contrast:
/// - 70 percent are shape: the largest region on the mark's side of the ring's own mean brightness, by its roundness
///   4 pi area / perimeter^2 (the isoperimetric quotient) and by how far its perimeter is from 2 pi radius;
/// - 30 percent are contrast: the mean brightness of the ring against that of a ring just outside of it.
///
/// `gray` is an 8-bit image of 1, 3 or 4 channels; other channel counts give 0. A patch that would leave the image at
/// the right or bottom ends there; one that would leave it at the left or top is moved inward without being cut, so
/// that its rings are no longer in its middle. An image that is too small for a patch moved so gives a `cv::Exception`.
float CircleMarkScore(const cv::Mat& gray, const cv::Vec3f& candidate);

/// `image` in its own depth with the brightness `low` at 0 and `high` at 255. An empty matrix if `low` is not below
/// `high`.
cv::Mat StretchRange(const cv::Mat& image, float low, float high);

}  // namespace Quorvane
