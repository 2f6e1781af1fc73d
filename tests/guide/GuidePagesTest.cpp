// The pages of the user's guide: what they show is what compiles, and where they point to something, it is there.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <regex>
#include <string>
#include <vector>

#include "tests/guide/Pages.h"

namespace Quorvane::TestSupport {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ContainsRegex;
using testing::HasSubstr;

namespace {

/// The first groups of all matches of a pattern.
std::vector<std::string> AllMatches(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    std::vector<std::string> matches;
    for (std::sregex_iterator i(text.begin(), text.end(), expression), end; i != end; ++i) matches.push_back((*i)[1]);
    return matches;
}

/// The blocks of C++ of a page.
std::vector<std::string> CodeBlocks(const std::string& page) {
    const std::string opening = "```cpp\n";
    std::vector<std::string> blocks;
    for (std::size_t at = page.find(opening); at != std::string::npos; at = page.find(opening, at)) {
        at += opening.size();
        const std::size_t end = page.find("```\n", at);
        blocks.push_back(page.substr(at, end - at));
    }
    return blocks;
}

std::vector<std::string> SnippetTexts() {
    std::vector<std::string> texts;
    for (const fs::path& file : FilesOf(SourceFolder() / "examples" / "snippets", ".cpp")) {
        texts.push_back(TextOf(file));
    }
    return texts;
}

/// How GitHub and others make the anchor of a heading.
std::string AnchorOf(const std::string& heading) {
    std::string anchor;
    for (const char letter : heading) {
        if (letter == ' ' || letter == '-') anchor += '-';
        if (std::isalnum(static_cast<unsigned char>(letter)) || letter == '_') {
            anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        }
    }
    return anchor;
}

std::vector<std::string> AnchorsOf(const fs::path& page) {
    std::vector<std::string> anchors;
    for (const std::string& heading : AllMatches("\n" + TextOf(page), "\n#+ ([^\n]+)")) {
        anchors.push_back(AnchorOf(heading));
    }
    return anchors;
}

}  // namespace

TEST(GuidePages, EverySnippetStandsOnAPageLetterByLetter) {
    std::vector<std::string> blocks;
    for (const fs::path& page : AllPages()) {
        for (std::string& block : CodeBlocks(TextOf(page))) blocks.push_back(std::move(block));
    }
    for (const std::string& snippet : SnippetTexts()) {
        EXPECT_THAT(blocks, Contains(snippet)) << "scripts/update-guide.sh writes the snippets into the pages";
    }
}

TEST(GuidePages, EveryProgramOnAPageIsASnippet) {
    const std::vector<std::string> snippets = SnippetTexts();
    for (const fs::path& page : AllPages()) {
        for (const std::string& block : CodeBlocks(TextOf(page))) {
            if (block.find("int main(") == std::string::npos) continue;
            EXPECT_THAT(snippets, Contains(block)) << page << " shows a program that nothing compiles";
        }
    }
}

TEST(GuidePages, EveryLinkLeadsSomewhere) {
    for (const fs::path& page : AllPages()) {
        for (const std::string& link : AllMatches(TextOf(page), R"(\]\(([^)\s]+)\))")) {
            if (link.rfind("http", 0) == 0) continue;
            const std::string file = link.substr(0, link.find('#'));
            const fs::path target = file.empty() ? page : page.parent_path() / file;
            EXPECT_TRUE(fs::exists(target)) << page << " links to " << link;
            if (link.find('#') == std::string::npos || !fs::exists(target)) continue;
            EXPECT_THAT(AnchorsOf(target), Contains(link.substr(link.find('#') + 1))) << page << " links to " << link;
        }
    }
}

TEST(GuidePages, TheIndexLeadsToEveryPage) {
    const std::string index = GuidePage("index");
    for (const fs::path& page : FilesOf(SourceFolder() / "docs" / "guide", ".md")) {
        if (page.filename() == "index.md") continue;
        EXPECT_THAT(index, HasSubstr("(" + page.filename().string() + ")"));
    }
}

TEST(GuidePages, TheIndexNamesEveryProgram) {
    const std::string index = GuidePage("index");
    const std::string list = TextOf(SourceFolder() / "examples" / "programs" / "CMakeLists.txt");
    for (const std::string& name : AllMatches(list, R"(quorvane_program\(([a-z-]+) \w+\.cpp)")) {
        EXPECT_THAT(index, HasSubstr("`" + name + "`"));
    }
}

TEST(GuidePages, TheGuideTellsOfEveryExportedName) {
    // Symbols that hosts do not call by name: private members, and what the language itself calls.
    const std::vector<std::string> notForHosts{"BuildPolynomialTerms", "CheckType", "calculateSlopeIntercept",
                                               "normalizeGeneralForm"};
    std::string guide;
    for (const fs::path& page : FilesOf(SourceFolder() / "docs" / "guide", ".md")) guide += TextOf(page);
    const std::string symbols = TextOf(SourceFolder() / "tests" / "install" / "exported-symbols.txt");
    const std::vector<std::string> names = AllMatches(symbols, "::~?([A-Za-z]\\w*)\\(");
    ASSERT_THAT(names, Contains("MeasureLine"));
    for (const std::string& name : names) {
        if (std::count(notForHosts.begin(), notForHosts.end(), name) > 0) continue;
        EXPECT_THAT(guide, ContainsRegex("\\b" + name + "\\b")) << "no page of the guide tells of " << name;
    }
}

TEST(GuidePages, EveryPictureIsShownAndTheyAreSmallTogether) {
    constexpr std::uintmax_t byteLimit = 1500000;
    std::string pages;
    for (const fs::path& page : AllPages()) pages += TextOf(page);
    std::uintmax_t bytes = 0;
    for (const fs::directory_entry& picture : fs::directory_iterator(SourceFolder() / "docs" / "pictures")) {
        bytes += picture.file_size();
        EXPECT_THAT(pages, HasSubstr("pictures/" + picture.path().filename().string() + ")"));
    }
    EXPECT_LT(bytes, byteLimit);
}

}  // namespace Quorvane::TestSupport
