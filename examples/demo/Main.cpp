// A host program: runs the library's jobs on pictures and writes an HTML report of what came out.
//
//     quorvane_demo FOLDER
//
// Exit code 0 when the report was written, 1 when something failed (said on standard error), 2 for a wrong call.

#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "examples/demo/Sections.h"

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: " << arguments[0] << " FOLDER\nwrites the report to FOLDER/index.html\n";
        return 2;
    }
    const std::vector<std::pair<std::string, std::function<void(Demo::Report&)>>> sections{
        {"laser dots", Demo::LaserDotsSection},
        {"mark points", Demo::MarkPointsSection},
        {"shape matcher", Demo::ShapeMatcherSection},
        {"filling", Demo::FillingSection},
        {"image operators", Demo::ImageOperatorsSection},
        {"change detection", Demo::ChangeDetectionSection},
        {"measured edges", Demo::MeasurementsSection},
        {"camera lens", Demo::CameraLensSection},
        {"calibration boards", Demo::CameraBoardsSection},
        {"camera and machine", Demo::CameraMapSection},
        {"two cameras joined", Demo::TwoCamerasSection},
        {"scale and cross", Demo::ScaleAndCrossSection},
    };
    try {
        Demo::Report report(arguments[1]);
        for (std::size_t i = 0; i < sections.size(); ++i) {
            std::cout << "[" << i + 1 << "/" << sections.size() << "] " << sections[i].first << std::endl;
            sections[i].second(report);
        }
        std::cout << "The report is in " << report.Write().string() << std::endl;
    } catch (const std::exception& failure) {
        std::cerr << "the demo failed: " << failure.what() << std::endl;
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
