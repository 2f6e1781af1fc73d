#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Quorvane::TestSupport {

/// The root of the repository.
std::filesystem::path SourceFolder();

/// The text of a file. Throws `std::runtime_error` if it cannot be read.
std::string TextOf(const std::filesystem::path& file);

/// A page of the user's guide by its name without ending, for example "laser-dots".
std::string GuidePage(const std::string& name);

/// All pages for users: those of docs/ with its folders, and the README files. Sorted.
std::vector<std::filesystem::path> AllPages();

/// The files of a folder with this ending, sorted.
std::vector<std::filesystem::path> FilesOf(const std::filesystem::path& folder, const std::string& ending);

}  // namespace Quorvane::TestSupport
