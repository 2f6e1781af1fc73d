#include "tests/support/ScratchFolder.h"

#include <iterator>
#include <random>
#include <stdexcept>

namespace Quorvane::TestSupport {

ScratchFolder::ScratchFolder() {
    // Tests run side by side, so the name must be one that no other process has taken.
    std::random_device random;
    do {
        path_ = std::filesystem::temp_directory_path() / ("quorvane-test-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string ScratchFolder::Write(const std::string& name, const std::string& content) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file << content;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + File(name));
    return File(name);
}

std::string ScratchFolder::Read(const std::string& name) const {
    std::ifstream file(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace Quorvane::TestSupport
