#include "calibration/Inflate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/support/RandomInput.h"
#include "tests/support/ScratchFolder.h"

namespace Quorvane::CameraCalibration {

using TestSupport::RandomInput;
using TestSupport::ScratchFolder;

namespace {

constexpr std::size_t enough = std::size_t{1} << 26;

/// A document with a matrix of random elements, in the kind and the strength of compression that the ending tells.
std::string Document(const ScratchFolder& folder, const std::string& ending, int rows, int distinctValues) {
    RandomInput random(7);
    cv::Mat matrix(rows, 20, CV_32S);
    for (int i = 0; i < rows * 20; ++i) matrix.at<int>(i / 20, i % 20) = random.Integer(0, distinctValues);
    cv::FileStorage file(folder.File("document" + ending), cv::FileStorage::WRITE);
    file << "matrix" << matrix;
    file.release();
    return folder.Read(
        "document" + ending.substr(0, ending.find("gz") == std::string::npos ? ending.size() : ending.find("gz") + 2));
}

TEST(Inflated, IsWhatWasCompressed) {
    const ScratchFolder folder;
    for (const int rows : {0, 1, 30, 5000}) {
        for (const int distinctValues : {1, 9, 1000000}) {
            const std::string plain = Document(folder, ".yml", rows, distinctValues);
            for (const char* strength : {"", "0", "1", "6", "9"}) {
                const std::string file = Document(folder, std::string(".yml.gz") + strength, rows, distinctValues);
                ASSERT_EQ(file.compare(0, 2, "\x1f\x8b"), 0);
                EXPECT_TRUE(Inflated(file, enough) == plain) << rows << " rows, strength " << strength;
            }
        }
    }
}

TEST(Inflated, OtherFilesAreAsTheyAre) {
    for (const std::string file : {"", "\x1f", "%YAML:1.0\n", "\x8b\x1f"}) EXPECT_EQ(Inflated(file, enough), file);
}

TEST(Inflated, AFileCutShortGivesItsBeginning) {
    const ScratchFolder folder;
    const std::string plain = Document(folder, ".yml", 3, 9);
    const std::string file = Document(folder, ".yml.gz", 3, 9);
    std::size_t before = 0;
    for (std::size_t length = 2; length < file.size(); ++length) {
        const std::string begun = Inflated(file.substr(0, length), enough);
        ASSERT_EQ(begun, plain.substr(0, begun.size()));
        ASSERT_GE(begun.size(), before);
        before = begun.size();
    }
    EXPECT_EQ(before, plain.size()) << "the check sum alone is missing";
}

TEST(Inflated, MembersFollowOneAnotherAndWhatIsNoneIsIgnored) {
    const ScratchFolder folder;
    const std::string plain = Document(folder, ".yml", 3, 9);
    const std::string file = Document(folder, ".yml.gz", 3, 9);
    EXPECT_EQ(Inflated(file + file, enough), plain + plain);
    EXPECT_EQ(Inflated(file + "garbage", enough), plain);
    EXPECT_EQ(Inflated(file + std::string(100, '\0'), enough), plain);
}

TEST(Inflated, HeadersMayCarryMore) {
    // An extra field of three bytes, a name and a comment, and then an empty block of the fixed code.
    const std::string head("\x1f\x8b\x08\x1c\0\0\0\0\0\x03\x03\0abcname\0comment\0", 28);
    EXPECT_EQ(Inflated(head + std::string("\x03\0\0\0\0\0\0\0\0\0", 10), enough), "");
}

TEST(Inflated, DamageIsRefused) {
    const ScratchFolder folder;
    const std::string plain = Document(folder, ".yml", 30, 1000);
    const std::string file = Document(folder, ".yml.gz", 30, 1000);
    RandomInput random(19);
    int refused = 0;
    for (int i = 0; i < 300; ++i) {
        std::string damaged = file;
        damaged[static_cast<std::size_t>(random.Integer(10, static_cast<int>(file.size()) - 1))] ^=
            static_cast<char>(1 << random.Integer(0, 7));
        try {
            // What is no longer refused was cut short by the damage.
            EXPECT_NE(Inflated(damaged, enough), plain) << "a check sum is looked at";
        } catch (const cv::Exception&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 250);
    const std::string methods[] = {
        std::string("\x1f\x8b\x07\0\0\0\0\0\0\x03", 10),             // another method
        std::string("\x1f\x8b\x08\x20\0\0\0\0\0\x03", 10),           // a reserved flag
        std::string("\x1f\x8b\x08\x02\0\0\0\0\0\x03\x01\x02", 12),   // a header of another check sum
        std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03\x07", 11),         // a block of no type
        std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03\x01\1\0\1\0", 15)  // a stored block of two lengths
    };
    for (const std::string& damaged : methods) EXPECT_THROW(Inflated(damaged, enough), cv::Exception);
}

TEST(Inflated, MoreThanAllowedIsRefused) {
    const ScratchFolder folder;
    const std::string plain = Document(folder, ".yml", 30, 9);
    const std::string file = Document(folder, ".yml.gz", 30, 9);
    EXPECT_EQ(Inflated(file, plain.size()), plain);
    EXPECT_THROW(Inflated(file, plain.size() - 1), cv::Exception);
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
