// print-board: a ChArUco board to print at true size.

#include <iostream>

#include "examples/programs/Program.h"

int main(int argumentCount, char** arguments) {
    std::string boardPath = "board.tif";
    int columns = 7;
    int rows = 5;
    float square = 20.0F;
    float marker = 15.0F;
    int dotsPerInch = 300;
    CLI::App app("Draws a ChArUco board to print.", "print-board");
    app.add_option("output", boardPath, "the picture; a .tif carries the resolution and prints at true size")
        ->capture_default_str();
    app.add_option("--columns", columns, "squares per row")->capture_default_str()->check(CLI::Range(2, 100));
    app.add_option("--rows", rows, "squares per column")->capture_default_str()->check(CLI::Range(2, 100));
    app.add_option("--square", square, "side of a square, mm")->capture_default_str()->check(CLI::PositiveNumber);
    app.add_option("--marker", marker, "side of a marker, mm, less than the square's")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--dpi", dotsPerInch, "dots per inch")->capture_default_str()->check(CLI::PositiveNumber);

    return Program::Run(app, argumentCount, arguments, [&] {
        if (columns * rows / 2 > 250) throw std::runtime_error("the dictionary has 250 markers: take fewer squares");
        if (marker >= square) throw std::runtime_error("the marker has to be smaller than the square");
        cv::aruco::Dictionary dictionary = cv::aruco::getPredefinedDictionary(cv::aruco::DICT_7X7_250);
        cv::aruco::CharucoBoard board({columns, rows}, square, marker, dictionary);
        const cv::Mat picture = Quorvane::CameraCalibration::GenerateChArUcoBoard(
            boardPath, columns, rows, square, marker, dictionary, board, dotsPerInch);
        std::cout << boardPath << ": " << picture.cols << " x " << picture.rows << " pixels, "
                  << static_cast<float>(columns) * square << " x " << static_cast<float>(rows) * square << " mm\n";
        return Program::succeeded;
    });
}
