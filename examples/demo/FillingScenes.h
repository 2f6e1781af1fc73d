#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

#include "tests/support/Tray.h"

namespace Demo {

/// A camera picture with copies of one object, and a job on one of them.
struct FillingScene {
    cv::Mat picture;
    std::vector<Quorvane::TestSupport::PartPose> poses;  ///< Of the copies, that with the job first; none if unknown.
    cv::Point2d mark;                                    ///< The marked point, in the picture.
    cv::Point2d markInPart;                              ///< The same on the object, relative to its middle.
    std::vector<cv::Point2f> shape;                      ///< The job: a closed line, in the picture.
};

/// Greek coins in a photograph, enlarged to twice its size so that colour regions of whole squares fit a coin. No two
/// are alike but for their size and their round outline.
FillingScene PhotographedCoins();

/// Cups on their saucers, cut out of a photograph and laid on photographed gravel.
FillingScene CupsOnGravel();

/// A rendered tray of sheet-metal parts in uneven light, with the noise of a camera.
FillingScene TrayOfParts();

}  // namespace Demo
