// Lists of points and numbers through the geometry and the calibrator. The first byte chooses the operation.

#include <cstdlib>

#include "calibration/CameraCalibration.h"
#include "calibration/CameraCalibrator.h"
#include "geometry/UtilityFunctions.h"
#include "tests/fuzz/FuzzInput.h"

namespace Quorvane::Fuzz {
namespace {

using namespace UtilityFunctions;
using CameraCalibration::CameraCalibrator;

constexpr int mostPoints = 24;

void Contours(FuzzInput& input) {
    const std::vector<cv::Point2f> points = input.Points(mostPoints);
    cv::Point2f first;
    cv::Point2f second;
    float distance = 0.0f;
    CalPerimeterOfContour(points);
    CalculateAverageAngle(points);
    FindFarthestPairPointInContour(points, first, second, distance);
    GetMinimumBoundingRectangle(points);
    if (SortContour(points).size() != points.size()) std::abort();
    const cv::RotatedRect rectangle = GetMinAreaRectAtAngle(points, input.Coordinate());
    GetRotateRectConner(rectangle, input.Bits<int>());
}

void Alignment(FuzzInput& input) {
    const std::vector<cv::Point2f> source = input.Points(mostPoints);
    std::vector<cv::Point2f> target = input.Points(mostPoints);
    if (input.Byte() % 4 != 0) target.resize(source.size());
    cv::Point2f offset;
    cv::Point2f center;
    double angle = 0.0;
    AlignPoints(source, target, offset, center, angle);
}

Line AnyLine(FuzzInput& input) {
    switch (input.Byte() % 4) {
        case 0: return {input.Point(), input.Point()};
        case 1: return {input.Coordinate(), input.Coordinate()};
        case 2: return {input.Coordinate(), input.Coordinate(), input.Coordinate()};
        default: return {cv::Vec4f{input.Coordinate(), input.Coordinate(), input.Coordinate(), input.Coordinate()}};
    }
}

void Lines(FuzzInput& input) {
    const Line lines[] = {AnyLine(input), AnyLine(input), AnyLine(input), AnyLine(input)};
    cv::Point2f point;
    cv::Point2f other;
    computeIntersection(lines[0], lines[1], point, input.Coordinate());
    computeQuadrilateralCenterRobust(lines[0], lines[1], lines[2], lines[3], point);
    for (const Line& line : lines) {
        line.distanceToPoint(point);
        line.getEndPoints(point, other, input.Coordinate());
        line.getIntersectionWithImage({input.Bits<int>(), input.Integer(-3, 1000)});
        line.toString();
        line.toVec4f();
    }
}

void Calibrator(FuzzInput& input) {
    CameraCalibrator calibrator;
    std::vector<cv::Point2f> image = input.Points(mostPoints);
    std::vector<cv::Point2f> machine = input.Points(mostPoints);
    if (input.Byte() % 8 != 0) machine.resize(image.size());
    double error = 0.0;
    const cv::Size size{input.Bits<int>(), input.Integer(-2, 5000)};
    Try([&] { calibrator.Calibrate(image, machine, size.width, size.height, error); });
    const CameraCalibrator copy(calibrator);
    const auto mode = static_cast<CameraCalibrator::DistanceMode>(input.Integer(0, 3));
    Try([&] { calibrator.CalcMaxError(machine, image); });
    Try([&] { calibrator.ImageToMachine(input.Point()); });
    Try([&] { calibrator.MachineToImage(input.Point()); });
    const double imageDistance = input.Number();
    Try([&] { calibrator.ImageToMachine_Distance(imageDistance, input.Point(), mode); });
    const double machineDistance = input.Number();
    Try([&] { calibrator.MachineToImage_Distance(machineDistance, input.Point(), mode); });
    const cv::Point2f warped = input.Point();
    Try([&] { calibrator.WarpPerspectivePoint(warped, input.Bits<int>()); });
    cv::Mat homography;
    cv::Point2f mapped;
    const double threshold = input.Number();
    const int iterations = input.Integer(-2, 500);
    CameraCalibration::CreateHomography(image, machine, homography, error, threshold, iterations, input.Number());
    CameraCalibration::TransformPoint(homography, input.Point(), mapped);
    const cv::Vec2d extent{input.Number(), input.Number()};
    calibrator.GenerateCailbratePointGrid(extent[0], extent[1], input.Integer(-3, 40));
}

}  // namespace
}  // namespace Quorvane::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Quorvane::Fuzz;
    FuzzInput input(data, size);
    const int choice = input.Byte() % 4;
    Try([&] {
        switch (choice) {
            case 0: Contours(input); break;
            case 1: Alignment(input); break;
            case 2: Lines(input); break;
            default: Calibrator(input);
        }
    });
    return 0;
}
