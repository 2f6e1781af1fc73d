#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <opencv2/features2d.hpp>
#include <vector>

/// What the lens calibration and the rating of a single shot share: how a picture of a circle board is prepared, its
/// circles refined, and where they lie on the board.
namespace Quorvane::CameraCalibration {

/// The object grid of a board, row by row: (column*pitch, row*pitch, 0). Empty if either count is below 1.
std::vector<cv::Point3f> GenerateActualPositions(int columns, int rows, float pitch);

/// The grid step of all calibrations. A lens model does not depend on the board's size, so the unit of the world is
/// one grid step and never a millimetre.
constexpr float unitPitch = 1.0f;

/// Gray copy of a picture with one or three channels. Any other channel count gives `false`.
bool ToBoardGray(const cv::Mat& image, cv::Mat& gray);

/// The gray picture without the slow changes of its light: smoothed with edges kept, minus its background, plus 128.
cv::Mat EvenedImage(const cv::Mat& gray);

/// `cv::findCirclesGrid`, kept from patterns that bring it down: see the source. Those are not found.
bool FindCircleGrid(const cv::Mat& picture, cv::Size pattern, std::vector<cv::Point2f>& centers, int flags,
                    const cv::Ptr<cv::Feature2D>& blobDetector);

/// Looks for circles in a pattern and gives their centres.
using CircleSearch = std::function<bool(const cv::Mat& picture, cv::Size pattern, std::vector<cv::Point2f>& centers)>;

/// A board found in a picture: its circles there, and on the board.
struct BoardView {
    std::vector<cv::Point2f> centers;
    std::vector<cv::Point3f> positions;
};

/// Looks for a board upright, then with its rows and columns swapped, each time in the gray picture and then in the
/// evened one, and ends at the first success. The positions follow the swap.
bool FindBoardEitherWay(const cv::Mat& gray, cv::Size pattern, const CircleSearch& search, BoardView& view);

/// Moves the centres to sub-pixel positions in the gray picture.
void RefineCenters(const cv::Mat& gray, std::vector<cv::Point2f>& centers);

}  // namespace Quorvane::CameraCalibration
