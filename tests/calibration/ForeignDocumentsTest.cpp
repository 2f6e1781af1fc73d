#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/DocumentGuard.h"
#include "calibration/LastError.h"
#include "tests/calibration/ForeignDocuments.h"
#include "tests/support/RandomInput.h"
#include "tests/support/ScratchFolder.h"

namespace Quorvane::CameraCalibration {

using testing::HasSubstr;
using testing::StartsWith;
using TestSupport::RandomInput;
using TestSupport::ScratchFolder;

namespace {

TEST(ForeignDocuments, AnXmlDocumentThatEndsBehindAnEqualsSignIsRefused) {
    const ScratchFolder folder;
    const std::string reason = "the document ends in the middle of an attribute";
    const std::string start = xmlHead + "<Homo type_id=";
    const std::string tails[] = {
        "",
        " ",
        "\n",
        " \t\r\n\n",
        Times(5000, " "),
        Times(5000, "\n"),
        std::string(5000, '\0'),
        std::string(1, '\0') + "\n",
    };
    for (const std::string& tail : tails) {
        ExpectRefused(folder.Write("cut.xml", start + tail), reason);
        ExpectRefused(folder.Write("cut.yml", start + tail), reason);
        ExpectRefused(Compressed(folder, "cut.xml.gz", start + tail), reason);
    }
    ExpectRefused(folder.Write("head.xml", "<?xml version="), reason);
}

TEST(ForeignDocuments, BytesThatHideAPartOfALineAreRefused) {
    const ScratchFolder folder;
    const std::string hidden = "lines with hidden ends";
    const std::string cut = xmlHead + "<Homo type_id=";
    const std::string documents[] = {
        cut + "\n" + std::string(1, '\0') + "\"opencv-matrix\">\n",
        cut + "\r\"opencv-matrix\">",
        yamlHead + Times(tooDeep, std::string("- \0\n", 4)) + "1",
        "{ \"a\":\n" + Times(tooDeep, std::string("[ \0 ]\n", 6)),
        xmlHead + Times(tooDeep, std::string("<a> \0 </a>\n", 11)),
        xmlHead + Times(tooDeep, "<a> \r </a>\n"),
    };
    for (const std::string& document : documents) ExpectRefused(folder.Write("hidden", document), hidden);
}

TEST(ForeignDocuments, LinesMayEndAsOtherSystemsEndThem) {
    const ScratchFolder folder;
    for (const char* ending : {".yml", ".xml", ".json"}) {
        std::string text = StoredHomography(folder, ending);
        for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2)) {
            text.replace(at, 1, "\r\n");
        }
        ExpectLoaded(folder.Write("returns", text));
    }
}

TEST(ForeignDocuments, ALongDocumentIsJudgedInOnePass) {
    // Each would take hours if every letter asked for a look at all that follows.
    EXPECT_NO_THROW(RefuseWhatParsersDoNotSurvive("{" + Times(1000000, "\"a\",\n")));
    EXPECT_NO_THROW(RefuseWhatParsersDoNotSurvive("{" + Times(1000000, "\"\\a\\\",/**/\n")));
    EXPECT_NO_THROW(RefuseWhatParsersDoNotSurvive("{" + Times(1000000, "/*\n")));
    EXPECT_NO_THROW(RefuseWhatParsersDoNotSurvive("<?xml" + Times(1000000, " ='")));
    EXPECT_NO_THROW(RefuseWhatParsersDoNotSurvive("<?xml" + Times(1000000, "<!--")));
    EXPECT_NO_THROW(RefuseWhatParsersDoNotSurvive("<?xml?>" + Times(1000000, "<a></a>")));
    EXPECT_NO_THROW(RefuseWhatParsersDoNotSurvive(yamlHead + Times(1000000, "a: 1 # b\n")));
    EXPECT_NO_THROW(RefuseWhatParsersDoNotSurvive(yamlHead + "a: [" + Times(1000000, "1,")));
}

TEST(ForeignDocuments, EqualsSignsAtOtherEndsAreHarmless) {
    const ScratchFolder folder;
    const std::string xml = StoredHomography(folder, ".xml");
    ExpectLoaded(folder.Write("comment.xml", xml + "<!-- a = b -->"));
    ExpectLoaded(folder.Write("zeros.xml", xml + std::string(300, '\0')));
    ExpectLoaded(folder.Write("blanks.xml", xml + Times(300, " \n")));
    ExpectLoaded(folder.Write("comment.yml", StoredHomography(folder, ".yml") + "# ="));
    ExpectLoaded(folder.Write("zeros.yml", StoredHomography(folder, ".yml") + std::string(300, '\0')));
}

