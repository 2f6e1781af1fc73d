// find-marks: round marks of a known radius in a picture.

#include <iostream>
#include <map>
#include <vector>

#include "examples/programs/Program.h"

int main(int argumentCount, char** arguments) {
    const std::map<std::string, std::string> orders{{"nearest", "DistToImgCenter_Ascendingorder"},
                                                    {"farthest", "DistToImgCenter_Descendingorder"},
                                                    {"best", "Similarity_Descendingorder"},
                                                    {"worst", "Similarity_Ascendingorder"}};
    std::string picturePath;
    std::string drawnPath;
    int radius = 50;
    double similarity = 0.85;
    std::string order = "nearest";
    CLI::App app("Finds round marks of a known radius. Exit code 1 if there is none.", "find-marks");
    app.add_option("picture", picturePath, "the picture")->required()->check(CLI::ExistingFile);
    app.add_option("-r,--radius", radius, "radius of a mark in pixels")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("-s,--similarity", similarity,
                   "least similarity; a radius may be off by 1 minus this, times the radius")
        ->capture_default_str()
        ->check(CLI::Range(0.0, 1.0));
    app.add_option("--order", order, "which mark comes first; nearest to the middle")
        ->capture_default_str()
        ->check(CLI::IsMember(orders));
    app.add_option("-o,--output", drawnPath, "the picture with the marks drawn in");

    return Program::Run(app, argumentCount, arguments, [&] {
        const Program::Algorithm marks = Program::MakeAlgorithm("FindMarkPoint");
        marks->SetParameter("Radius", radius);
        marks->SetParameter("SimilarityMin", similarity);
        marks->SetParameter("SortMode", orders.at(order));
        const cv::Mat drawn = Program::Execute(*marks, Program::ReadPicture(picturePath));
        if (!drawnPath.empty()) Program::WritePicture(drawnPath, drawn);

        std::vector<std::vector<std::string>> columns;
        for (const char* field : {"_X", "_Y", "_Radius", "_Similarity"}) {
            columns.push_back(marks->GetResultValues(std::string("MarkPoint") + field));
        }
        std::cout << "x y radius similarity\n";
        for (std::size_t i = 0; i < columns.front().size(); ++i) {
            for (const std::vector<std::string>& column : columns) std::cout << column.at(i) << ' ';
            std::cout << '\n';
        }
        std::cout << marks->GetResultValue("FindCount") << " marks\n";
        return columns.front().empty() ? Program::failed : Program::succeeded;
    });
}
