#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <vector>

int main() {
    using namespace Quorvane::CameraCalibration;
    // To print: 7 x 5 squares of 20 mm, markers of 15 mm, 300 dots per inch.
    cv::aruco::Dictionary dictionary;
    cv::aruco::CharucoBoard board({3, 3}, 2.0F, 1.0F, cv::aruco::getPredefinedDictionary(0));  // both are replaced
    GenerateChArUcoBoard("board.tif", 7, 5, 20.0F, 15.0F, dictionary, board, 300);

    // A shot of the print:
    const cv::Mat shot = cv::imread("charuco.png");
    std::vector<cv::Point2f> imagePoints;   // pixels
    std::vector<cv::Point3f> objectPoints;  // metres on the board
    std::vector<int> ids;
    double quality = 0.0;
    cv::Mat drawn;
    if (!FindChArUcoBoard(shot, 7, 5, 20.0F, 15.0F, false, imagePoints, objectPoints, ids, quality, drawn, true)) {
        std::cerr << GetLastError() << '\n';
        return 1;
    }
    std::cout << imagePoints.size() / 4 << " markers, " << ids.size() << " corners, error " << quality
              << " pixels: " << (quality < 0.5 ? "a good shot" : "shoot again") << '\n';
    cv::imwrite("corners.png", drawn);
}