TEST(ForeignDocuments, ADashBetweenTwoDocumentsIsRefused) {
    const ScratchFolder folder;
    for (const char* nodes :
         {"a: 1\n...\n- b\n", "a: 1\n...- b\n", "a: 1\n...\n# c\n%D\n  - b\n", "  a: 1\nxxx- b\n", "{}\nxxx- b\n",
          "- 1\n...\n-\n", "!!map\na: 1\n...\n-- b\n", "...\n---\n[ 1 ]xxx-2\n", "...\n--- ...\n- b\n"}) {
        EXPECT_THROW(RefuseWhatParsersDoNotSurvive(yamlHead + nodes), cv::Exception) << nodes;
        ExpectRefused(folder.Write("dash.yml", yamlHead + nodes), "");
    }
    const std::string map = StoredHomography(folder, ".yml").substr(yamlHead.size());
    const std::string streams[] = {
        map + "...\n---\na: -1\n", "a: -1\n...\n---\n" + map,   "- -1\n- - 2\n...\n# c\n--- # d\n" + map, "{ a: 1 }\n",
        "!!map\n" + map,           "...\n--- ...\n---\n" + map,
    };
    for (const std::string& stream : streams)
        EXPECT_NO_THROW(RefuseWhatParsersDoNotSurvive(yamlHead + stream)) << stream;
    ExpectLoaded(folder.Write("first.yml", yamlHead + streams[0]));
    ExpectLoaded(folder.Write("second.yml", yamlHead + streams[1]));
}

TEST(ForeignDocuments, AnEmptyNameIsRefused) {
    const ScratchFolder folder;
    for (const char* nodes : {"a: 1\n:\n", "a: 1\n : 2\n", "a: { : 1 }\n", "a: { b:1,   : 1 }\n", "a: {\n   : 1 }\n"}) {
        ExpectRefused(folder.Write("empty.yml", yamlHead + nodes), "a name is empty");
    }
}

TEST(ForeignDocuments, Base64DataThatNeverEndAreRefused) {
    const ScratchFolder folder;
    const std::string zeros(400, 'A');
    ExpectRefused(folder.Write("zeros.yml", yamlHead + "a: !!binary |\n   " + zeros + "\n"), "no element type");
    ExpectRefused(
        folder.Write("zeros.xml", xmlHead + "<a type_id=\"binary\">\n " + zeros + "</a>\n</opencv_storage>\n"),
        "no element type");
    ExpectRefused(folder.Write("zeros.json", "{ \"a\": \"$base64$" + zeros + "\" }"), "no element type");
    // "2147483647i1i", whose count of elements overflows.
    ExpectRefused(
        folder.Write("count.yml", yamlHead + "a: !!binary |\n   MjE0NzQ4MzY0N2kxaSAgICAgICAgICAg" + zeros + "\n"),
        "no element type");
    ExpectRefused(folder.Write("short.yml", yamlHead + "a: !!binary |\n   AAAA\n"), "without a header");
    ExpectRefused(folder.Write("same.yml", yamlHead + "a: !!binary " + zeros + "\n"), "a line of their own");
}

TEST(ForeignDocuments, MatricesInBase64AreLoadedAsTheNameAsksForThem) {
    const ScratchFolder folder;
    for (const std::string name : {"map.yml", "map.xml", "map.json"}) {
        // Behind a '?' in the name stand parameters of cv::FileStorage.
        ASSERT_TRUE(SaveHomography(folder.File(name + "?base64"), someMatrix)) << GetLastError();
        EXPECT_THAT(folder.Read(name), HasSubstr("ICAg")) << "a base64 header is filled up with blanks";
        ExpectLoaded(folder.File(name));
        ExpectLoaded(folder.File(name + "?base64"));
    }
}

TEST(ForeignDocuments, CompressionFollowsFromTheName) {
    const ScratchFolder folder;
    for (const std::string name : {"map.yml.gz", "map.xml.gz", "map.json.gz", "map.gz"}) {
        for (const std::string strength : {"", "0", "1", "9"}) {
            ASSERT_TRUE(SaveHomography(folder.File(name + strength), someMatrix)) << name << strength;
            EXPECT_THAT(folder.Read(name), StartsWith("\x1f\x8b"));
            ExpectLoaded(folder.File(name));
            ExpectLoaded(folder.File(name + "5"));
        }
    }
    // A name may promise compression without the file's being compressed.
    ExpectLoaded(folder.Write("plain.gz", StoredHomography(folder, ".yml")));
}

TEST(ForeignDocuments, ADamagedCompressedFileIsRefused) {
    const ScratchFolder folder;
    ASSERT_TRUE(SaveHomography(folder.File("map.yml.gz"), someMatrix));
    std::string file = folder.Read("map.yml.gz");
    file[file.size() / 2] ^= '\x10';
    ExpectRefused(folder.Write("damaged.yml.gz", file), "");
}

std::string YamlMatrix(const std::string& format, const std::string& sizes, const std::string& data) {
    return yamlHead + "Homo: !!opencv-matrix\n   " + sizes + "\n   dt: \"" + format + "\"\n   data: [" + data +
           "]\nK: 1\nD: 1\nrms: 1\nHomography_WarpImage: !!opencv-matrix\n   " + sizes + "\n   dt: \"" + format +
           "\"\n   data: [" + data + "]\nSourceImageWidth: 1\nSourceImageHeight: 1\n";
}

