#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "QuorvaneExport.h"

namespace Quorvane::CameraCalibration {

/// Maps between the picture of a camera that looks at the machine's bed and the machine's coordinates.
///
/// The mapping is one homography, from pixels (x to the right, y down) to machine units (millimetres, as the host
/// supplies them). The host sends the head to the points of `GenerateCailbratePointGrid`, finds the marks in the
/// picture and hands the pairs to `Calibrate`:
///
///     CameraCalibrator calibrator;
///     double maxError = 0.0;
///     if (calibrator.Calibrate(marksInPicture, headPositions, picture.cols, picture.rows, maxError)) {
///         const cv::Point2f target = calibrator.ImageToMachine(pointInPicture);
///         calibrator.SaveCalibration("camera.yml", false);
///     }
///
/// No member writes the last error or throws on its own; a `cv::Exception` of the library passes through. Copies share
/// the homography's elements, but `Calibrate` and `LoadCalibration` give their object a new matrix and leave the copies
/// alone. The members that only ask may run together on one object.
class QUORVANE_EXPORT CameraCalibrator {
public:
    /// How a distance lies about its centre.
    enum DistanceMode : int {
        Diagonal = 0,    ///< Along the direction (1, 1).
        Horizontal = 1,  ///< Along x.
        Vertical = 2,    ///< Along y.
    };

    /// Not calibrated.
    CameraCalibrator();
    ///@{
    /// The same mapping; the homography's elements are shared, as told above.
    CameraCalibrator(const CameraCalibrator& other);
    CameraCalibrator& operator=(const CameraCalibrator& other);
    ///@}
    ~CameraCalibrator();

    /// Finds the mapping from pairs of points, which correspond by index; at least 6 are needed. Pairs that are more
    /// than one machine unit off what most agree on are left out. `imageWidth` and `imageHeight` are the size in pixels
    /// of the picture that the points were found in. `maxError` becomes the largest error, in machine units, of the
    /// pairs that were used.
    ///
    /// On failure `maxError` and the sizes stay as they were, and so does the answer of `IsCalibrateVaild`; the
    /// homography may be replaced all the same, by an empty one where none was found.
    bool Calibrate(const std::vector<cv::Point2f>& imagePoints, const std::vector<cv::Point2f>& machinePoints,
                   const int& imageWidth, const int& imageHeight, double& maxError);

    /// The largest distance, in machine units, of a mapped image point to its machine point. 0.0 if not calibrated;
    /// -1.0 for empty lists, lists of different length or an empty homography.
    double CalcMaxError(const std::vector<cv::Point2f>& imagePoints, const std::vector<cv::Point2f>& machinePoints);

    /// Where a pixel of the picture lies on the machine; (-1, -1) if not calibrated or without a homography.
    cv::Point2f ImageToMachine(const cv::Point2f& imagePoint);

    /// Where a point of the machine lies in the picture; (-1, -1) if not calibrated. With the calibrated state but
    /// without a homography, which a failed `Calibrate` may leave, (0, 0) and a line on standard error: hosts tell the
    /// two cases apart by this.
    cv::Point2f MachineToImage(const cv::Point2f& machinePoint);

    /// The length in machine units of a stretch of `distance` pixels about `center` (pixels).
    /// -1.0 if not calibrated or for an unknown mode.
    double ImageToMachine_Distance(double distance, const cv::Point2f& center, const DistanceMode& mode);

    /// The length in pixels of a stretch of `distance` machine units about `center` (machine coordinates).
    /// -1.0 if not calibrated or for an unknown mode.
    double MachineToImage_Distance(double distance, const cv::Point2f& center, const DistanceMode& mode);

    /// Whether a mapping has been made or loaded. Does not look at the homography. The spelling of the name is
    /// deliberate: hosts are built against it.
    bool IsCalibrateVaild();

    /// Writes the mapping to a `cv::FileStorage` document (YAML, XML or JSON by the file name's ending), calibrated or
    /// not. With `append` it is added to a document that is there; a reader takes the document's first mapping. `false`
    /// if the file cannot be opened.
    bool SaveCalibration(const std::string& fileName, bool append);

    /// Reads a mapping and returns whether the object now has a homography. `false`, with the object unchanged, if the
    /// file cannot be opened. A document without one of the two sizes changes nothing but the calibrated state.
    bool LoadCalibration(const std::string& fileName);

    /// The picture as seen from above: `expansion` pixels per machine unit, the warped picture's upper left bounds at
    /// the origin. The result has the shape of `image`, its longer side that of the warped picture's bounds. A copy of
    /// `image` if not calibrated or without a homography.
    cv::Mat WarpPerspectiveImage(const cv::Mat& image, const int& expansion);

    /// Where `WarpPerspectiveImage` puts a pixel of a picture of the calibrated size; (-1, -1) if not calibrated or
    /// without a homography.
    cv::Point2f WarpPerspectivePoint(const cv::Point2f& imagePoint, const int& expansion);

    /// Machine positions for a calibration: a grid centred on the origin, row by row from (-width/2, +height/2) to
    /// (+width/2, -height/2). Empty unless `pointsPerSide` is odd and at least 3. The spelling of the name is
    /// deliberate.
    std::vector<cv::Point2f> GenerateCailbratePointGrid(double width, double height, int pointsPerSide);

private:
    /// The terms 1, x, y, x^2, xy, y^2 of each point: N x 6, CV_64F. Deliberately unused: the mapping is a homography,
    /// and this is kept as a part of the class's interface.
    cv::Mat BuildPolynomialTerms(const std::vector<cv::Point2f>& points);

    bool isCalibrated;
    cv::Mat homography;
    // Hosts that save an object before it was calibrated get zeros.
    int sourceImageWidth = 0;
    int sourceImageHeight = 0;
};

}  // namespace Quorvane::CameraCalibration
