#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Quorvane {

/// Shows the growth of a colour region in windows and tells it on standard output, for a person who wants to know why
/// a region became what it is. Needs a desktop, belongs on one thread, and waits for keys.
///
/// Windows: "Debug - Processing Square" and "Debug - Current Mask" during the growth, then "Debug - Final Mask",
/// "Debug - All Contours" and "Debug - Final Contour".
class ColourRegionDisplay {
public:
    ColourRegionDisplay(const cv::Mat& image, cv::Point seed, const std::vector<cv::Point>& startPoints);

    /// The square that is looked at next.
    void Processing(const cv::Rect& square);
    static void Rejected(const cv::Rect& square, double difference);
    /// `mask` holds the region so far, with this square.
    void Accepted(const cv::Rect& square, double difference, const cv::Mat& mask);
    /// A neighbour that waits for its turn.
    void Queued(const cv::Rect& square);

    /// The region with its gaps closed, which in this mode is used in place of the region.
    cv::Mat Closed(const cv::Mat& mask) const;

    void AllContours(const std::vector<std::vector<cv::Point>>& contours);
    /// Ends the display of a growth without result. The windows stay.
    static void NoContour();
    /// Ends the display and closes all windows.
    void FinalContour(const std::vector<cv::Point>& contour);

private:
    cv::Mat image_;
    cv::Mat growth_;  // the image with everything painted on it that stays
    int acceptedCount_ = 0;
};

}  // namespace Quorvane
