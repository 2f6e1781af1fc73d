#include <QuorvaneVision.h>

#include <fstream>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <vector>

int main() {
    using Quorvane::CameraCalibration::CameraCalibrator;
    CameraCalibrator calibrator;

    // The head burned a dot at each of these positions, in millimetres ...
    std::vector<cv::Point2f> machine = calibrator.GenerateCailbratePointGrid(200.0, 150.0, 5);
    // ... and the host found the dots in the picture: column, row (and the position again).
    std::vector<cv::Point2f> pixels;
    std::ifstream found("bed.txt");
    for (cv::Point2f pixel, position; found >> pixel.x >> pixel.y >> position.x >> position.y;) pixels.push_back(pixel);

    const cv::Mat picture = cv::imread("bed.png");
    double maxError = 0.0;
    if (!calibrator.Calibrate(pixels, machine, picture.cols, picture.rows, maxError)) return 1;
    std::cout << "off by at most " << maxError << " mm\n";

    const cv::Point2f target = calibrator.ImageToMachine({320, 240});
    std::cout << "pixel (320, 240) is " << target << " mm, and back " << calibrator.MachineToImage(target) << '\n'
              << "100 pixels there are "
              << calibrator.ImageToMachine_Distance(100.0, {320, 240}, CameraCalibrator::Horizontal) << " mm\n";

    cv::imwrite("top.png", calibrator.WarpPerspectiveImage(picture, 3));  // 3 pixels per millimetre
    return calibrator.SaveCalibration("machine.yml", false) ? 0 : 1;
}
