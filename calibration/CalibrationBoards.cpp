#include "calibration/CameraCalibration.h"
#include "calibration/CircleGrid.h"
#include "calibration/LastError.h"
#include "calibration/ShotQuality.h"

namespace Quorvane::CameraCalibration {

bool FindCalibrationBoard(const cv::Mat& image, cv::Size patternSize, std::vector<cv::Point2f>& centers,
                          double& quality, int flags, const cv::Ptr<cv::Feature2D>& blobDetector) {
    const auto find = [&] {
        cv::Mat gray;
        if (image.empty() || !ToBoardGray(image, gray)) return false;
        const cv::Mat evened = EvenedImage(gray);
        if (!FindCircleGrid(gray, patternSize, centers, flags, blobDetector)) {
            // Deliberately without effect: the host's detector sees the evened picture too, but a shot that is good
            // only after evening is to be taken again.
            FindCircleGrid(evened, patternSize, centers, flags, blobDetector);
            centers.clear();
            quality = noQuality;
            return FailWith(ReshootText("FindCalibrationBoard"));
        }
        RefineCenters(gray, centers);
        // Made only for a board that is there: a number mistyped by a host is not to take the machine's memory.
        const std::vector<cv::Point3f> grid = GenerateActualPositions(patternSize.width, patternSize.height, unitPitch);
        quality = FisheyeShotQuality(grid, centers, gray.size());
        return true;
    };
    return ReportingExceptions("FindCalibrationBoard", find, [&] {
        centers.clear();
        quality = noQuality;
        return false;
    });
}

}  // namespace Quorvane::CameraCalibration
