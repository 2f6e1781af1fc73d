#include <algorithm>
#include <cstdint>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect/aruco_detector.hpp>
#include <opencv2/objdetect/charuco_detector.hpp>

#include "TruncateToInt.h"
#include "calibration/CameraCalibration.h"
#include "calibration/LastError.h"
#include "calibration/ShotQuality.h"

namespace Quorvane::CameraCalibration {

namespace {

/// Every board of these machines carries markers of this set.
constexpr auto markerSet = cv::aruco::DICT_7X7_250;

constexpr float millimetresPerMetre = 1000.0f;
constexpr float millimetresPerInch = 25.4f;

// The marker image.
constexpr double white = 255.0;
constexpr int neighbourhood = 21;     // pixels
constexpr double belowItsMean = 7.0;  // gray levels
constexpr double thresholdIsChosen = 0.0;

// The marker detector.
constexpr int refinementWindow = 15;  // pixels
constexpr int refinementSteps = 100;
constexpr double leastMarkerDistance = 0.01;  // share of the smaller marker's perimeter

// Both detectors: how a rejected candidate may turn out to be a marker of the board after all.
constexpr float mostCornerShift = 10.0f;      // pixels
constexpr float errorCorrectionShare = 3.0f;  // of the bits that the dictionary can correct
constexpr bool tryAllCornerOrders = true;

/// A chessboard corner counts with both of its markers alone.
constexpr int markersPerCorner = 2;

/// A shot shows at least this share of the markers (half of the squares carry one).
constexpr double leastMarkerShare = 0.8;
constexpr std::size_t leastChessboardCorners = 4;

const cv::Scalar cornerColour(255, 0, 0, 0);

/// No board has fewer squares in a row or a column.
constexpr int leastSquares = 2;

/// Many times more than the marker set has markers for.
constexpr std::int64_t mostSquares = 10'000;

/// Lengths in millimetres; the board's own unit is the metre.
cv::aruco::CharucoBoard BoardOf(int squaresX, int squaresY, float squareLength, float markerLength,
                                const cv::aruco::Dictionary& dictionary) {
    return cv::aruco::CharucoBoard(cv::Size(squaresX, squaresY), squareLength / millimetresPerMetre,
                                   markerLength / millimetresPerMetre, dictionary, cv::noArray());
}

/// What is bright among its neighbours and bright in the whole picture.
///
/// A one-channel picture is overwritten with the result: the working image shares its elements. Hosts know this and
/// show the thresholded picture to the operator, so it is kept.
cv::Mat MarkerImage(cv::InputArray image) {
    CV_Assert(image.dims() <= 2);
    cv::Mat working;
    if (image.channels() == 3) {
        cv::cvtColor(image, working, cv::COLOR_BGR2GRAY);
    } else {
        working = image.getMat();
    }
    cv::Mat locallyBright;
    cv::adaptiveThreshold(working, locallyBright, white, cv::ADAPTIVE_THRESH_GAUSSIAN_C, cv::THRESH_BINARY,
                          neighbourhood, belowItsMean);
    cv::Mat bright;
    cv::threshold(working, bright, thresholdIsChosen, white, cv::THRESH_OTSU);
    cv::bitwise_and(locallyBright, bright, working);
    return working;
}

cv::aruco::RefineParameters RefinementSettings() {
    return cv::aruco::RefineParameters(mostCornerShift, errorCorrectionShare, tryAllCornerOrders);
}

cv::aruco::ArucoDetector MarkerDetector(const cv::aruco::Dictionary& dictionary) {
    cv::aruco::DetectorParameters settings;
    settings.cornerRefinementMethod = cv::aruco::CORNER_REFINE_APRILTAG;
    settings.cornerRefinementWinSize = refinementWindow;
    settings.cornerRefinementMaxIterations = refinementSteps;
    settings.minMarkerDistanceRate = leastMarkerDistance;
    return cv::aruco::ArucoDetector(dictionary, settings, RefinementSettings());
}

/// The markers' settings above are not for this one.
cv::aruco::CharucoDetector BoardDetector(const cv::aruco::CharucoBoard& board) {
    cv::aruco::CharucoDetector detector(board, cv::aruco::CharucoParameters(), cv::aruco::DetectorParameters(),
                                        RefinementSettings());
    cv::aruco::CharucoParameters settings;
    settings.minMarkers = markersPerCorner;
    settings.tryRefineMarkers = true;
    detector.setCharucoParameters(settings);
    return detector;
}

struct Markers {
    std::vector<std::vector<cv::Point2f>> corners;
    std::vector<int> ids;
};

/// None in a picture that holds not one of the detector's tiles: there it reads in front of its memory, unless it
/// refuses the picture as too long.
Markers DetectMarkers(const cv::aruco::ArucoDetector& detector, const cv::Mat& markerImage) {
    constexpr int tileSide = 4;  // pixels
    constexpr int longestSide = 32767;
    Markers markers;
    const auto [shorter, longer] = std::minmax(markerImage.cols, markerImage.rows);
    if (shorter < tileSide && longer <= longestSide) return markers;
    detector.detectMarkers(markerImage, markers.corners, markers.ids);
    return markers;
}

std::int64_t SquareCount(int squaresX, int squaresY) { return static_cast<std::int64_t>(squaresX) * squaresY; }

std::int64_t LeastMarkerCount(int squaresX, int squaresY) {
    const std::int64_t markerCount = SquareCount(squaresX, squaresY) / 2;
    return static_cast<std::int64_t>(static_cast<double>(markerCount) * leastMarkerShare);
}

/// The corners of all markers, in the picture and on the board. A marker that is not on the board adds to the picture's
/// list alone; the calibration then refuses the two lists.
void CollectCorners(const Markers& markers, const cv::aruco::CharucoBoard& board, std::vector<cv::Point2f>& imagePoints,
                    std::vector<cv::Point3f>& objectPoints) {
    const std::vector<std::vector<cv::Point3f>>& onBoard = board.getObjPoints();
    for (std::size_t i = 0; i < markers.ids.size(); ++i) {
        const auto id = static_cast<std::size_t>(markers.ids[i]);
        for (std::size_t corner = 0; corner < markers.corners[i].size(); ++corner) {
            imagePoints.push_back(markers.corners[i][corner]);
            if (id < onBoard.size()) objectPoints.push_back(onBoard[id][corner]);
        }
    }
}

}  // namespace

bool FindChArUcoBoard(cv::InputArray image, int squaresX, int squaresY, float squareLength, float markerLength,
                      bool fisheyeModel, std::vector<cv::Point2f>& imagePoints, std::vector<cv::Point3f>& objectPoints,
                      std::vector<int>& charucoIds, double& quality, cv::InputOutputArray outImage,
                      bool refineMarkers) {
    const auto takeAgain = [&] {
        quality = noQuality;
        return FailWith(ReshootText("FindChArUcoBoard"));
    };
    const auto find = [&] {
        charucoIds.clear();
        imagePoints.clear();
        objectPoints.clear();
        if (image.empty()) return FailWith("[FindChArUcoBoard] : Image is empty!");
        const cv::Mat markerImage = MarkerImage(image);

        const cv::aruco::Dictionary dictionary = cv::aruco::getPredefinedDictionary(markerSet);
        // A smaller board of the same squares refuses what the board would refuse.
        BoardOf(std::min(squaresX, leastSquares), std::min(squaresY, leastSquares), squareLength, markerLength,
                dictionary);
        const cv::aruco::ArucoDetector markerDetector = MarkerDetector(dictionary);
        Markers markers = DetectMarkers(markerDetector, markerImage);
        const auto found = static_cast<std::int64_t>(markers.ids.size());
        if (found < LeastMarkerCount(squaresX, squaresY)) return takeAgain();
        // Laid only now: OpenCV's time for a board grows with the square of its squares, and a number mistyped by a
        // host is not to take the machine's memory. Here a picture shows nearly as many.
        const cv::aruco::CharucoBoard board = BoardOf(squaresX, squaresY, squareLength, markerLength, dictionary);
        const cv::aruco::CharucoDetector boardDetector = BoardDetector(board);
        if (refineMarkers) {
            // Deliberately without candidates, so that no marker is added: hosts compare the ratings of shots with each
            // other, and these hang on the markers used.
            std::vector<std::vector<cv::Point2f>> noCandidates;
            markerDetector.refineDetectedMarkers(markerImage, board, markers.corners, markers.ids, noCandidates);
        }

        std::vector<cv::Point2f> chessboardCorners;
        boardDetector.detectBoard(markerImage, chessboardCorners, charucoIds, markers.corners, markers.ids);
        CollectCorners(markers, board, imagePoints, objectPoints);
        if (board.getChessboardSize().area() < 1 || charucoIds.size() < leastChessboardCorners) return takeAgain();

        image.copyTo(outImage);
        cv::aruco::drawDetectedCornersCharuco(outImage, chessboardCorners, charucoIds, cornerColour);

        quality = fisheyeModel ? FisheyeShotQuality(objectPoints, imagePoints, markerImage.size())
                               : PinholeShotQuality(objectPoints, imagePoints, markerImage.size());
        return true;
    };
    return ReportingExceptions("FindChArUcoBoard", find, [&] {
        quality = noQuality;
        return false;
    });
}

cv::Mat GenerateChArUcoBoard(const std::string& fileName, const int& squaresX, const int& squaresY,
                             const float& squareLength, const float& markerLength, cv::aruco::Dictionary& dictionary,
                             cv::aruco::CharucoBoard& board, int dpi) {
    constexpr int noMargin = 0;
    constexpr int borderBits = 1;
    dictionary = cv::aruco::getPredefinedDictionary(markerSet);
    // OpenCV refuses boards with more markers than the set has, but only after it has laid them.
    CV_Assert(SquareCount(squaresX, squaresY) <= mostSquares);
    board = BoardOf(squaresX, squaresY, squareLength, markerLength, dictionary);
    const float scale = static_cast<float>(dpi) / millimetresPerInch;
    const cv::Size size(TruncateToInt(static_cast<float>(squaresX) * squareLength * scale),
                        TruncateToInt(static_cast<float>(squaresY) * squareLength * scale));
    cv::Mat image;
    board.generateImage(size, image, noMargin, borderBits);
    cv::imwrite(fileName, image, {cv::IMWRITE_TIFF_XDPI, dpi, cv::IMWRITE_TIFF_YDPI, dpi});
    return image;
}

}  // namespace Quorvane::CameraCalibration