TEST(ForeignDocuments, ElementTypesAndSizesThatOpenCVDoesNotSurviveAreRefused) {
    const ScratchFolder folder;
    const std::string big = "2147483647";
    const std::string matrices[] = {
        YamlMatrix(Times(60, "ui"), "rows: 1\n   cols: 1", "1"),
        YamlMatrix(Times(2000, "ui"), "rows: 1\n   cols: 1", "1"),
        YamlMatrix(big + "d1d", "rows: 0\n   cols: 0", ""),
        YamlMatrix("d", "sizes: [ 65536, 65536, 65536, 65536 ]", ""),
        YamlMatrix("d", "sizes: [ " + big + ", " + big + ", " + big + " ]", "1"),
        YamlMatrix("d", "sizes: [ 3, -1, 2 ]", "1"),
        YamlMatrix("d", "sizes: [" + Times(33, "1,") + "1]", "1"),
        YamlMatrix("d", "rows: " + big + "\n   cols: " + big, "1"),
        YamlMatrix("d", "rows: 1\n   cols: 2", "1"),
        YamlMatrix("", "rows: 1\n   cols: 1", "1"),
        YamlMatrix("r", "rows: 1\n   cols: 1", "1"),
        YamlMatrix("512d", "rows: 1\n   cols: 1", "1"),
        YamlMatrix("d", "rows: 1\n   cols: 1", "x"),
    };
    for (const std::string& matrix : matrices) ExpectRefused(folder.Write("matrix.yml", matrix), "");
}

TEST(ForeignDocuments, MatricesOfOtherShapesComeBack) {
    const ScratchFolder folder;
    const int sizes[] = {2, 3, 2};
    cv::Mat cube(3, sizes, CV_32SC2);
    cv::randu(cube, -100, 100);
    ASSERT_TRUE(SaveHomography(folder.File("cube.yml"), cube));
    cv::Mat loaded;
    ASSERT_TRUE(LoadHomography(folder.File("cube.yml"), loaded)) << GetLastError();
    ASSERT_EQ(loaded.dims, 3);
    EXPECT_EQ(cv::norm(loaded, cube, cv::NORM_INF), 0.0);

    for (const char* shape : {"rows: 0\n   cols: 5", "rows: 5\n   cols: 0", "sizes: [ 3, 0, 2 ]"}) {
        EXPECT_TRUE(LoadHomography(folder.Write("none.yml", YamlMatrix("d", shape, "")), loaded)) << GetLastError();
        EXPECT_TRUE(loaded.empty());
    }
}

TEST(ForeignDocuments, AGigabyteIsTooMuch) {
    const ScratchFolder folder;
    const std::string path = folder.Write("long.yml", yamlHead);
    std::filesystem::resize_file(path, (std::uintmax_t{1} << 30) + 1);  // sparse: it takes no room
    ExpectRefused(path, "too long");
}

/// Bytes changed, dropped, doubled and moved.
std::string Mutated(RandomInput& random, std::string text) {
    const auto place = [&] { return static_cast<std::size_t>(random.Integer(0, static_cast<int>(text.size()) - 1)); };
    const std::string letters = "[]{}<>/!=\"'\\#:-,. \n\r\t|&%_a1A" + std::string(2, '\0');
    const int changes = random.Integer(1, 3);
    for (int i = 0; i < changes && text.size() > 2; ++i) {
        const std::size_t at = place();
        const auto length = static_cast<std::size_t>(random.Integer(1, 20));
        switch (random.Integer(0, 3)) {
            case 0:
                text[at] = letters[static_cast<std::size_t>(random.Integer(0, static_cast<int>(letters.size()) - 1))];
                break;
            case 1: text.erase(at, length); break;
            case 2: text.insert(place(), text.substr(at, length)); break;
            default: text.resize(at + 1); break;
        }
    }
    return text;
}

TEST(ForeignDocuments, ChangedDocumentsAreLoadedOrRefusedButDoNoHarm) {
    const ScratchFolder folder;
    RandomInput random(41);
    int loaded = 0;
    int refused = 0;
    for (const std::string name :
         {"map.yml", "map.xml", "map.json", "map.yml?base64", "map.xml?base64", "map.json?base64"}) {
        ASSERT_TRUE(SaveHomography(folder.File(name), someMatrix));
        const std::string whole = folder.Read(name.substr(0, name.find('?')));
        for (int i = 0; i < 400; ++i) {
            const std::string path = folder.Write("changed", Mutated(random, whole));
            cv::Mat homography;
            (LoadHomography(path, homography) ? loaded : refused) += 1;
        }
    }
    std::cout << loaded << " changed documents loaded, " << refused << " refused\n";
    EXPECT_GT(loaded, 100);
    EXPECT_GT(refused, 1000);
}

TEST(IsSafeElementFormat, AllowsWhatFitsIntoABase64Header) {
    for (const char* format : {"d", "3u", "511f", "2if", "12345678i", "uuuuuuuuuuuuuuuuuuuuuuuu"}) {
        EXPECT_TRUE(IsSafeElementFormat(format)) << format;
    }
    for (const char* format : {"", "123456789i", "uuuuuuuuuuuuuuuuuuuuuuuuu"}) {
        EXPECT_FALSE(IsSafeElementFormat(format)) << format;
    }
}

}  // namespace
}  // namespace Quorvane::CameraCalibration
