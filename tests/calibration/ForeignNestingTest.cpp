#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "calibration/DocumentGuard.h"
#include "tests/calibration/ForeignDocuments.h"
#include "tests/support/ScratchFolder.h"

// Documents nested too deeply, and such as only look like it.
namespace Quorvane::CameraCalibration {

using TestSupport::ScratchFolder;

namespace {

TEST(ForeignNesting, NestingThatOverflowsTheStackIsRefusedInEveryKind) {
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

TEST(ForeignNesting, WhatIsNotNestedDeeplyIsLoaded) {
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

TEST(ForeignNesting, TextsMayHoldAnything) {
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

TEST(ForeignNesting, ManySmallRecordsInOneFlowCollectionAreLoaded) {
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

TEST(ForeignNesting, WhatOnlyLooksLikeATextHidesNothing) {
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

}  // namespace
}  // namespace Quorvane::CameraCalibration
