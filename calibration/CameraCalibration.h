#pragma once

#include <opencv2/core.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/objdetect/aruco_board.hpp>
#include <opencv2/objdetect/aruco_dictionary.hpp>
#include <string>
#include <vector>

#include "QuorvaneExport.h"

/// Calibration of the machine's cameras.
///
/// Every function tells its failure by `false` (or by a value that stands for it) and leaves a text for people in the
/// last error. The order of work is: pictures of a circle board -> `CalibrateDistortedCamera` ->
/// `SaveCameraParameters`; later `LoadCameraParameters` -> `UnDistortedImage` for each picture.
///
///     cv::Mat K, D;
///     double rms = 0.0;
///     if (!CalibrateDistortedCamera(pictures, {9, 6}, K, D, rms) || !SaveCameraParameters("lens.yml", K, D, rms)) {
///         show(GetLastError());
///     }
///
/// Image coordinates are pixels, x to the right and y down, with the centre of the first pixel at (0, 0).
/// Only `cv::Exception` is caught; its text stands in the last error behind the function's name in brackets.
namespace Quorvane::CameraCalibration {

/// A copy of the last error. Empty until the first failure; no success ever clears it, so it tells what went wrong only
/// after a call that failed. It is one text for the whole process, without a lock.
QUORVANE_EXPORT std::string GetLastError();

// ---------------------------------------------------------------------------------------------------------------------
// Calibration files: `cv::FileStorage` documents, YAML, XML or JSON by the file name's ending (YAML by default).
// ---------------------------------------------------------------------------------------------------------------------

/// Writes the nodes `K`, `D` and `rms`, in this order. The matrices are written as they are, of any size and type.
/// Last error: "Failed to open file for writing: " and the file name.
QUORVANE_EXPORT bool SaveCameraParameters(const std::string& fileName, const cv::Mat& K, const cv::Mat& D,
                                          const double& rms);

/// Reads what `SaveCameraParameters` wrote. On failure no output is touched.
/// Last error: "Failed to open file for reading: " and the file name; or "This file has been corrupted, and the data
/// cannot be read : " and the file name where a node is missing; or the parser's text for a malformed document.
QUORVANE_EXPORT bool LoadCameraParameters(const std::string& fileName, cv::Mat& K, cv::Mat& D, double& rms);

/// Writes the single node `Homo`, a homography of any size and type. Last error as for `SaveCameraParameters`.
QUORVANE_EXPORT bool SaveHomography(const std::string& fileName, const cv::Mat& homography);

/// Reads what `SaveHomography` wrote. On failure the output is not touched. Last error as for `LoadCameraParameters`.
QUORVANE_EXPORT bool LoadHomography(const std::string& fileName, cv::Mat& homography);

// ---------------------------------------------------------------------------------------------------------------------
// Lens
// ---------------------------------------------------------------------------------------------------------------------

/// Calibrates a fisheye camera (the model of `cv::fisheye`) from pictures of one flat, symmetric board of dark circles.
///
/// `images` are 8-bit, gray or blue-green-red; empty ones and those of another channel count are passed over silently.
/// The size of the first picture that is used counts for all. `patternSize` is the number of circles per row and per
/// column; a board turned by 90 degrees is found as well. One picture with a board is enough to succeed.
///
/// On success `K` is the camera matrix (3x3) and `D` holds the coefficients k1 to k4 (4x1), both `CV_64F`, and `rms`
/// is the root-mean-square reprojection error in pixels. A picture without a board is left out and named, by its
/// number counted from 1, in the last error, where the text stays also when the call succeeds.
///
/// Last error of a failure: "Not enough points for calibration." (no output touched), or the text of a caught
/// exception, with `rms` set to -1.0 and `K` and `D` in any state.
QUORVANE_EXPORT bool CalibrateDistortedCamera(const std::vector<cv::Mat>& images, const cv::Size& patternSize,
                                              cv::Mat& K, cv::Mat& D, double& rms);

/// Straightens a picture of a fisheye camera: straight lines of the scene become straight lines of the picture.
///
/// `K` is 3x3 and `D` is 4x1, as `CalibrateDistortedCamera` makes them; neither is changed. (Columns of 5 and 8 rows,
/// as other lens models have them, pass this function's own check and are then refused by `cv::fisheye`.) The focal
/// lengths of the straightened picture are those of `K` times `fxScale` and `fyScale`; below 1.0 more of the
/// fisheye's edge stays in the frame. The result has the size and type of `distorted`; what no pixel shows is black.
///
/// Last error: "Input distorted image is empty", "Camera matrix or distortion coefficients are empty", "Camera matrix
/// size is incorrect", "Distortion coefficients size is incorrect", "Undistort rectify map is empty", "Output
/// undistorted image is empty".
QUORVANE_EXPORT bool UnDistortedImage(const cv::Mat& distorted, cv::Mat& K, cv::Mat& D, const double& fxScale,
                                      const double& fyScale, cv::Mat& undistorted);

// ---------------------------------------------------------------------------------------------------------------------
// Boards
// ---------------------------------------------------------------------------------------------------------------------

/// Finds a circle board in one picture (8-bit, gray or blue-green-red) and rates the shot.
///
/// `flags` and `blobDetector` go to `cv::findCirclesGrid` as they are. `centers` gets the circles' centres in pixels,
/// row by row. `quality` is the root-mean-square reprojection error in pixels of a fisheye calibration made from this
/// picture alone: the smaller, the better the shot.
///
/// Without a board `centers` is empty, `quality` is -1.0 and the last error is this function's qualified name followed
/// by " : Poor picture quality, Please re-shoot!". An empty picture, or one of another channel count, gives `false` and
/// changes nothing at all.
QUORVANE_EXPORT bool FindCalibrationBoard(const cv::Mat& image, cv::Size patternSize, std::vector<cv::Point2f>& centers,
                                          double& quality, int flags, const cv::Ptr<cv::Feature2D>& blobDetector);

/// Finds a ChArUco board with markers of `cv::aruco::DICT_7X7_250` in one picture and rates the shot.
///
/// `squaresX` and `squaresY` are the board's squares per row and per column; `squareLength` and `markerLength` are in
/// millimetres. `image` is 8-bit, gray or blue-green-red. A gray `image` is overwritten with the thresholded picture
/// that the markers are looked for in, in spite of its type: hosts that need the picture afterwards pass a copy.
///
/// `imagePoints` (pixels) and `objectPoints` (metres on the board) get the four corners of each marker found;
/// `charucoIds` the numbers of the chessboard corners found; `outImage` the picture with these corners drawn.
/// `quality` is the root-mean-square reprojection error in pixels of a calibration made from this picture alone, by
/// the fisheye model or by the pinhole model with rational and thin-prism terms. `refineMarkers` looks for the board's
/// missing markers among the rejected candidates.
///
/// Last error: "[FindChArUcoBoard] : Image is empty!" (`quality` untouched); or, for fewer markers than 80 % of half
/// the squares or fewer than 4 chessboard corners, this function's qualified name followed by " : Poor picture
/// quality, Please re-shoot!", with `quality` -1.0.
QUORVANE_EXPORT bool FindChArUcoBoard(cv::InputArray image, int squaresX, int squaresY, float squareLength,
                                      float markerLength, bool fisheyeModel, std::vector<cv::Point2f>& imagePoints,
                                      std::vector<cv::Point3f>& objectPoints, std::vector<int>& charucoIds,
                                      double& quality, cv::InputOutputArray outImage, bool refineMarkers);

/// Draws a ChArUco board to print at `dpi` dots per inch and writes it to `fileName`; a TIFF file carries the
/// resolution and so prints at true size. Lengths are in millimetres. Returns the picture (8-bit gray) and fills
/// `dictionary` and `board` (lengths in metres). Whether the file could be written is not told; a `cv::Exception`,
/// for example for a board that cannot be or for an unknown file ending, passes to the caller.
QUORVANE_EXPORT cv::Mat GenerateChArUcoBoard(const std::string& fileName, const int& squaresX, const int& squaresY,
                                             const float& squareLength, const float& markerLength,
                                             cv::aruco::Dictionary& dictionary, cv::aruco::CharucoBoard& board,
                                             int dpi);

}  // namespace Quorvane::CameraCalibration
