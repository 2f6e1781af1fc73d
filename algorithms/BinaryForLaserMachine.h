#pragma once

#include <opencv2/core/mat.hpp>

#include "framework/Algorithm.h"

namespace Quorvane {

/// Turns a picture into dots of 0 and 255 that a laser burns one by one: a stochastic half-tone.
///
/// Dots fall only on the Otsu foreground of the picture. There, pixels above a high brightness always become dots,
/// pixels below a low brightness never do, and pixels in between do at random, with a probability that grows with
/// their brightness and with the contrast around them and is never below 0.1. Two runs on one picture therefore
/// differ.
///
/// Reached by name through `AlgorithmFactory`.
///
/// | Parameter       | Kind | Default | Range    | Meaning                                                        |
/// |-----------------|------|---------|----------|----------------------------------------------------------------|
/// | "HighThreshold" | Int  | 240     | 0 to 255 | brightness above which a foreground pixel always becomes a dot |
/// | "LowThreshold"  | Int  | 20      | 0 to 255 | brightness below which a foreground pixel never becomes a dot  |
/// | "MaskSize"      | Int  | 5       | odd, > 0 | side in pixels of the window for the contrast                  |
///
/// An even "MaskSize" is raised by one. Thresholds outside the range are limited to it; they are read as floats. The
/// one result is the destination image: 8-bit, one channel, of the size of the source. An empty source gives status 2
/// and "[BinaryForLaserMachine]Image is empty!"; the next run that has a picture clears the message.
/// A source of other than one or three channels, or a negative "MaskSize", gets what OpenCV makes of an empty image
/// or of a window of negative size.
class BinaryForLaserMachine : public Algorithm {
public:
    BinaryForLaserMachine();
    ~BinaryForLaserMachine() override;
    int Execute(const cv::Mat& source, cv::Mat& destination) override;
};

}  // namespace Quorvane
