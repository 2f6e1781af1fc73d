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
/// A function tells its failure by `false` (or by a value that stands for it), and most leave a text for people in the
/// last error; where one does not, its own comment says so. The order of work is: pictures of a circle board ->
/// `CalibrateDistortedCamera` -> `SaveCameraParameters`; later `LoadCameraParameters` -> `UnDistortedImage` for each
/// picture.
///
///     cv::Mat K, D;
///     double rms = 0.0;
///     if (!CalibrateDistortedCamera(pictures, {9, 6}, K, D, rms) || !SaveCameraParameters("lens.yml", K, D, rms)) {
///         show(GetLastError());
///     }
///
/// Image coordinates are pixels, x to the right and y down, with the centre of the first pixel at (0, 0).
/// A `cv::Exception` is caught where nothing else is told, and its text stands in the last error behind the function's
/// name in brackets. All other exceptions pass to the caller.
namespace Quorvane::CameraCalibration {

/// A copy of the last error. Empty until the first failure; no success ever clears it, so it tells what went wrong only
/// after a call that failed. It is one text for the whole process, without a lock.
QUORVANE_EXPORT std::string GetLastError();

/// @name Calibration files
/// Documents of `cv::FileStorage`: YAML, XML or JSON by the file name's ending (YAML by default), compressed for ".gz".
/// A document nested more than 1000 levels deep or longer than a gigabyte counts as malformed.
///@{

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

///@}

/// @name Lens
///@{

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

///@}

/// @name Boards
///@{

/// Finds a circle board in one picture (8-bit, gray or blue-green-red) and rates the shot.
///
/// `patternSize` is the number of circles per row and per column; `flags` and `blobDetector` go to
/// `cv::findCirclesGrid` as they are. `centers` gets the circles' centres in pixels, row by row. `quality` is the
/// root-mean-square reprojection error in pixels of a fisheye calibration made from this picture alone: the smaller,
/// the better the shot.
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
/// missing markers among rejected candidates; deliberately it is given none, so that it has no effect.
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

///@}

/// @name Two cameras joined into one picture
/// First the pairs of points, from them the homography, and with it any number of joined pictures:
///
///     const ImageDirFlags left(0, false, false), right(-1, false, true);
///     std::vector<cv::Point2f> points1, points2;
///     cv::Mat homography, joined;
///     double meanError = 0.0, seamX = 0.0;
///     CalibrationMatchPointsForDualCam(image1, left, roi1, image2, right, roi2, 0.7, 3.0, 0.3, points1, points2);
///     if (CreateHomography(points1, points2, homography, meanError, 3.0, 2000, 0.995)) {
///         DoBlendingImageForDualCam(image1, left, image2, right, 1.0, 1.0, homography, seamX, joined);
///     }
///
/// All points are pixels of the oriented pictures. The random draws within OpenCV, of the hash tables and the
/// clustering, come from its generator of this thread: `cv::setRNGSeed` makes a call repeatable.
///@{

/// How a camera's picture must be turned to stand upright: first the rotation, then the vertical flip, then the
/// horizontal one. Pictures that are handed in are never turned in place.
struct QUORVANE_EXPORT ImageDirFlags {
    /// `cv::ROTATE_90_CLOCKWISE` (0), `cv::ROTATE_180` (1) or `cv::ROTATE_90_COUNTERCLOCKWISE` (2); any other value is
    /// no rotation.
    signed int rotateCode : 3;
    unsigned int flipHorizontal : 1;  ///< Mirrors left to right.
    unsigned int flipVertical : 1;    ///< Mirrors top to bottom.
    unsigned int reservedBits : 27;   ///< Never read and never set, not even by the constructor; assignments copy it.

