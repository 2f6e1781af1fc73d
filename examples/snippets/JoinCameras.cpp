#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <vector>

int main() {
    using namespace Quorvane::CameraCalibration;
    const cv::Mat left = cv::imread("left.png");
    const cv::Mat right = cv::imread("right.png");
    // What brings each picture upright: the left camera hangs on its side.
    const ImageDirFlags leftWay(cv::ROTATE_90_CLOCKWISE, false, false);
    const ImageDirFlags rightWay(-1, false, false);
    // Where the upright pictures overlap, generously: 250 columns.
    const cv::Rect leftOverlap(270, 0, 250, 560);
    const cv::Rect rightOverlap(0, 0, 250, 560);

    std::vector<cv::Point2f> leftPoints;
    std::vector<cv::Point2f> rightPoints;
    cv::Mat homography;
    double meanError = 0.0;
    if (!CalibrationMatchPointsForDualCam(left, leftWay, leftOverlap, right, rightWay, rightOverlap, 0.75, 4.0, 0.3,
                                          leftPoints, rightPoints) ||
        !CreateHomography(leftPoints, rightPoints, homography, meanError, 3.0, 2000, 0.995)) {
        std::cerr << leftPoints.size() << " pairs of points are too few; " << GetLastError() << '\n';
        return 1;
    }
    std::cout << leftPoints.size() << " pairs, off by " << meanError << " pixels on average\n";
    SaveHomography("cameras.yml", homography);

    // Later, for every two pictures of these cameras:
    cv::Mat joined;
    double seamX = 0.0;
    if (!LoadHomography("cameras.yml", homography) ||
        !DoBlendingImageForDualCam(left, leftWay, right, rightWay, 1.0, 1.0, homography, seamX, joined)) {
        std::cerr << GetLastError() << '\n';
        return 1;
    }
    std::cout << joined.cols << " x " << joined.rows << " pixels, the seam at column " << seamX << '\n';
    cv::imwrite("joined.png", joined);
}
