#include "examples/programs/Program.h"

#include <exception>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <sstream>

namespace Program {

int Run(CLI::App& app, int argumentCount, char** arguments, const std::function<int()>& job) {
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? succeeded : wrongCall;
    }
    try {
        return job();
    } catch (const std::exception& failure) {
        std::cerr << app.get_name() << ": " << failure.what() << '\n';
        return failed;
    }
}

std::istream& operator>>(std::istream& stream, Point& point) {
    char comma = 0;
    if (stream >> point.x >> comma >> point.y && comma != ',') stream.setstate(std::ios::failbit);
    return stream;
}

cv::Mat ReadPicture(const std::string& path, int flags) {
    cv::Mat picture = cv::imread(path, flags);
    if (picture.empty()) throw std::runtime_error(path + " is not a picture that can be read");
    return picture;
}

cv::Mat ReadPicture(const std::string& path) { return ReadPicture(path, cv::IMREAD_COLOR); }

void WritePicture(const std::string& path, const cv::Mat& picture) {
    bool written = false;
    try {
        written = cv::imwrite(path, picture);
    } catch (const cv::Exception&) {  // an ending that is no picture format
    }
    if (!written) throw std::runtime_error(path + " cannot be written (is its ending that of a picture?)");
    std::cout << "wrote " << path << '\n';
}

void Require(bool success) {
    if (!success) throw std::runtime_error(Quorvane::CameraCalibration::GetLastError());
}

Algorithm MakeAlgorithm(const std::string& name) {
    Quorvane::AlgorithmFactory factory;
    const auto release = [](Quorvane::Algorithm* made) { Quorvane::AlgorithmFactory().ReleaseAlgorithm(made); };
    return Algorithm(factory.CreateAlgorithm(name), release);
}

cv::Mat Execute(Quorvane::Algorithm& algorithm, const cv::Mat& picture) {
    cv::Mat destination;
    if (algorithm.Execute(picture, destination) != 0) {
        std::string message;
        algorithm.GetErrorMsg(message);
        throw std::runtime_error(message);
    }
    return destination;
}

cv::Mat ExecuteQuietly(Quorvane::Algorithm& algorithm, const cv::Mat& picture) {
    struct Diversion {
        std::ostringstream notices;
        std::streambuf* console = std::cout.rdbuf(notices.rdbuf());
        ~Diversion() { std::cout.rdbuf(console); }
    } diversion;
    return Execute(algorithm, picture);
}

}  // namespace Program
