#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "calibration/CameraCalibration.h"
#include "calibration/CameraCalibrator.h"
#include "calibration/DocumentGuard.h"
#include "calibration/LastError.h"
#include "tests/support/Matchers.h"
#include "tests/support/RandomInput.h"
#include "tests/support/ScratchFolder.h"

// Documents that bring OpenCV's parsers down, and such as only look like them.
namespace Quorvane::CameraCalibration {

using testing::HasSubstr;
using testing::StartsWith;
using TestSupport::EqualsMat;
using TestSupport::RandomInput;
using TestSupport::ScratchFolder;

namespace {

const cv::Mat someMatrix = (cv::Mat_<double>(2, 2) << 1.5, -2.0, 1e-5, 4.0);
const std::string yamlHead = "%YAML:1.0\n---\n";
const std::string xmlHead = "<?xml version=\"1.0\"?>\n<opencv_storage>\n";
constexpr int tooDeep = 100000;
constexpr int allowed = 450;

std::string Times(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

/// Every load refuses the file with a text of the parser and goes on living.
void ExpectRefused(const std::string& path, const std::string& reason) {
    cv::Mat homography = someMatrix.clone();
    EXPECT_FALSE(LoadHomography(path, homography)) << path;
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::LoadHomography]OpenCV("));
    EXPECT_THAT(GetLastError(), HasSubstr(reason));
    EXPECT_THAT(homography, EqualsMat(someMatrix));
    double rms = 3.0;
    cv::Mat D = someMatrix.clone();
    EXPECT_FALSE(LoadCameraParameters(path, homography, D, rms));
    EXPECT_THAT(GetLastError(), StartsWith("[Quorvane::CameraCalibration::LoadCameraParameters]OpenCV("));
    CameraCalibrator calibrator;
    EXPECT_THROW(calibrator.LoadCalibration(path), cv::Exception);
}

void ExpectLoaded(const std::string& path) {
    cv::Mat homography;
    EXPECT_TRUE(LoadHomography(path, homography)) << path << ": " << GetLastError();
    EXPECT_THAT(homography, EqualsMat(someMatrix));
}

/// A homography as OpenCV stores it, without the document's head.
std::string StoredHomography(const ScratchFolder& folder, const std::string& ending) {
    const std::string name = "plain" + ending;
    if (!SaveHomography(folder.File(name), someMatrix)) return "";
    return folder.Read(name);
}

/// Adds nodes in front of the homography of a YAML document.
std::string YamlWith(const ScratchFolder& folder, const std::string& nodes) {
    return yamlHead + nodes + StoredHomography(folder, ".yml").substr(yamlHead.size());
}

std::string Compressed(const ScratchFolder& folder, const std::string& name, const std::string& text) {
    // OpenCV writes what it is given; a comment may hold all but its own end, so the text is stored uncompressed.
    std::string file("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10);
    for (std::size_t at = 0; at < text.size() || at == 0; at += 0xffff) {
        const std::string block = text.substr(at, 0xffff);
        const auto length = static_cast<unsigned>(block.size());
        file.push_back(at + block.size() >= text.size() ? '\1' : '\0');
        for (const unsigned half : {length, ~length}) {
            file.push_back(static_cast<char>(half & 0xffu));
            file.push_back(static_cast<char>((half >> 8) & 0xffu));
        }
        file += block;
    }
    return folder.Write(name, file);  // cut short before its check sum
}

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

TEST(ForeignDocuments, NestingThatOverflowsTheStackIsRefusedInEveryKind) {
    const ScratchFolder folder;
    std::string indented;
    for (int i = 0; i < 1500; ++i) indented += std::string(static_cast<std::size_t>(i), ' ') + "a:\n";
    const std::string documents[] = {
        "{ \"a\": " + Times(tooDeep, "["),
        "{ \"a\":\n" + Times(tooDeep, "{\"a\":\n"),
        "{ \"a\\\": " + Times(tooDeep, "[ \"x\", ") + "\n",
        xmlHead + Times(tooDeep, "<a>"),
        xmlHead + Times(tooDeep, "<a>\n<!-- </a></a> -->\n"),
        xmlHead + Times(tooDeep, "<a b='</a></a>'>\n"),
        xmlHead + Times(tooDeep, "<_ type_id=\"seq\">\n"),
        yamlHead + "a: " + Times(tooDeep, "["),
        yamlHead + "a: " + Times(tooDeep, "[\n # ]]]\n "),
        yamlHead + Times(tooDeep, " [\n"),
        yamlHead + "a: " + Times(tooDeep, "{ b]]]: \n  "),
        yamlHead + "a: " + Times(tooDeep, "[ ']]]', \n  "),
        yamlHead + "a: " + Times(tooDeep, "- ") + "1\n",
        yamlHead + "a: " + Times(tooDeep, "b: ") + "1\n",
        yamlHead + "a: ..: " + Times(tooDeep, "- ") + "1\n",
        yamlHead + "a: " + Times(tooDeep, "!!map b: ") + "1\n",
        yamlHead + "a: " + Times(tooDeep, "!!map !!map 1: ") + "1\n",
        yamlHead + "a: " + Times(tooDeep, "!!map .5: ") + "1\n",
        yamlHead + "!<tag:yaml.org,2002:seq> " + Times(tooDeep, "- ") + "1\n",
        yamlHead + "a: 1\n!b:" + Times(tooDeep, "-") + "1\n",
        yamlHead + "a: !<tag:yaml.org,2002:map>" + Times(tooDeep, "b:") + "1\n",
        yamlHead + "\"a\": " + Times(tooDeep, "-") + "1\n",
        yamlHead + Times(tooDeep, "-"),
        yamlHead + indented,
    };
    for (const std::string& document : documents) {
        EXPECT_THROW(RefuseWhatParsersDoNotSurvive(document), cv::Exception) << document.substr(0, 60);
        ExpectRefused(folder.Write("deep.txt", document), "the document is nested too deeply");
        ExpectRefused(Compressed(folder, "deep.gz", document), "the document is nested too deeply");
    }
}

TEST(ForeignDocuments, WhatIsNotNestedDeeplyIsLoaded) {
    const ScratchFolder folder;
    ExpectLoaded(folder.Write("deep.yml", YamlWith(folder, "a: " + Times(allowed, "[") + Times(allowed, "]") + "\n")));
    ExpectLoaded(folder.Write("dashes.yml", YamlWith(folder, "a: " + Times(allowed, "- ") + "1\n")));
    const std::string flat = Times(5000, "1, -2.5e-05, [ 3, { b:4 } ],\n   ") + "1";
    ExpectLoaded(folder.Write("flat.yml", YamlWith(folder, "a: [ " + flat + " ]\n")));
    ExpectLoaded(folder.Write("records.yml", YamlWith(folder, "a:\n" + Times(5000, "  - { b:\"x\", c:[ 1, 2 ] }\n"))));
    ExpectLoaded(folder.Write("blocks.yml", YamlWith(folder, "a:\n" + Times(5000, "  - b: 1\n    c:\n     - -1\n"))));
    std::string names;
    for (int i = 0; i < 3000; ++i) names += "n" + std::to_string(i) + ": \"[ - : \"\n";
    ExpectLoaded(folder.Write("names.yml", YamlWith(folder, names)));
    ExpectLoaded(folder.Write("zero.yml", YamlWith(folder, "# " + Times(1500, "[") + "\n")));

    const std::string xml = StoredHomography(folder, ".xml").substr(xmlHead.size());
    ExpectLoaded(folder.Write("deep.xml", xmlHead + Times(allowed, "<a>") + Times(allowed, "</a>\n") + xml));
    std::string elements;
    for (int i = 0; i < 5000; ++i) elements += "<_ type_id=\"map\"><!-- <a> --><b>\"x\"</b><c>1 2</c></_>\n";
    ExpectLoaded(folder.Write("flat.xml", xmlHead + "<list>" + elements + "</list>" + xml));

    const std::string json = StoredHomography(folder, ".json").substr(1);
    ExpectLoaded(
        folder.Write("deep.json", "{ \"a\": " + Times(allowed, "[") + "1" + Times(allowed, "]") + ",\n" + json));
    const std::string records =
        Times(5000, "{ \"b\": \"[{ \", \"p\":\n\"C:\\\\a\",\n\"c\": [ 1, 2 ] },\n/* [ */ ") + "1";
    ExpectLoaded(folder.Write("flat.json", "{ \"a\": [ " + records + " ],\n" + json));
}

TEST(ForeignDocuments, TextsMayHoldAnything) {
    const ScratchFolder folder;
    const std::string texts[] = {"x, : y", "{  : }",       "!!binary |",      "see !binary data",
                                 "# ",     "a \"b\", : c", "it's : ",         "C:\\[",
                                 "\\",     "\\\"[{",       Times(1500, "[{"), Times(700, "- a: ")};
    for (const char* name : {"texts.yml", "texts.xml", "texts.json"}) {
        for (const std::string& text : texts) {
            cv::FileStorage file(folder.File(name), cv::FileStorage::WRITE);
            file.write("before", text);
            file << "list"
                 << "[";
            for (int i = 0; i < 3; ++i) file.write("", text);
            file << "]"
                 << "number" << -5 << "flow"
                 << "[:";
            for (int i = 0; i < 3; ++i) {
                file << "{:"
                     << "x" << i;
                file.write("text", text);
                file << "}";
                file.write("", text);
            }
            file << "]";
            const std::string remark = std::string(name) == "texts.xml" ? "a remark" : text;
            file.writeComment(remark, true);
            file.writeComment(remark, false);
            file.write("Homo", someMatrix);
            file.release();
            ExpectLoaded(folder.File(name));
        }
    }
    const std::string json = StoredHomography(folder, ".json").substr(1);
    const std::string records = Times(5000, "{ \"b\": \"C:\\\\[\", \"c\": [ \"\\\"]\" ] },\n") + "1";
    ExpectLoaded(folder.Write("records.json", "{ \"a\": [ " + records + " ],\n" + json));
}

TEST(ForeignDocuments, ManySmallRecordsInOneFlowCollectionAreLoaded) {
    const ScratchFolder folder;
    for (const char* name : {"records.yml", "records.xml", "records.json"}) {
        cv::FileStorage file(folder.File(name), cv::FileStorage::WRITE);
        file << "records"
             << "[:";
        for (int i = 0; i < 3000; ++i) {
            file << "{:"
                 << "x" << i << "y" << -0.5 * i << "sides"
                 << "[:" << 1 << 2 << "]"
                 << "name"
                 << "a mark"
                 << "}";
        }
        file << "]";
        file.write("Homo", someMatrix);
        file.release();
        ExpectLoaded(folder.File(name));
    }
}

TEST(ForeignDocuments, WhatOnlyLooksLikeATextHidesNothing) {
    const ScratchFolder folder;
    const std::string deep = Times(tooDeep, "[");
    for (const std::string& nodes :
         {"a: { k:\n   x: \"b, c: " + deep + "\" }\n", "a: { \"k: 1, m: " + deep + "\" }\n",
          "a: \"\\x4\" \", b: " + deep + "\n", "a: \"b\" " + deep + "\n", "a: b # c: " + deep + "\n",
          "a: [ 1, ], " + Times(tooDeep, "[ \"]\", "), "a: { b:1, }: " + deep + "\n",
          "a: [\n  \"]]\", b: \"x, " + deep + "\n", "a: [ { b: c } ]\nd: " + deep + "\n",
          "a: [ -1-\"]\n" + Times(tooDeep, " [\n"), "- 'a'' ' " + deep + "\n"}) {
        EXPECT_THROW(RefuseWhatParsersDoNotSurvive(yamlHead + nodes), cv::Exception) << nodes.substr(0, 40);
    }
    EXPECT_THROW(RefuseWhatParsersDoNotSurvive(yamlHead + "a: { k:\n   x: \"b,  : 1 }\n"), cv::Exception);
    EXPECT_THROW(RefuseWhatParsersDoNotSurvive("{ \"a\\\": " + deep), cv::Exception);
    EXPECT_THROW(RefuseWhatParsersDoNotSurvive("{ \"a\": \"b\\\\\", \"c\": " + deep), cv::Exception);
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
