// Everything of the calibration that takes a picture or a matrix, on every picture.

#include <gtest/gtest.h>

#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#include <opencv2/features2d.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/CameraCalibrator.h"
#include "calibration/LastError.h"
#include "tests/robustness/OutcomeTable.h"
#include "tests/robustness/PictureMatrix.h"
#include "tests/support/ScratchFolder.h"

namespace Quorvane::Robustness {
namespace {

using namespace CameraCalibration;
using Shape = HostPicture::Shape;
using TestSupport::ScratchFolder;

constexpr const char* refused = "false: an exception's text";

/// What a call told: `true`, or `false` with its last error.
template <typename Call>
std::string Told(const char* function, const Call& call) {
    SetLastError("");
    if (call()) return "true";
    const std::string prefix = "[" + QualifiedName(function) + "]";
    const std::string text = GetLastError();
    return text.rfind(prefix, 0) == 0 ? refused : "false: " + text;
}

std::string TryLensCalibration(const cv::Mat& picture) {
    const cv::Mat untouched = cv::Mat::eye(2, 2, CV_8U);
    cv::Mat K = untouched;
    cv::Mat D = untouched;
    double rms = -3.0;
    const std::string told = Told("CalibrateDistortedCamera", [&] {
        return CalibrateDistortedCamera({picture}, {4, 3}, K, D, rms);
    });
    if (told == refused) return rms == -1.0 ? told : "an exception's text without its error";
    return K.data == untouched.data && D.data == untouched.data && rms == -3.0 ? told : "touched outputs";
}

std::string LensCalibrationTold(const HostPicture& picture) {
    const bool isUsed = !picture.IsEmpty() && (picture.channels == 1 || picture.channels == 3);
    return !isUsed || picture.depth == CV_8U ? "false: Not enough points for calibration." : refused;
}

cv::Mat SomeCameraMatrix() { return (cv::Mat_<double>(3, 3) << 40, 0, 15, 0, 40, 11, 0, 0, 1); }
cv::Mat SomeDistortion() { return (cv::Mat_<double>(4, 1) << 0.1, 0.0, 0.0, 0.0); }

std::string TryUndistortion(const cv::Mat& picture, cv::Mat K, cv::Mat D) {
    cv::Mat straight;
    const std::string told =
        Told("UnDistortedImage", [&] { return UnDistortedImage(picture, K, D, 1.0, 1.0, straight); });
    if (told != "true") return told;
    return straight.size() == picture.size() && straight.type() == picture.type() ? told : "a wrong picture";
}

/// Whether `cv::remap` takes pixels of this depth.
bool IsRemapped(const HostPicture& picture) {
    return picture.depth == CV_8U || picture.depth == CV_16U || picture.depth == CV_16S || picture.depth == CV_32F ||
           picture.depth == CV_64F;
}

std::string UndistortionTold(const HostPicture& picture) {
    if (picture.IsEmpty()) return "false: Input distorted image is empty";
    // Positions in a picture are 16 bits wide there.
    return IsRemapped(picture) && !picture.IsLong() ? "true" : refused;
}

bool IsFloat(const HostPicture& picture) { return picture.depth == CV_32F || picture.depth == CV_64F; }

std::string CameraMatrixTold(const HostPicture& picture) {
    if (picture.IsEmpty()) return "false: Camera matrix or distortion coefficients are empty";
    if (picture.shape != Shape::ThreeByThree) return "false: Camera matrix size is incorrect";
    return IsFloat(picture) && picture.channels == 1 ? "true" : refused;
}

std::string DistortionTold(const HostPicture& picture) {
    if (picture.IsEmpty()) return "false: Camera matrix or distortion coefficients are empty";
    if (picture.shape != Shape::FourByOne) return "false: Distortion coefficients size is incorrect";
    // OpenCV reads the first four numbers, whatever channel they stand in.
    return IsFloat(picture) ? "true" : refused;
}

std::string TryCircleBoard(const cv::Mat& picture) {
    std::vector<cv::Point2f> centers{{7.0f, 7.0f}};
    double quality = -3.0;
    const std::string told = Told("FindCalibrationBoard", [&] {
        return FindCalibrationBoard(picture, {4, 3}, centers, quality, cv::CALIB_CB_SYMMETRIC_GRID,
                                    cv::SimpleBlobDetector::create());
    });
    if (told == "false: ") return centers.size() == 1 && quality == -3.0 ? told : "touched outputs";
    return centers.empty() && quality == -1.0 ? told : "outputs that tell no failure";
}

std::string CircleBoardTold(const HostPicture& picture) {
    if (picture.IsEmpty() || (picture.channels != 1 && picture.channels != 3)) return "false: ";
    return picture.depth == CV_8U ? "false: " + ReshootText("FindCalibrationBoard") : refused;
}

std::string TryCharucoBoard(const cv::Mat& picture, bool refineMarkers) {
    std::vector<cv::Point2f> imagePoints(1);
    std::vector<cv::Point3f> objectPoints(1);
    std::vector<int> ids(1);
    double quality = -3.0;
    cv::Mat drawn;
    const std::string told = Told("FindChArUcoBoard", [&] {
        return FindChArUcoBoard(picture, 5, 7, 20.0f, 15.0f, true, imagePoints, objectPoints, ids, quality, drawn,
                                refineMarkers);
    });
    if (!imagePoints.empty() || !objectPoints.empty() || !ids.empty()) return "lists that were not cleared";
    return quality == (picture.empty() ? -3.0 : -1.0) ? told : "a wrong quality";
}

std::string CharucoBoardTold(const HostPicture& picture) {
    if (picture.IsEmpty()) return "false: [FindChArUcoBoard] : Image is empty!";
    // The search for markers numbers pixels with 15 bits.
    const bool isRead = picture.depth == CV_8U && (picture.channels == 1 || picture.channels == 3) && !picture.IsLong();
    return isRead ? "false: " + ReshootText("FindChArUcoBoard") : refused;
}

CameraCalibrator SomeCalibrator() {
    std::vector<cv::Point2f> image;
    std::vector<cv::Point2f> machine;
    for (int i = 0; i < 9; ++i) {
        image.emplace_back(static_cast<float>(i % 3 * 15), static_cast<float>(i / 3 * 11));
        machine.push_back(image.back() * 0.5f + cv::Point2f(3.0f, -2.0f));
    }
    CameraCalibrator calibrator;
    double error = 0.0;
    EXPECT_TRUE(calibrator.Calibrate(image, machine, 31, 23, error));
    return calibrator;
}

std::string TryWarp(CameraCalibrator& calibrator, const cv::Mat& picture) {
    const cv::Mat warped = calibrator.WarpPerspectiveImage(picture, 3);
    if (HaveSameBytes(warped, picture)) return warped.empty() || warped.data != picture.data ? "a copy" : "the same";
    return warped.type() == picture.type() ? "a warped picture" : "a wrong picture";
}

/// Writing and reading a hundred thousand numbers as text takes its time: once is enough.
bool IsShortOrBytes(const HostPicture& picture) { return !picture.IsLong() || picture.Has(CV_8U, 1); }

/// Element by element, with every not-a-number like every other: a text does not keep their bits.
bool HaveSameNumbers(const cv::Mat& a, const cv::Mat& b) {
    if (a.empty() || a.depth() < CV_32F) return HaveSameBytes(a, b);
    if (a.type() != b.type() || a.dims > 2 || a.size() != b.size()) return HaveSameBytes(a, b);
    cv::Mat numbers[2];
    for (int i = 0; i < 2; ++i) {
        (i == 0 ? a : b).convertTo(numbers[i], CV_32F);
        const cv::Mat areNumbers = numbers[i] == numbers[i];
        numbers[i] = numbers[i].reshape(1);
        numbers[i].setTo(-12345.0, areNumbers.reshape(1) == 0);
    }
    return HaveSameBytes(numbers[0], numbers[1]);
}

std::string TryHomographyFile(const ScratchFolder& folder, const cv::Mat& matrix, const char* ending) {
    const std::string file = folder.File(std::string("matrix") + ending);
    const std::string saved = Told("SaveHomography", [&] { return SaveHomography(file, matrix); });
    if (saved != "true") return "not saved, " + saved;
    cv::Mat read;
    const std::string told = Told("LoadHomography", [&] { return LoadHomography(file, read); });
    if (told != "true") return told;
    return HaveSameNumbers(read, matrix) ? "the same matrix" : "another matrix";
}

std::string TryLensFile(const ScratchFolder& folder, const cv::Mat& matrix) {
    const std::string file = folder.File("lens.yml");
    const std::string saved =
        Told("SaveCameraParameters", [&] { return SaveCameraParameters(file, matrix, matrix, 0.5); });
    if (saved != "true") return "not saved, " + saved;
    cv::Mat K;
    cv::Mat D;
    double rms = 0.0;
    const std::string told = Told("LoadCameraParameters", [&] { return LoadCameraParameters(file, K, D, rms); });
    if (told != "true") return told;
    return HaveSameNumbers(K, matrix) && HaveSameNumbers(D, matrix) && rms == 0.5 ? "the same matrix"
                                                                                  : "another matrix";
}

std::string FileTold(const HostPicture&) { return "the same matrix"; }

/// A calibration file with this matrix, and all that then maps points with it.
std::string TryCalibratorFile(const ScratchFolder& folder, const cv::Mat& matrix) {
    const std::string file = folder.File("calibrator.yml");
    cv::FileStorage writer(file, cv::FileStorage::WRITE);
    writer << "Homography_WarpImage" << matrix << "SourceImageWidth" << 31 << "SourceImageHeight" << 23;
    writer.release();
    CameraCalibrator calibrator;
    if (!calibrator.LoadCalibration(file)) return "false";
    const std::string mapped = OutcomeOf([&] {
        calibrator.ImageToMachine({1.0f, 2.0f});
        return "true";
    });
    const std::string others[] = {OutcomeOf([&] {
                                      calibrator.MachineToImage({1.0f, 2.0f});
                                      return "true";
                                  }),
                                  OutcomeOf([&] {
                                      calibrator.ImageToMachine_Distance(2.0, {1.0f, 2.0f}, CameraCalibrator::Diagonal);
                                      return "true";
                                  }),
                                  OutcomeOf([&] {
                                      calibrator.CalcMaxError({{1.0f, 2.0f}}, {{1.0f, 2.0f}});
                                      return "true";
                                  })};
    for (const std::string& other : others) {
        if (other != mapped) return mapped + " and " + other;
    }
    return mapped;
}

std::string CalibratorFileTold(const HostPicture& picture) {
    if (picture.IsEmpty()) return "false";
    return picture.shape == Shape::ThreeByThree && picture.Has(CV_64F, 1) ? "true" : "cv::Exception";
}

TEST(PictureMatrix, LensAndBoards) {
    const auto isGrayBytes = [](const HostPicture& p) { return p.Has(CV_8U, 1) && !p.IsEmpty(); };
    TryOnAllPictures({
        {"CalibrateDistortedCamera", TryLensCalibration, LensCalibrationTold},
        {"UnDistortedImage", [](const cv::Mat& p) { return TryUndistortion(p, SomeCameraMatrix(), SomeDistortion()); },
         UndistortionTold},
        {"UnDistortedImage, camera matrix",
         [](const cv::Mat& p) { return TryUndistortion(cv::Mat(9, 8, CV_8UC1, cv::Scalar(7)), p, SomeDistortion()); },
         CameraMatrixTold},
        {"UnDistortedImage, distortion",
         [](const cv::Mat& p) { return TryUndistortion(cv::Mat(9, 8, CV_8UC1, cv::Scalar(7)), SomeCameraMatrix(), p); },
         DistortionTold},
        {"FindCalibrationBoard", TryCircleBoard, CircleBoardTold},
        {"FindChArUcoBoard", [](const cv::Mat& p) { return TryCharucoBoard(p, false); }, CharucoBoardTold, isGrayBytes},
        {"FindChArUcoBoard, refining", [](const cv::Mat& p) { return TryCharucoBoard(p, true); }, CharucoBoardTold,
         isGrayBytes},
    });
}

TEST(PictureMatrix, Calibrator) {
    CameraCalibrator uncalibrated;
    CameraCalibrator calibrated = SomeCalibrator();
    TryOnAllPictures({
        {"WarpPerspectiveImage, not calibrated", [&](const cv::Mat& p) { return TryWarp(uncalibrated, p); },
         [](const HostPicture&) { return "a copy"; }},
        {"WarpPerspectiveImage", [&](const cv::Mat& p) { return TryWarp(calibrated, p); },
         [](const HostPicture& p) {
             if (p.IsEmpty() || !IsRemapped(p) || p.IsLong() || p.channels > 4) return "cv::Exception";
             return p.shape == Shape::OnePixel ? "a copy" : "a warped picture";
         }},
    });
}

TEST(PictureMatrix, CalibrationFiles) {
    const ScratchFolder folder;
    std::vector<PictureOperation> operations{
        {"SaveHomography, LoadHomography, YAML", [&](const cv::Mat& p) { return TryHomographyFile(folder, p, ".yml"); },
         FileTold},
        {"SaveHomography, LoadHomography, XML", [&](const cv::Mat& p) { return TryHomographyFile(folder, p, ".xml"); },
         FileTold},
        {"SaveHomography, LoadHomography, JSON",
         [&](const cv::Mat& p) { return TryHomographyFile(folder, p, ".json"); }, FileTold},
        {"SaveCameraParameters, LoadCameraParameters", [&](const cv::Mat& p) { return TryLensFile(folder, p); },
         FileTold},
        {"LoadCalibration", [&](const cv::Mat& p) { return TryCalibratorFile(folder, p); }, CalibratorFileTold},
    };
    for (PictureOperation& operation : operations) operation.triedOn = IsShortOrBytes;
    TryOnAllPictures(operations);
}

}  // namespace
}  // namespace Quorvane::Robustness