    /// `rotate` is taken modulo 8 into -4 to 3, so that 4 becomes -4 and 8 becomes 0.
    ImageDirFlags(int rotate, bool horizontal, bool vertical);
    ///@{
    /// The same turn and flips as `other`.
    ImageDirFlags(const ImageDirFlags& other) = default;
    ImageDirFlags& operator=(const ImageDirFlags& other);
    ImageDirFlags& operator=(ImageDirFlags&& other) noexcept;
    ///@}
};

/// Finds pairs of points that show the same thing in the pictures of two cameras (blue-green-red, or with a fourth
/// channel; gray pictures are refused with a text of OpenCV). `points1[i]` and `points2[i]` are a pair.
///
/// `roi1` and `roi2` are where the oriented pictures overlap. A rectangle is clipped at the picture's right and lower
/// border; if its corner lies left of or above the picture, the corner moves to the border and the size stays. One that
/// begins behind the last column or row is refused with a text of OpenCV.
///
/// AKAZE features inside the rectangles are matched with a ratio test: the distance of the best match must be less than
/// `ratioThreshold` (below 1.0) times that of the second. Of these matches those stay whose displacement d, point of
/// picture 2 minus point of picture 1, fits the mean over all of them: |d.y| at most `yDeviationFactor` times the mean
/// |d.y|, and |d| within the fraction `lengthTolerance` of the mean |d| (above 1.0: no lower bound). The displacements
/// that are left are parted into two clusters, and the larger one is the result. So the method wants cameras that are
/// shifted against each other much more than they are turned.
///
/// `true` also when no pair was found: look at the lists. Last error: "Could not open or find the images!" for an empty
/// picture; a text of OpenCV where picture 1 shows less than two features. Whatever fails leaves the lists empty.
QUORVANE_EXPORT bool CalibrationMatchPointsForDualCam(const cv::Mat& image1, const ImageDirFlags& dir1,
                                                      const cv::Rect& roi1, const cv::Mat& image2,
                                                      const ImageDirFlags& dir2, const cv::Rect& roi2,
                                                      const double& ratioThreshold, const double& yDeviationFactor,
                                                      const double& lengthTolerance, std::vector<cv::Point2f>& points1,
                                                      std::vector<cv::Point2f>& points2);

/// Fits the homography (3x3, `CV_64F`) that maps `points1` to `points2`, by RANSAC. Pairs that are more than
/// `ransacThreshold` pixels of picture 2 off are left out; `meanError` is the mean distance in these pixels of the
/// pairs that were used, 0.0 if there is none.
///
/// Fewer than 4 pairs, or lists of different length, give `false` without a text and leave `homography` alone. Where no
/// homography fits, it is empty, and the last error a text of OpenCV. Every failure leaves `meanError` at -1.0.
QUORVANE_EXPORT bool CreateHomography(const std::vector<cv::Point2f>& points1, const std::vector<cv::Point2f>& points2,
                                      cv::Mat& homography, double& meanError, const double& ransacThreshold,
                                      const int& maxIterations, const double& confidence);

/// Where a homography puts a point. A matrix that is not 3x3 gives `false` without a text; a failure leaves
/// `transformed` as it was.
QUORVANE_EXPORT bool TransformPoint(const cv::Mat& homography, const cv::Point2f& point, cv::Point2f& transformed);

/// Draws the two oriented pictures (8-bit of 1, 3 or 4 channels) side by side with a line for each pair, in colours
/// that are the same on every call. Only a thin line under each, which shows at its ends as a circle, takes a random
/// colour from OpenCV's generator.
///
/// Lists of different length give `false` without a text. Last error: "Could not open or find the images!" for an empty
/// picture.
QUORVANE_EXPORT bool CreateMatchesImage(const cv::Mat& image1, const ImageDirFlags& dir1, const cv::Mat& image2,
                                        const ImageDirFlags& dir2, const std::vector<cv::Point2f>& points1,
                                        const std::vector<cv::Point2f>& points2, cv::Mat& matchesImage);

/// Joins the pictures of two cameras: picture 1 warped into the frame of picture 2 by `homography` (3x3, `CV_64F`),
/// left of a seam, and picture 2 right of it. Picture 1 is the one that reaches out to the left; the seam stands in the
/// middle between column 0 of picture 2 and the right end of picture 1, and 20 columns about it are blended so that the
/// light changes smoothly. The frame is widened to the left and to the top, not to the right and to the bottom.
///
/// Both pictures are 8-bit with 3 channels; others are refused with a text of OpenCV. `scaleX` and `scaleY` scale the
/// result. `seamX` is the seam's column in the joined picture before this scaling.
///
/// Where picture 1 reaches 10 pixels or less into picture 2, picture 2 is laid over it without blending. Then the
/// result is not scaled and `seamX` is not written.
///
/// Last error: "Could not open or find the images!" for an empty picture. The seam must lie at least 10 columns from
/// the sides of picture 2; OpenCV refuses others. Blending wants 5 rows of picture 2: OpenCV refuses 1 and 4, leaves 2
/// unblended, and for 3 its `std::length_error` passes to the caller.
QUORVANE_EXPORT bool DoBlendingImageForDualCam(const cv::Mat& image1, const ImageDirFlags& dir1, const cv::Mat& image2,
                                               const ImageDirFlags& dir2, const double& scaleX, const double& scaleY,
                                               const cv::Mat& homography, double& seamX, cv::Mat& blended);

///@}

/// @name Scale and cross
/// The two functions leave the last error alone and have no handler: a `cv::Exception` passes to the caller. A
/// picture is 8-bit with 1, 3 (blue, green, red) or 4 channels; OpenCV refuses other depths, an empty picture and one
/// without any contrast.
///@{

/// Takes the scale of a picture from a circle of known size: of the circles found with more than 20 pixels radius, the
/// one nearest the picture's middle, whatever its size. Of circles nearer to each other than three quarters of the
/// picture's longer side only the most distinct one is found at all.
///
///     cv::Point2f center;
///     double radius = 0.0, pixelsPerMillimetre = 0.0;
///     if (CalScalePixToMmUseCircle(picture, 8.0, 0.0, center, radius, pixelsPerMillimetre)) { ... }
///
/// `realRadius` is the circle's true radius in millimetres; `notRead` is accepted and never looked at. `center` and
/// `radius` are in pixels, `scale` is `radius / realRadius`, that is pixels per millimetre. Nothing checks
/// `realRadius`: 0 gives an infinite scale.
///
/// Returns `false` and the `scale` -1.0 for any other count of channels and for a picture without such a circle;
/// `center` and `radius` are then untouched.
///
/// The circle is to be dark on a light ground, with nothing larger, round and dark within 2.5 radii around it. It is
/// measured to its outermost dark pixels, which makes `radius` nearly half a pixel small. A light circle is found but
/// not measured: what comes back is its dark surroundings, with a radius up to 3.5 times too large.
QUORVANE_EXPORT bool CalScalePixToMmUseCircle(const cv::Mat& image, const double& realRadius, const double& notRead,
                                              cv::Point2f& center, double& radius, double& scale);

/// Finds where the bars of a dark cross meet, to a fraction of a pixel, inside a dark ring on a light ground. The ring
/// is the circle that `CalScalePixToMmUseCircle` finds. Each bar is then measured from both of its sides, in the square
/// around the ring's inside, and the centre is that of the quadrilateral between the four edges. So the bars lie along
/// the picture's rows and columns, give or take some degrees, cross most of the inside, and are at least 40 gray
/// levels darker than the ground; and the ring is wide enough to hold the square's corners (two fifths of its inner
/// radius), since behind a thinner one they meet the wrong edge.
///
/// `center` and `radius` are in pixels; `radius` is that of the ring's outside. Returns `false` without a circle, both
/// untouched, and where the four edges have no centre: then `radius` is set and `center` is the circle's.
QUORVANE_EXPORT bool FindCircleCross(const cv::Mat& image, cv::Point2f& center, double& radius);

///@}

}  // namespace Quorvane::CameraCalibration
