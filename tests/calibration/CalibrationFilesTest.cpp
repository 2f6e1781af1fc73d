#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "calibration/CameraCalibration.h"
#include "calibration/LastError.h"
#include "tests/support/Matchers.h"
#include "tests/support/ScratchFolder.h"

namespace Quorvane::CameraCalibration {

using testing::HasSubstr;
using testing::StartsWith;
using TestSupport::EqualsMat;
using TestSupport::ScratchFolder;

namespace {

const char* const formats[] = {"lens.yml", "lens.yaml", "lens.xml", "lens.json", "lens", "lens.yml.gz"};

const cv::Mat someK = (cv::Mat_<double>(3, 3) << 300.25, 0.5, 319.5, 0.0, 301.125, 239.5, 0.0, 0.0, 1.0);
const cv::Mat someD = (cv::Mat_<double>(4, 1) << 0.1, -1.0 / 3.0, 1e-17, 4.0);

/// What a load must not touch when it fails.
struct Outputs {
    cv::Mat K = (cv::Mat_<double>(3, 3) << 1, 2, 3, 4, 5, 6, 7, 8, 9);
    cv::Mat D = (cv::Mat_<double>(4, 1) << 5, 6, 7, 8);
    cv::Mat homography = cv::Mat::eye(3, 3, CV_32F);
    double rms = 42.0;

