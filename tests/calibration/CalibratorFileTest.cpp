#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "calibration/CameraCalibrator.h"
#include "tests/calibration/CalibratorScenes.h"
#include "tests/support/Matchers.h"
#include "tests/support/ScratchFolder.h"

namespace Quorvane::CameraCalibration {

using testing::ElementsAre;
using testing::StartsWith;
using namespace TestSupport;

namespace {

const char* const formats[] = {"camera.yml", "camera.xml", "camera.json"};
const cv::Point2f somewhere(123.0f, 345.0f);

/// Shifts by x, so that it can be told apart.
CameraCalibrator Shifting(double x) { return WithHomography((cv::Mat_<double>(3, 3) << 1, 0, x, 0, 1, 0, 0, 0, 1)); }

double ShiftOf(CameraCalibrator& calibrator) { return static_cast<double>(calibrator.ImageToMachine({0.0f, 0.0f}).x); }

TEST(CalibratorFile, BringsTheMappingAndTheSizesBackInEveryFormat) {
    const ScratchFolder folder;
    for (const char* name : {"camera.yml", "camera.xml", "camera.json", "camera", "camera.xml.gz"}) {
        CameraCalibrator saved = CalibratedOverTheBed();
        ASSERT_TRUE(saved.SaveCalibration(folder.File(name), false)) << name;
        CameraCalibrator loaded;
        ASSERT_TRUE(loaded.LoadCalibration(folder.File(name))) << name;
        EXPECT_TRUE(loaded.IsCalibrateVaild());
        EXPECT_THAT(HomographyOf(loaded), EqualsMat(HomographyOf(saved)));
        EXPECT_EQ(loaded.WarpPerspectivePoint(somewhere, 2), saved.WarpPerspectivePoint(somewhere, 2));
    }
}

TEST(CalibratorFile, HasTheFourNodesInTheirOrder) {
    const ScratchFolder folder;
    for (const char* name : formats) {
        ASSERT_TRUE(CalibratedOverTheBed().SaveCalibration(folder.File(name), false));
        const cv::FileStorage file(folder.File(name), cv::FileStorage::READ);
        EXPECT_THAT(file.root().keys(),
                    ElementsAre("IsAutoCalibrate", "Homography_WarpImage", "SourceImageWidth", "SourceImageHeight"));
        EXPECT_EQ(static_cast<int>(file["IsAutoCalibrate"]), 1);
        EXPECT_EQ(static_cast<int>(file["SourceImageWidth"]), 640);
        EXPECT_EQ(static_cast<int>(file["SourceImageHeight"]), 480);
        EXPECT_TRUE(file["SourceImageHeight"].isInt());
    }
}

TEST(CalibratorFile, AnUncalibratedObjectIsWrittenWithAnEmptyMatrix) {
    const ScratchFolder folder;
    for (const char* name : formats) {
        ASSERT_TRUE(CameraCalibrator().SaveCalibration(folder.File(name), false));
        const cv::FileStorage file(folder.File(name), cv::FileStorage::READ);
        EXPECT_EQ(static_cast<int>(file["IsAutoCalibrate"]), 1);
        cv::Mat homography = cv::Mat::ones(3, 3, CV_64F);
        file["Homography_WarpImage"] >> homography;
        EXPECT_TRUE(homography.empty());

        CameraCalibrator loaded = CalibratedOverTheBed();
        EXPECT_FALSE(loaded.LoadCalibration(folder.File(name)));
        EXPECT_FALSE(loaded.IsCalibrateVaild()) << "the one way to lose the calibrated state";
    }
}

TEST(CalibratorFile, TwoSavesWithoutAppendLeaveOneSet) {
    const ScratchFolder folder;
    for (const char* name : formats) {
        ASSERT_TRUE(Shifting(1.0).SaveCalibration(folder.File(name), false));
        const std::string once = folder.Read(name);
        ASSERT_TRUE(Shifting(1.0).SaveCalibration(folder.File(name), false));
        EXPECT_EQ(folder.Read(name), once);
    }
}

TEST(CalibratorFile, AppendingToNothingMakesTheFile) {
    const ScratchFolder folder;
    for (const char* name : formats) {
        ASSERT_TRUE(Shifting(1.0).SaveCalibration(folder.File(name), true)) << name;
        CameraCalibrator loaded;
        EXPECT_TRUE(loaded.LoadCalibration(folder.File(name))) << name;
        EXPECT_EQ(ShiftOf(loaded), 1.0);
    }
}

TEST(CalibratorFile, AppendingKeepsWhatIsThereAndTheFirstMappingIsRead) {
    const ScratchFolder folder;
    for (const char* name : formats) {
        cv::FileStorage file(folder.File(name), cv::FileStorage::WRITE);
        file << "Operator"
             << "someone";
        file.release();
        ASSERT_TRUE(Shifting(1.0).SaveCalibration(folder.File(name), true));
        CameraCalibrator loaded;
        ASSERT_TRUE(loaded.LoadCalibration(folder.File(name))) << name;
        EXPECT_EQ(ShiftOf(loaded), 1.0) << name;
        EXPECT_THAT(folder.Read(name), testing::HasSubstr("someone"));
    }
}

TEST(CalibratorFile, OfSeveralMappingsTheFirstIsRead) {
    const ScratchFolder folder;
    for (const char* name : formats) {
        for (const double shift : {1.0, 2.0, 3.0}) {
            ASSERT_TRUE(Shifting(shift).SaveCalibration(folder.File(name), true)) << name;
        }
        CameraCalibrator loaded;
        ASSERT_TRUE(loaded.LoadCalibration(folder.File(name))) << name;
        EXPECT_EQ(ShiftOf(loaded), 1.0);
        const std::string text = folder.Read(name);
        std::size_t count = 0;
        for (std::size_t at = text.find("IsAutoCalibrate"); at != std::string::npos;
             at = text.find("IsAutoCalibrate", at + 1)) {
            ++count;
        }
        EXPECT_EQ(count, name == std::string("camera.xml") ? 6u : 3u) << "XML names a node at both of its ends";
    }
}

TEST(CalibratorFile, AppendingToAFileCutShortNeverBringsAHalfMapping) {
    const ScratchFolder folder;
    for (const char* name : formats) {
        ASSERT_TRUE(Shifting(9.0).SaveCalibration(folder.File(name), false));
        const std::string whole = folder.Read(name);
        const std::string cut = whole.substr(0, whole.find("SourceImageWidth") - 20);
        const std::string path = folder.Write(std::string("cut-") + name, cut);
        if (name == formats[0]) {
            // Nothing is looked at: the new mapping stands behind the torn one, and no load gets past that.
            EXPECT_TRUE(Shifting(1.0).SaveCalibration(path, true));
        } else {
            EXPECT_THROW(Shifting(1.0).SaveCalibration(path, true), cv::Exception) << "the document's end is missing";
            EXPECT_EQ(folder.Read(std::string("cut-") + name), cut);
        }
        CameraCalibrator loaded = Shifting(5.0);
        EXPECT_THROW(loaded.LoadCalibration(path), cv::Exception);
        EXPECT_EQ(ShiftOf(loaded), 5.0);
    }
}

TEST(CalibratorFile, CompressedFilesCannotBeAppendedTo) {
    const ScratchFolder folder;
    EXPECT_THROW(Shifting(1.0).SaveCalibration(folder.File("camera.yml.gz"), true), cv::Exception);
}

TEST(CalibratorFile, AMissingFileLeavesTheObjectAsItIs) {
    const ScratchFolder folder;
    CameraCalibrator calibrator = Shifting(5.0);
    EXPECT_FALSE(calibrator.LoadCalibration(folder.File("missing.yml")));
    EXPECT_TRUE(calibrator.IsCalibrateVaild());
    EXPECT_EQ(ShiftOf(calibrator), 5.0);
    CameraCalibrator fresh;
    EXPECT_FALSE(fresh.LoadCalibration(folder.File("missing.yml")));
}

TEST(CalibratorFile, AFileThatCannotBeWrittenIsTold) {
    const ScratchFolder folder;
    for (const bool append : {false, true}) {
        EXPECT_FALSE(Shifting(1.0).SaveCalibration(folder.Path().string(), append));
        EXPECT_FALSE(Shifting(1.0).SaveCalibration(folder.File("no/such/folder.yml"), append));
        EXPECT_FALSE(Shifting(1.0).SaveCalibration("", append));
    }
}

/// Saves the mapping of `Shifting(9)` without the named node.
std::string Without(const ScratchFolder& folder, const std::string& missing) {
    const std::string path = folder.File("without-" + missing + ".yml");
    cv::FileStorage file(path, cv::FileStorage::WRITE);
    if (missing != "Homography_WarpImage") {
        file << "Homography_WarpImage" << (cv::Mat_<double>(3, 3) << 1, 0, 9, 0, 1, 0, 0, 0, 1);
    }
    if (missing != "SourceImageWidth") file << "SourceImageWidth" << 640;
    if (missing != "SourceImageHeight") file << "SourceImageHeight" << 480;
    file.release();
    return path;
}

TEST(CalibratorFile, WithoutASizeTheHomographyIsNotReadButAnOldOneStaysUsable) {
    const ScratchFolder folder;
    for (const char* missing : {"SourceImageWidth", "SourceImageHeight"}) {
        CameraCalibrator calibrated = Shifting(5.0);
        EXPECT_TRUE(calibrated.LoadCalibration(Without(folder, missing)));
        EXPECT_EQ(ShiftOf(calibrated), 5.0);
        CameraCalibrator fresh;
        EXPECT_FALSE(fresh.LoadCalibration(Without(folder, missing)));
        EXPECT_FALSE(fresh.IsCalibrateVaild());
    }
}

TEST(CalibratorFile, WithoutAHomographyTheObjectIsUncalibrated) {
    const ScratchFolder folder;
    CameraCalibrator calibrated = Shifting(5.0);
    EXPECT_FALSE(calibrated.LoadCalibration(Without(folder, "Homography_WarpImage")));
    EXPECT_FALSE(calibrated.IsCalibrateVaild());
}

TEST(CalibratorFile, IsAutoCalibrateIsIgnored) {
    const ScratchFolder folder;
    CameraCalibrator loaded;
    EXPECT_TRUE(loaded.LoadCalibration(Without(folder, "IsAutoCalibrate"))) << "it is not there";
    std::string text;
    ASSERT_TRUE(Shifting(3.0).SaveCalibration(folder.File("camera.yml"), false));
    text = folder.Read("camera.yml");
    const std::string node = "IsAutoCalibrate: 1";
    ASSERT_NE(text.find(node), std::string::npos);
    EXPECT_TRUE(loaded.LoadCalibration(
        folder.Write("zero.yml", text.replace(text.find(node), node.size(), "IsAutoCalibrate: 0"))));
    EXPECT_EQ(ShiftOf(loaded), 3.0);
}

TEST(CalibratorFile, ALoadGivesTheObjectAMatrixOfItsOwn) {
    const ScratchFolder folder;
    ASSERT_TRUE(Shifting(3.0).SaveCalibration(folder.File("camera.yml"), false));
    CameraCalibrator original = Shifting(5.0);
    CameraCalibrator copy = original;
    ASSERT_TRUE(original.LoadCalibration(folder.File("camera.yml")));
    EXPECT_EQ(ShiftOf(original), 3.0);
    EXPECT_EQ(ShiftOf(copy), 5.0);
}

TEST(CalibratorFile, BrokenFilesThrowAndLeaveTheObjectAsItIs) {
    const ScratchFolder folder;
    const std::string sizes = "SourceImageWidth: 640\nSourceImageHeight: 480\n";
    const std::string broken[] = {
        folder.Write("empty.yml", ""),
        folder.Write("letter.yml", "Dear operator,\n"),
        folder.Write("binary.yml", std::string(5000, '\x7f')),
        folder.Write("huge.yml", "%YAML:1.0\n---\n" + std::string(4u << 20, 'a')),
        folder.Write("text.yml", "%YAML:1.0\n---\nHomography_WarpImage: \"none\"\n" + sizes),
        folder.Write("short.yml",
                     "%YAML:1.0\n---\nHomography_WarpImage: !!opencv-matrix\n   rows: 3\n   cols: 3\n"
                     "   dt: d\n   data: [ 1., 0. ]\n" +
                         sizes),
        folder.Path().string(),
    };
    for (const std::string& path : broken) {
        CameraCalibrator calibrator = Shifting(5.0);
        EXPECT_THROW(calibrator.LoadCalibration(path), cv::Exception) << path;
        EXPECT_TRUE(calibrator.IsCalibrateVaild());
        EXPECT_EQ(ShiftOf(calibrator), 5.0);
    }
}

TEST(CalibratorFile, AFileCutAnywhereNeverBringsAHalfMapping) {
    const ScratchFolder folder;
    for (const char* name : formats) {
        ASSERT_TRUE(Shifting(9.0).SaveCalibration(folder.File(name), false));
        const std::string whole = folder.Read(name);
        const std::size_t lastNode = whole.find("SourceImageHeight");
        ASSERT_NE(lastNode, std::string::npos);
        for (std::size_t length = 0; length <= lastNode; ++length) {
            const std::string path = folder.Write(std::string("cut-") + name, whole.substr(0, length));
            CameraCalibrator calibrator = Shifting(5.0);
            try {
                calibrator.LoadCalibration(path);
            } catch (const cv::Exception&) {
                // The parser's refusal passes to the caller.
            }
            ASSERT_EQ(ShiftOf(calibrator), 5.0) << name << " at " << length;
        }
    }
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
