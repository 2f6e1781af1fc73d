#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

#include "tests/support/Boards.h"

namespace Demo {

/// The machine's bed, in millimetres about its middle: dots burned where the head was sent, and a photograph that lies
/// on it, turned. The dots are the points of the board.
Quorvane::TestSupport::Board BedWithAPhotograph(const std::vector<cv::Point2f>& dots);

}  // namespace Demo