    void ExpectUntouched() const {
        const Outputs fresh;
        EXPECT_THAT(K, EqualsMat(fresh.K));
        EXPECT_THAT(D, EqualsMat(fresh.D));
        EXPECT_THAT(homography, EqualsMat(fresh.homography));
        EXPECT_EQ(rms, fresh.rms);
    }
};

/// Both loads refuse the file, with a last error that begins so, and touch nothing.
void ExpectRefused(const std::string& path, const std::string& cameraText, const std::string& homographyText) {
    Outputs outputs;
    SetLastError("");
    EXPECT_FALSE(LoadCameraParameters(path, outputs.K, outputs.D, outputs.rms));
    EXPECT_THAT(GetLastError(), StartsWith(cameraText));
    SetLastError("");
    EXPECT_FALSE(LoadHomography(path, outputs.homography));
    EXPECT_THAT(GetLastError(), StartsWith(homographyText));
    outputs.ExpectUntouched();
}

const std::string fromCameraParser = "[Quorvane::CameraCalibration::LoadCameraParameters]OpenCV(";
const std::string fromHomographyParser = "[Quorvane::CameraCalibration::LoadHomography]OpenCV(";
const std::string corrupted = "This file has been corrupted, and the data cannot be read : ";

void ExpectRefusedByTheParser(const std::string& path) { ExpectRefused(path, fromCameraParser, fromHomographyParser); }
void ExpectCorrupted(const std::string& path) { ExpectRefused(path, corrupted + path, corrupted + path); }

TEST(CameraParameters, ComeBackToTheBitInEveryFormat) {
    const ScratchFolder folder;
    for (const char* name : formats) {
        ASSERT_TRUE(SaveCameraParameters(folder.File(name), someK, someD, 0.1)) << name;
        cv::Mat K;
        cv::Mat D;
        double rms = 0.0;
        ASSERT_TRUE(LoadCameraParameters(folder.File(name), K, D, rms)) << name;
        EXPECT_THAT(K, EqualsMat(someK));
        EXPECT_THAT(D, EqualsMat(someD));
        EXPECT_EQ(rms, 0.1);
    }
}

TEST(CameraParameters, FormatFollowsFromTheFileName) {
    const ScratchFolder folder;
    for (const char* name : formats) ASSERT_TRUE(SaveCameraParameters(folder.File(name), someK, someD, 0.1));
    EXPECT_THAT(folder.Read("lens.yml"), StartsWith("%YAML:1.0"));
    EXPECT_THAT(folder.Read("lens.yaml"), StartsWith("%YAML:1.0"));
    EXPECT_THAT(folder.Read("lens"), StartsWith("%YAML:1.0"));
    EXPECT_THAT(folder.Read("lens.xml"), StartsWith("<?xml version=\"1.0\"?>"));
    EXPECT_THAT(folder.Read("lens.json"), StartsWith("{"));
}

TEST(CameraParameters, NodesStandInTheirOrder) {
    const ScratchFolder folder;
    for (const char* name : {"lens.yml", "lens.xml", "lens.json"}) {
        ASSERT_TRUE(SaveCameraParameters(folder.File(name), someK, someD, 0.5));
        const cv::FileStorage file(folder.File(name), cv::FileStorage::READ);
        EXPECT_THAT(file.root().keys(), testing::ElementsAre("K", "D", "rms")) << name;
        EXPECT_TRUE(file["rms"].isReal());
    }
}

TEST(CameraParameters, AreStoredWithoutALookAtSizesAndTypes) {
    const ScratchFolder folder;
    const cv::Mat oddK = (cv::Mat_<int>(1, 2) << 7, -9);
    const cv::Mat oddD(2, 3, CV_8UC3, cv::Scalar(1, 2, 3));
    for (const char* name : formats) {
        ASSERT_TRUE(SaveCameraParameters(folder.File(name), oddK, oddD, -3.0));
        Outputs outputs;
        ASSERT_TRUE(LoadCameraParameters(folder.File(name), outputs.K, outputs.D, outputs.rms));
        EXPECT_THAT(outputs.K, EqualsMat(oddK));
        EXPECT_THAT(outputs.D, EqualsMat(oddD));
        EXPECT_EQ(outputs.rms, -3.0);
    }
}

TEST(CameraParameters, EmptyMatricesAndNotANumberComeBack) {
    const ScratchFolder folder;
    for (const char* name : {"lens.yml", "lens.xml", "lens.json"}) {
        ASSERT_TRUE(SaveCameraParameters(folder.File(name), cv::Mat(), cv::Mat(), std::nan("")));
        Outputs outputs;
        ASSERT_TRUE(LoadCameraParameters(folder.File(name), outputs.K, outputs.D, outputs.rms)) << GetLastError();
        EXPECT_TRUE(outputs.K.empty());
        EXPECT_TRUE(outputs.D.empty());
        EXPECT_TRUE(std::isnan(outputs.rms));
    }
}

TEST(CameraParameters, ASecondSaveReplacesTheFirst) {
    const ScratchFolder folder;
    const std::string path = folder.File("lens.yml");
    ASSERT_TRUE(SaveCameraParameters(path, someK, someD, 1.0));
    ASSERT_TRUE(SaveCameraParameters(path, someK, someD, 2.0));
    Outputs outputs;
    ASSERT_TRUE(LoadCameraParameters(path, outputs.K, outputs.D, outputs.rms));
    EXPECT_EQ(outputs.rms, 2.0);
}

TEST(CameraParameters, LoadDoesNotWriteIntoSharedElements) {
    const ScratchFolder folder;
    const std::string path = folder.File("lens.yml");
    ASSERT_TRUE(SaveCameraParameters(path, someK, someD, 1.0));
    Outputs outputs;
    const cv::Mat sameElements = outputs.K;
    ASSERT_TRUE(LoadCameraParameters(path, outputs.K, outputs.D, outputs.rms));
    EXPECT_THAT(sameElements, EqualsMat(Outputs().K));
}

TEST(CameraParameters, AMissingNodeIsCorruption) {
    const ScratchFolder folder;
    for (const std::string name : {"lens.yml", "lens.xml", "lens.json"}) {
        for (const std::string missing : {"K", "D", "rms"}) {
            const std::string path = folder.File("no-" + missing + "-" + name);
            cv::FileStorage file(path, cv::FileStorage::WRITE);
            if (missing != "K") file << "K" << someK;
            if (missing != "D") file << "D" << someD;
            if (missing != "rms") file << "rms" << 0.5;
            file.release();
            ExpectCorrupted(path);
        }
    }
}

TEST(CameraParameters, TheContentTellsTheKindOfDocumentToALoad) {
    const ScratchFolder folder;
    for (const char* written : {"lens.yml", "lens.xml", "lens.json"}) {
        ASSERT_TRUE(SaveCameraParameters(folder.File(written), someK, someD, 0.5));
        for (const char* named : {"other.yml", "other.xml", "other.json", "other", "other.png"}) {
            Outputs outputs;
            EXPECT_TRUE(
                LoadCameraParameters(folder.Write(named, folder.Read(written)), outputs.K, outputs.D, outputs.rms))
                << written << " as " << named << ": " << GetLastError();
            EXPECT_THAT(outputs.K, EqualsMat(someK));
            EXPECT_EQ(outputs.rms, 0.5);
        }
    }
}

TEST(CameraParameters, NumbersWithoutAPointAreRead) {
    const ScratchFolder folder;
    const std::string path = folder.File("lens.yml");
    cv::FileStorage file(path, cv::FileStorage::WRITE);
    file << "K" << someK << "D" << someD << "rms" << 3;
    file.release();
    Outputs outputs;
    ASSERT_TRUE(LoadCameraParameters(path, outputs.K, outputs.D, outputs.rms));
    EXPECT_EQ(outputs.rms, 3.0);
}

TEST(Homography, ComesBackWithValuesAndTypeInEveryFormat) {
    const ScratchFolder folder;
    for (const cv::Mat& homography : {someK, cv::Mat(cv::Mat_<float>(3, 3, 0.1f)), cv::Mat()}) {
        for (const char* name : formats) {
            ASSERT_TRUE(SaveHomography(folder.File(name), homography));
            cv::Mat loaded = cv::Mat::ones(2, 2, CV_8U);
            ASSERT_TRUE(LoadHomography(folder.File(name), loaded)) << GetLastError();
            EXPECT_EQ(loaded.empty(), homography.empty());
            if (!homography.empty()) {
                EXPECT_THAT(loaded, EqualsMat(homography));
            }
        }
    }
}

TEST(Homography, HasTheOneNode) {
    const ScratchFolder folder;
    ASSERT_TRUE(SaveHomography(folder.File("map.xml"), someK));
    const cv::FileStorage file(folder.File("map.xml"), cv::FileStorage::READ);
    EXPECT_THAT(file.root().keys(), testing::ElementsAre("Homo"));
}

TEST(CalibrationFiles, OneKindReadAsTheOtherIsCorrupted) {
    const ScratchFolder folder;
    const std::string lens = folder.File("lens.yml");
    const std::string map = folder.File("map.yml");
    ASSERT_TRUE(SaveCameraParameters(lens, someK, someD, 1.0));
    ASSERT_TRUE(SaveHomography(map, someK));
    Outputs outputs;
    EXPECT_FALSE(LoadHomography(lens, outputs.homography));
    EXPECT_EQ(GetLastError(), corrupted + lens);
    EXPECT_FALSE(LoadCameraParameters(map, outputs.K, outputs.D, outputs.rms));
    EXPECT_EQ(GetLastError(), corrupted + map);
    outputs.ExpectUntouched();
}

TEST(CalibrationFiles, SuccessDoesNotClearTheLastError) {
    const ScratchFolder folder;
    const std::string missing = folder.File("missing.yml");
    const std::string path = folder.File("map.yml");
    cv::Mat homography;
    EXPECT_FALSE(LoadHomography(missing, homography));
    ASSERT_TRUE(SaveHomography(path, someK));
    ASSERT_TRUE(LoadHomography(path, homography));
    EXPECT_EQ(GetLastError(), "Failed to open file for reading: " + missing);
}

TEST(CalibrationFiles, MissingFilesAreNamed) {
    const ScratchFolder folder;
    for (const char* name : {"no such file.yml", "no/such/folder.xml", "missing.yml.gz"}) {
        const std::string text = "Failed to open file for reading: " + folder.File(name);
        ExpectRefused(folder.File(name), text, text);
        EXPECT_EQ(GetLastError(), text);
    }
}

TEST(CalibrationFiles, UnwritableFilesAreNamed) {
    const ScratchFolder folder;
    // A folder in the file's place, a folder that is not there, and no name at all.
    for (const std::string& path : {folder.Path().string(), folder.File("no/such/folder.yml"), std::string()}) {
        SetLastError("");
        EXPECT_FALSE(SaveCameraParameters(path, someK, someD, 1.0));
        EXPECT_EQ(GetLastError(), "Failed to open file for writing: " + path);
        SetLastError("");
        EXPECT_FALSE(SaveHomography(path, someK));
        EXPECT_EQ(GetLastError(), "Failed to open file for writing: " + path);
    }
}

TEST(CalibrationFiles, WhatIsNoCalibrationFileIsRefusedByTheParser) {
    const ScratchFolder folder;
    std::string bytes;
    for (int i = 0; i < 4096; ++i) bytes.push_back(static_cast<char>(i * 37));
    ExpectRefusedByTheParser(folder.Write("empty.yml", ""));
    ExpectRefusedByTheParser(folder.Write("blank.yml", "\n\n"));
    ExpectRefusedByTheParser(folder.Write("text.yml", "Dear operator,\nthis is a letter.\n"));
    ExpectRefusedByTheParser(folder.Write("binary.yml", bytes));
    ExpectRefusedByTheParser(folder.Write("zeros.xml", std::string(4096, '\0')));
    ExpectRefusedByTheParser(folder.Write("page.xml", "<!DOCTYPE html><html></html>"));
    ExpectRefusedByTheParser(folder.Path().string());
    ExpectRefusedByTheParser("");
}

TEST(CalibrationFiles, ForeignDocumentsLackTheNodes) {
    const ScratchFolder folder;
    ExpectCorrupted(folder.Write("other.yml", "%YAML:1.0\n---\nname: \"someone else's\"\n"));
    ExpectCorrupted(folder.Write("bare.yml", "%YAML:1.0\n---\n"));
    ExpectCorrupted(
        folder.Write("other.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n<a>1</a>\n</opencv_storage>\n"));
    ExpectCorrupted(folder.Write("other.json", "{\n  \"name\": 1\n}\n"));
}

TEST(CalibrationFiles, NodesThatAreNoMatricesChangeNothing) {
    const ScratchFolder folder;
    const std::string matrix = "!!opencv-matrix\n   rows: 1\n   cols: 1\n   dt: d\n   data: [ 1. ]\n";
    const auto lens = [&](const std::string& K, const std::string& D) {
        return "%YAML:1.0\n---\nK: " + K + "D: " + D + "rms: 1.\nHomo: " + D;
    };
    Outputs outputs;
    ASSERT_TRUE(LoadCameraParameters(folder.Write("good.yml", lens(matrix, matrix)), outputs.K, outputs.D, outputs.rms))
        << GetLastError();
    const std::string broken[] = {
        "5\n",
        "\"text\"\n",
        "[ 1, 2, 3 ]\n",
        "!!opencv-matrix\n   rows: 2\n   cols: 2\n   dt: d\n   data: [ 1., 2., 3. ]\n",
        "!!opencv-matrix\n   rows: 1\n   cols: 1\n   dt: x\n   data: [ 1. ]\n",
        "!!opencv-matrix\n   rows: -4\n   cols: 2\n   dt: d\n   data: [ 1., 2. ]\n",
        "!!opencv-matrix\n   rows: 1\n   cols: -1\n   dt: d\n   data: [ 1. ]\n",
        "!!opencv-matrix\n   rows: 30000\n   cols: 30000\n   dt: d\n   data: [ 1. ]\n",
        "!!opencv-matrix\n   rows: 2147483647\n   cols: 2147483647\n   dt: d\n   data: [ 1. ]\n",
        "!!opencv-matrix\n   sizes: [ 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,\n"
        "      1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1 ]\n   dt: d\n   data: [ 1. ]\n",
    };
    // The matrix before the broken one is readable: it must not reach the caller alone.
    for (const std::string& D : broken) ExpectRefusedByTheParser(folder.Write("broken.yml", lens(matrix, D)));
}

TEST(CalibrationFiles, ATruncatedFileIsRefusedWhereverItEnds) {
    const ScratchFolder folder;
    for (const char* name : {"lens.yml", "lens.xml", "lens.json"}) {
        ASSERT_TRUE(SaveCameraParameters(folder.File(name), someK, someD, 0.1234567));
        const std::string whole = folder.Read(name);
        const std::size_t lastNode = whole.find("rms");
        ASSERT_NE(lastNode, std::string::npos);
        for (std::size_t length = 0; length <= lastNode; ++length) {
            const std::string path = folder.Write(std::string("cut-") + name, whole.substr(0, length));
            Outputs outputs;
            SetLastError("");
            ASSERT_FALSE(LoadCameraParameters(path, outputs.K, outputs.D, outputs.rms)) << name << " at " << length;
            const std::string text = GetLastError();
            EXPECT_TRUE(text == corrupted + path || text.rfind(fromCameraParser, 0) == 0) << text;
            outputs.ExpectUntouched();
        }
    }
}

TEST(CalibrationFiles, AHugeForeignFileIsRefused) {
    const ScratchFolder folder;
    constexpr std::size_t length = 8u << 20;
    ExpectRefusedByTheParser(folder.Write("letters.yml", "%YAML:1.0\n---\n" + std::string(length, 'a')));
    ExpectRefusedByTheParser(folder.Write("letters.txt", std::string(length, 'a')));
    std::string lines = "%YAML:1.0\n---\n";
    for (int i = 0; lines.size() < length / 4; ++i) lines += "node" + std::to_string(i) + ": 12345678901234567890\n";
    ExpectCorrupted(folder.Write("nodes.yml", lines));
}

#if defined(__linux__)
// The first page of a process cannot be read, so this regular file fails as a broken medium does.
TEST(CalibrationFiles, AMediumThatFailsIsRefused) {
    const std::string failing = "/proc/self/mem";
    std::ifstream file(failing);
    file.get();
    if (!file.bad()) GTEST_SKIP() << "this machine does not show the memory of processes as files";
    ExpectRefusedByTheParser(failing);
}
#endif

TEST(CalibrationFiles, TheFileNameIsTakenAndToldAsItIs) {
    const ScratchFolder folder;
    const std::string path = folder.File("L\xc3\xa4nse 1 'a'.yml");
    ASSERT_TRUE(SaveHomography(path, someK));
    cv::Mat homography;
    EXPECT_TRUE(LoadHomography(path, homography));
    EXPECT_FALSE(LoadHomography(path + "x", homography));
    EXPECT_EQ(GetLastError(), "Failed to open file for reading: " + path + "x");
    EXPECT_THAT(GetLastError(), HasSubstr("L\xc3\xa4nse 1 'a'"));
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
