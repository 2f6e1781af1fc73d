#include "tests/guide/Pages.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Quorvane::TestSupport {

namespace fs = std::filesystem;

fs::path SourceFolder() { return QUORVANE_SOURCE_FOLDER; }

std::string TextOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + file.string());
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

std::string GuidePage(const std::string& name) { return TextOf(SourceFolder() / "docs" / "guide" / (name + ".md")); }

std::vector<fs::path> AllPages() {
    std::vector<fs::path> pages{SourceFolder() / "README.md", SourceFolder() / "examples" / "pictures" / "README.md"};
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(SourceFolder() / "docs")) {
        if (entry.path().extension() == ".md") pages.push_back(entry.path());
    }
    std::sort(pages.begin(), pages.end());
    return pages;
}

std::vector<fs::path> FilesOf(const fs::path& folder, const std::string& ending) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ending) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace Quorvane::TestSupport
