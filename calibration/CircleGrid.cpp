#include "calibration/CircleGrid.h"

#include <algorithm>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/LastError.h"
#include "calibration/StopCriteria.h"

namespace Quorvane::CameraCalibration {

namespace {

// Sizes in pixels.
const cv::Size noiseWindow(5, 5);
constexpr int edgeKeepingDiameter = 9;
constexpr double edgeKeepingSigma = 50.0;   // of gray levels and of distance alike
const cv::Size backgroundWindow(151, 151);  // wider than a circle with its surroundings
constexpr double sigmaOfWindow = 0.0;       // OpenCV derives it from the window's size
constexpr double evenLevel = 128.0;         // the middle of the gray range
const cv::Size refinementHalfWindow(3, 3);
const cv::Size noDeadZone(-1, -1);

/// No picture has levels beyond this one. The edge-keeping filter computes places in a table from differences of levels
/// without a look whether they are numbers, and reads wild memory where they are not.
constexpr double mostLevel = 1e30;

/// A grid has a row or a column of at least two circles. For less the search drops circle after circle of the row that
/// it has found, until it reads from an empty list.
constexpr int leastLongerSide = 2;

/// No picture shows so many circles in a row. The search goes once over all circles for each one that is missing, and
/// so hardly ends for a number mistyped by a host.
constexpr int mostLongerSide = 10'000;

}  // namespace

std::vector<cv::Point3f> GenerateActualPositions(int columns, int rows, float pitch) {
    const auto lay = [&] {
        std::vector<cv::Point3f> positions;
        if (columns <= 0 || rows <= 0) return positions;
        positions.reserve(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                positions.emplace_back(static_cast<float>(column) * pitch, static_cast<float>(row) * pitch, 0.0f);
            }
        }
        return positions;
    };
    return ReportingExceptions("GenerateActualPositions", lay, [] { return std::vector<cv::Point3f>(); });
}

bool ToBoardGray(const cv::Mat& image, cv::Mat& gray) {
    if (image.channels() != 1 && image.channels() != 3) return false;
    CV_Assert(image.dims <= 2);
    if (image.channels() == 3) {
        cv::cvtColor(image, gray, cv::COLOR_BGR2GRAY);
    } else {
        gray = image.clone();
    }
    return true;
}

cv::Mat EvenedImage(const cv::Mat& gray) {
    if (gray.depth() == CV_32F) CV_Assert(cv::checkRange(gray, true, nullptr, -mostLevel, mostLevel));
    cv::Mat smooth;
    cv::GaussianBlur(gray, smooth, noiseWindow, sigmaOfWindow, sigmaOfWindow, cv::BORDER_DEFAULT);
    cv::Mat filtered;
    cv::bilateralFilter(smooth, filtered, edgeKeepingDiameter, edgeKeepingSigma, edgeKeepingSigma, cv::BORDER_DEFAULT);
    cv::Mat background;
    cv::GaussianBlur(filtered, background, backgroundWindow, sigmaOfWindow, sigmaOfWindow, cv::BORDER_DEFAULT);
    // One expression on purpose: in two steps the difference would lose its negative values before 128 is added.
    filtered = filtered - background + cv::Scalar(evenLevel);
    return filtered;
}

bool FindCircleGrid(const cv::Mat& picture, cv::Size pattern, std::vector<cv::Point2f>& centers, int flags,
                    const cv::Ptr<cv::Feature2D>& blobDetector) {
    const auto [shorter, longer] = std::minmax(pattern.width, pattern.height);
    // Numbers below zero are left to OpenCV to refuse.
    if (longer > mostLongerSide || (shorter >= 0 && longer < leastLongerSide)) return false;
    return cv::findCirclesGrid(picture, pattern, centers, flags, blobDetector);
}

bool FindBoardEitherWay(const cv::Mat& gray, cv::Size pattern, const CircleSearch& search, BoardView& view) {
    const cv::Mat evened = EvenedImage(gray);
    for (const cv::Size& tried : {pattern, cv::Size(pattern.height, pattern.width)}) {
        for (const cv::Mat& picture : {gray, evened}) {
            if (!search(picture, tried, view.centers)) continue;
            view.positions = GenerateActualPositions(tried.width, tried.height, unitPitch);
            return true;
        }
    }
    return false;
}

void RefineCenters(const cv::Mat& gray, std::vector<cv::Point2f>& centers) {
    cv::cornerSubPix(gray, centers, refinementHalfWindow, noDeadZone, StopCriteria());
}

}  // namespace Quorvane::CameraCalibration
