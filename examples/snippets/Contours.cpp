#include <QuorvaneVision.h>

#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <vector>

int main() {
    using namespace Quorvane::UtilityFunctions;
    // A job as it was drawn, and the same corners as they were found on another part, which lies a quarter turned.
    const std::vector<cv::Point2f> drawn{{105, 63}, {142, 63}, {142, 55}, {162, 71}, {142, 87}, {142, 79}, {105, 79}};
    std::vector<cv::Point2f> found;
    for (const cv::Point2f& corner : drawn) found.emplace_back(400.0F - corner.y, corner.x + 100.0F);

    cv::Point2f offset;
    cv::Point2f center;
    double angle = 0.0;
    AlignPoints(drawn, found, offset, center, angle);
    std::cout << "the part lies " << -offset << " pixels from the job's middle " << center << ", angle " << angle
              << '\n';

    cv::Point2f first;
    cv::Point2f second;
    float length = 0.0F;
    FindFarthestPairPointInContour(drawn, first, second, length);
    const cv::RotatedRect box = GetMinAreaRectAtAngle(drawn, 30.0F);
    std::cout << CalPerimeterOfContour(drawn) << " pixels around, " << length << " across, in a box of " << box.size
              << " turned by 30 degrees whose lower left corner is " << GetRotateRectConner(box, 0) << '\n';

    const cv::Mat picture = cv::imread("tray.png");
    cv::imwrite("part.png", CutImageBasePoint(picture, center, 120, 120, false));
}
