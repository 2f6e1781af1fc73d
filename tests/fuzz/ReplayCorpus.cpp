// Runs a fuzzer over files instead of letting it loose: the corpora of the repository, as an ordinary test.
//
//   ReplayCorpus FOLDER ...

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int count, char** arguments) {
    LLVMFuzzerInitialize(&count, &arguments);
    std::set<std::filesystem::path> files;
    for (int i = 1; i < count; ++i) {
        if (std::filesystem::is_regular_file(arguments[i])) files.insert(arguments[i]);
        if (!std::filesystem::is_directory(arguments[i])) continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[i])) {
            if (entry.is_regular_file()) files.insert(entry.path());
        }
    }
    LLVMFuzzerTestOneInput(nullptr, 0);
    for (const std::filesystem::path& file : files) {
        std::ifstream stream(file, std::ios::binary);
        const std::vector<char> bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs replayed\n", files.size());
    return files.empty() ? 1 : 0;
}
