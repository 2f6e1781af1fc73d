// fill-copies: a job drawn on one object, repeated on every copy of it.

#include <cmath>
#include <iostream>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "examples/programs/Program.h"

// Below this nearly every place of every turn is kept, which takes long and much memory.
constexpr double leastSimilarity = 0.2;

int main(int argumentCount, char** arguments) {
    std::string picturePath;
    std::string drawnPath = "copies.png";
    Program::Point mark;
    std::vector<Program::Point> job;
    double similarity = 0.8;
    CLI::App app("Finds every copy of a marked object and places a job on each. Exit code 1 if none is found.",
                 "fill-copies");
    app.add_option("picture", picturePath, "the picture")->required()->check(CLI::ExistingFile);
    app.add_option("-m,--mark", mark, "a point on plain colour of one object")->required()->type_name("X,Y");
    app.add_option("-j,--job", job, "the corners of the job on that object")->required()->type_name("X,Y ...");
    app.add_option("-s,--similarity", similarity, "least similarity")
        ->capture_default_str()
        ->check(CLI::Range(leastSimilarity, 1.0));
    app.add_option("-o,--output", drawnPath, "the picture with the job on every copy")->capture_default_str();

    return Program::Run(app, argumentCount, arguments, [&] {
        std::vector<double> x;
        std::vector<double> y;
        for (const Program::Point& corner : job) x.push_back(corner.x), y.push_back(corner.y);
        const Program::Algorithm filling = Program::MakeAlgorithm("IntelligentFilling");
        filling->SetParameter("SimilarityMin", similarity);
        filling->SetParameter("TargetShapeCenter_X", mark.x);
        filling->SetParameter("TargetShapeCenter_Y", mark.y);
        filling->SetParameter("TargetShapePoints_X", x);
        filling->SetParameter("TargetShapePoints_Y", y);
        cv::Mat drawn = Program::ReadPicture(picturePath);
        Program::ExecuteQuietly(*filling, drawn);

        const int copies = std::stoi(filling->GetResultValue("OutputShapeCount"));
        for (int n = 1; n <= copies; ++n) {
            const auto number = [&](const char* field) {
                return std::stod(filling->GetResultValue("OutputShape_" + std::to_string(n) + field));
            };
            const cv::Point2d centre(number("_OffsetRotateCenterX"), number("_OffsetRotateCentetY"));
            const cv::Point2d offset(number("_OffsetX"), number("_OffsetY"));
            const double angle = number("_OffsetAngle") * CV_PI / 180.0;
            const cv::Matx22d turn(std::cos(angle), std::sin(angle), -std::sin(angle), std::cos(angle));
            std::vector<cv::Point> placed;
            for (const cv::Point2f corner : job) {
                placed.emplace_back(centre + turn * (cv::Point2d(corner) - centre) + offset);
            }
            cv::polylines(drawn, placed, true, {0, 255, 0}, 2, cv::LINE_AA);
            std::cout << n << ": shift " << offset << " pixels, turn " << number("_OffsetAngle") << " degrees\n";
        }
        Program::WritePicture(drawnPath, drawn);
        std::cout << copies << " copies\n";
        return copies > 0 ? Program::succeeded : Program::failed;
    });
}
