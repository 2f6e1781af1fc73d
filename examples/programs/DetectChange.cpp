// detect-change: whether a picture differs from an earlier one.

#include <iostream>

#include "examples/programs/Program.h"

int main(int argumentCount, char** arguments) {
    using namespace Quorvane::UtilityFunctions;
    std::string earlierPath;
    std::string laterPath;
    int fields = 5;
    bool exact = false;
    CLI::App app("Tells whether a picture differs from an earlier one: 'changed' or 'unchanged'.", "detect-change");
    app.add_option("earlier", earlierPath, "the earlier picture")->required()->check(CLI::ExistingFile);
    app.add_option("later", laterPath, "the later picture")->required()->check(CLI::ExistingFile);
    app.add_option("--threshold", fields, "of the 64 fields of the pictures, how many may differ")
        ->capture_default_str()
        ->check(CLI::Range(0, 64));
    app.add_flag("--exact", exact, "any gray level of any pixel counts; the pictures must have one size");

    return Program::Run(app, argumentCount, arguments, [&] {
        const cv::Mat earlier = Program::ReadPicture(earlierPath);
        const cv::Mat later = Program::ReadPicture(laterPath);
        if (exact && earlier.size() != later.size()) throw std::runtime_error("the pictures have different sizes");
        const bool changed =
            exact ? IsMatChanged_GrayDiff(earlier, later) : IsMatChanged_HammingDistance(earlier, later, fields);
        std::cout << (changed ? "changed" : "unchanged") << '\n';
        return Program::succeeded;
    });
}
