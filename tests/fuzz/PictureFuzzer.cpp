// Pictures of any shape and type through every operation that takes one. The first byte chooses the operation.

#include <cstdlib>
#include <opencv2/features2d.hpp>
#include <opencv2/objdetect/aruco_board.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/CameraCalibrator.h"
#include "geometry/UtilityFunctions.h"
#include "tests/fuzz/FuzzInput.h"

namespace Quorvane::Fuzz {
namespace {

using namespace CameraCalibration;
using namespace UtilityFunctions;

constexpr int longestSide = 48;

void Measure(FuzzInput& input, const cv::Mat& picture) {
    const int which = input.Byte();
    const auto polarity = static_cast<EdgePolarity>(input.Integer(-1, 3));
    const auto direction = static_cast<SearchDirection>(input.Integer(-1, 6));
    const cv::Point2f center = input.Point();
    const double width = input.Size();
    const double height = input.Size();
    const double sigma = input.Size();
    const double threshold = input.Number();
    // Finer steps are served honestly, one caliper each.
    const double number = input.Number();
    const double step = number > 0.0 && number < 0.25 ? 0.25 : number;
    if (which % 3 == 0) {
        Line line;
        MeasureLine(picture, center, width, height, line, polarity, direction, sigma, threshold, step);
        line.getIntersectionWithImage(picture.size());
        line.toString();
    } else if (which % 3 == 1) {
        cv::Point2f found;
        double radius = 0.0;
        double score = 0.0;
        MeasureCircle(picture, center, width, found, radius, score, polarity, direction, sigma, threshold, step);
    } else {
        Curve curve;
        MeasureCurve(picture, center, width, height, curve, polarity, direction, sigma, threshold, step, 0);
    }
}

void Operate(FuzzInput& input, const cv::Mat& picture) {
    cv::Mat result;
    std::vector<cv::Mat> regions;
    std::vector<cv::Point2f> centers;
    std::vector<cv::Point> contour;
    switch (input.Byte() % 6) {
        case 0: ApplySketchFilter(picture, result, input.Bits<int>()); break;
        case 1: {
            const double tolerance = input.Number();
            const int areaLimit = input.Integer(-5, 3000);
            const int closeRadius = input.Integer(-2, 40);
            fillHolesMorphologicalEnhanced(picture, tolerance, areaLimit, closeRadius, input.Integer(-2, 40));
            break;
        }
        case 2:
            // The rows that a contour spans above a picture are served honestly, too.
            for (int i = input.Integer(0, 8); i > 0; --i)
                contour.push_back({input.Integer(-9, 60), input.Integer(-500, 500)});
            findDominantLABColorPointInContour(picture, contour);
            break;
        case 3:
            ThresholdAndFindAllRegionCenter(picture, input.Bits<int>(), input.Integer(-10, 300), regions, centers);
            break;
        case 4: {
            const cv::Point2f middle = input.Point();
            const int width = input.Integer(-5, 60);
            const int height = input.Bits<int>();
            CutImageBasePoint(picture, middle, width, height, input.Byte() % 2 == 0);
            break;
        }
        default: CalculateExpansionHomography(picture, input.Number());
    }
}

void Compare(FuzzInput& input, const cv::Mat& picture) {
    const cv::Mat other = input.Picture(longestSide);
    Try([&] { IsMatChanged_GrayDiff(picture, other); });
    Try([&] { IsMatChanged_HammingDistance(picture, other, input.Byte()); });
}

void LookForBoards(FuzzInput& input, const cv::Mat& picture) {
    const cv::Size pattern{input.Integer(-1, 6), input.Integer(-1, 6)};
    double quality = 0.0;
    std::vector<cv::Point2f> points;
    switch (input.Byte() % 3) {
        case 0:
            FindCalibrationBoard(picture, pattern, points, quality, input.Byte(), cv::SimpleBlobDetector::create());
            break;
        case 1: {
            cv::Mat K;
            cv::Mat D;
            CalibrateDistortedCamera({picture, cv::Mat(), picture}, pattern, K, D, quality);
            break;
        }
        default: {
            std::vector<cv::Point3f> onBoard;
            std::vector<int> ids;
            cv::Mat drawn;
            const float square = static_cast<float>(input.Size());
            FindChArUcoBoard(picture, pattern.width, pattern.height, square, square * 0.75f, input.Byte() % 2 == 0,
                             points, onBoard, ids, quality, drawn, input.Byte() % 2 == 0);
        }
    }
}

void Straighten(FuzzInput& input, const cv::Mat& picture) {
    cv::Mat K(3, 3, CV_64F);
    for (double& element : cv::Mat_<double>(K)) element = input.Number();
    cv::Mat D(input.Byte() % 4 == 0 ? 5 : 4, 1, CV_64F);
    for (double& element : cv::Mat_<double>(D)) element = input.Number();
    cv::Mat straight;
    const double first = input.Number();
    UnDistortedImage(picture, K, D, first, input.Number(), straight);
    cv::Mat foreign = input.Picture(4);
    UnDistortedImage(picture, foreign, D, 1.0, 1.0, straight);
    UnDistortedImage(picture, K, foreign, 1.0, 1.0, straight);
}

void Warp(FuzzInput& input, const cv::Mat& picture) {
    CameraCalibrator calibrator;
    std::vector<cv::Point2f> image;
    std::vector<cv::Point2f> machine;
    for (int i = 0; i < 8; ++i) {
        image.emplace_back(static_cast<float>(i % 3 * 9), static_cast<float>(i / 3 * 8));
        machine.push_back(image.back() * 0.5f + cv::Point2f(static_cast<float>(input.Byte() % 5), 1.0f));
    }
    double error = 0.0;
    const cv::Size size{input.Integer(-1, 60), input.Integer(-1, 60)};
    calibrator.Calibrate(image, machine, size.width, size.height, error);
    calibrator.WarpPerspectiveImage(picture, input.Integer(-3, 6));
}

ImageDirFlags AnyDirection(FuzzInput& input) {
    const int bits = input.Byte();
    return {bits % 8 - 2, bits / 8 % 2 == 0, bits / 16 % 2 == 0};
}

void JoinCameras(FuzzInput& input, const cv::Mat& picture) {
    const ImageDirFlags first = AnyDirection(input);
    const ImageDirFlags second = AnyDirection(input);
    std::vector<cv::Point2f> points1 = input.Points(5);
    std::vector<cv::Point2f> points2 = input.Points(5);
    cv::Mat joined;
    cv::Point2f center;
    double number = 0.0;
    switch (input.Byte() % 4) {
        case 0: {
            const cv::Rect roi{input.Integer(-9, 60), input.Integer(-9, 60), input.Integer(-9, 99),
                               input.Integer(-9, 99)};
            const cv::Mat other = input.Picture(longestSide, CV_8UC3);
            const cv::Vec3d numbers{input.Number(), input.Number(), input.Number()};
            CalibrationMatchPointsForDualCam(picture, first, roi, other, second, roi, numbers[0], numbers[1],
                                             numbers[2], points1, points2);
            break;
        }
        case 1: CreateMatchesImage(picture, first, picture, second, points1, points2, joined); break;
        case 2: {
            cv::Mat homography = cv::Mat::eye(3, 3, CV_64F);
            homography.at<double>(0, 2) = input.Integer(-90, 90);
            homography.at<double>(1, 2) = input.Integer(-90, 90);
            if (input.Byte() % 8 == 0) {
                const cv::Point place{input.Byte() % 3, input.Byte() % 3};
                homography.at<double>(place) = input.Size();
            }
            const cv::Mat other = input.Picture(longestSide, picture.type());
            const cv::Vec2d scales{input.Integer(-1, 8) / 4.0, input.Integer(-1, 8) / 4.0};
            DoBlendingImageForDualCam(picture, first, other, second, scales[0], scales[1], homography, number, joined);
            break;
        }
        default:
            Try([&] { CalScalePixToMmUseCircle(picture, input.Number(), 0.0, center, number, number); });
            FindCircleCross(picture, center, number);
    }
}

}  // namespace
}  // namespace Quorvane::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Quorvane::Fuzz;
    FuzzInput input(data, size);
    const int choice = input.Byte() % 9;
    const cv::Mat picture = input.Picture(longestSide);
    // The marker search overwrites gray pictures, and that is told.
    const bool mayChange = choice == 3;
    const cv::Mat before = picture.clone();
    Try([&] {
        switch (choice) {
            case 0:
            case 1: Measure(input, picture); break;
            case 2: Compare(input, picture); break;
            case 3: LookForBoards(input, picture); break;
            case 4: Straighten(input, picture); break;
            case 5: Warp(input, picture); break;
            case 8: JoinCameras(input, picture); break;
            default: Operate(input, picture);
        }
    });
    if (!mayChange) CheckUnchanged(picture, before);
    return 0;
}
