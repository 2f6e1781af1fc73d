#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace Quorvane::TestSupport {

/// A new, empty folder for the files of one test; removed with all that it holds at the end.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// The path of a file in it.
    std::string File(const std::string& name) const { return (path_ / name).string(); }
    /// Writes a file with this content and returns its path.
    std::string Write(const std::string& name, const std::string& content) const;
    std::string Read(const std::string& name) const;
    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

}  // namespace Quorvane::TestSupport
