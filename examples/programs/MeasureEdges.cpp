// measure-edges: a straight or a round edge to a fraction of a pixel.

#include <iostream>
#include <map>

#include "examples/programs/Program.h"

int main(int argumentCount, char** arguments) {
    using namespace Quorvane;
    const std::map<std::string, EdgePolarity> polarities{
        {"any", EdgePolarity::All}, {"rising", EdgePolarity::Positive}, {"falling", EdgePolarity::Negative}};
    const std::map<std::string, SearchDirection> ways{
        {"right", SearchDirection::LeftToRight}, {"left", SearchDirection::RightToLeft},
        {"down", SearchDirection::TopToBottom},  {"up", SearchDirection::BottomToTop},
        {"outward", SearchDirection::Outward},   {"inward", SearchDirection::Inward}};
    std::string picturePath;
    Program::Point center;
    Program::Point size;
    double radius = 0.0;
    double sigma = 1.0;
    double threshold = 30.0;
    double step = 1.0;
    std::string polarity = "any";
    std::string way = "outward";
    CLI::App app("Measures an edge to a fraction of a pixel. Exit code 1 if there is none.", "measure-edges");
    app.add_option("picture", picturePath, "the picture")->required()->check(CLI::ExistingFile);
    app.add_option("-c,--center", center, "of the rectangle or circle to search")->required()->type_name("X,Y");
    auto* shape = app.add_option_group("Shape", "one of these");
    shape->require_option(1);
    shape->add_option("--size", size, "of the rectangle: a straight edge")->type_name("W,H");
    shape->add_option("--radius", radius, "of the circle: a round edge")->check(CLI::PositiveNumber);
    app.add_option("--scan", way, "across the rectangle: right, left, down, up; in the circle: outward, inward")
        ->capture_default_str()
        ->check(CLI::IsMember(ways));
    app.add_option("--polarity", polarity, "along the scan: rising (dark to light), falling, any")
        ->capture_default_str()
        ->check(CLI::IsMember(polarities));
    app.add_option("--sigma", sigma, "smoothing, pixels")->capture_default_str()->check(CLI::PositiveNumber);
    app.add_option("--threshold", threshold, "least amplitude")->capture_default_str()->check(CLI::NonNegativeNumber);
    app.add_option("--step", step, "between calipers: pixels, or degrees in a circle")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);

    return Program::Run(app, argumentCount, arguments, [&] {
        const cv::Mat picture = Program::ReadPicture(picturePath);
        if (radius > 0.0) {
            cv::Point2f found;
            double score = -1.0;  // stays so where nothing is found
            UtilityFunctions::MeasureCircle(picture, center, radius, found, radius, score, polarities.at(polarity),
                                            ways.at(way), sigma, threshold, step);
            if (score < 0.0) throw std::runtime_error("there is no edge in this circle");
            std::cout << "centre " << found << ", radius " << radius << ", score " << score << '\n';
        } else {
            // The same calipers as a curve tell how many of them met an edge.
            Curve edge;
            UtilityFunctions::MeasureCurve(picture, center, size.x, size.y, edge, polarities.at(polarity), ways.at(way),
                                           sigma, threshold, step, 0);
            if (edge.measuredPoints.size() < 2) throw std::runtime_error("there is no edge in this rectangle");
            Line line;
            UtilityFunctions::MeasureLine(picture, center, size.x, size.y, line, polarities.at(polarity), ways.at(way),
                                          sigma, threshold, step);
            std::cout << line.toString() << ", from " << edge.measuredPoints.size() << " edge points\n";
        }
        return Program::succeeded;
    });
}
