// How exactly two cameras are mapped onto each other and joined: cuts of photographs whose mapping is known. Prints the
// tables of docs/accuracy.md.
//
//     build/release/benchmarks/calibration/dual_camera_accuracy

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>
#include <vector>

#include "calibration/CameraCalibration.h"
#include "tests/support/Pictures.h"
#include "tests/support/TwoCameras.h"

namespace {

using namespace Quorvane::CameraCalibration;
using namespace Quorvane::TestSupport;

const ImageDirFlags upright(-1, false, false);

/// A photograph, and how many of its pixels make one of the cameras' views larger than those of a small one.
struct SceneOfPhotograph {
    std::string name;
    cv::Mat picture;
    double scale = 1.0;
};

std::vector<SceneOfPhotograph> Scenes() {
    cv::Mat cup;
    cv::resize(LoadColourPicture("coffee.png"), cup, {}, 2.0, 2.0, cv::INTER_CUBIC);
    return {{"gravel", LoadColourPicture("gravel.png"), 1.0},
            {"photographer", LoadColourPicture("photographer.png"), 1.0},
            {"cup, enlarged twice", cup, 2.0}};
}

TwoCameras Cameras(double scale) {
    TwoCameras cameras;
    cameras.view = {static_cast<int>(300.0 * scale), static_cast<int>(380.0 * scale)};
    cameras.overlap = 130.0 * scale;
    return cameras;
}

struct Condition {
    std::string name;
    double turn = 0.0;
    double perspective = 0.0;
    double light1 = 1.0;
    double noise = 0.0;
    double overlapShare = 1.0;
};

/// Median and worst of some errors.
class MedianAndWorst {
public:
    void Add(double error) { errors_.push_back(error); }
    std::string Column() {
        if (errors_.empty()) return "none";
        std::sort(errors_.begin(), errors_.end());
        char text[64];
        std::snprintf(text, sizeof text, "%.2f / %.2f", errors_[errors_.size() / 2], errors_.back());
        return text;
    }

private:
    std::vector<double> errors_;
};

/// The least and the largest mean error that `CreateHomography` told.
struct Range {
    double least = 1e9;
    double most = 0.0;

    void Add(double value) {
        least = std::min(least, value);
        most = std::max(most, value);
    }
};

/// Mounted at four heights, with two draws of the generator each.
std::string MappingColumns(const SceneOfPhotograph& scene, const Condition& condition, Range& meanErrors) {
    MedianAndWorst inOverlap;
    MedianAndWorst inPicture;
    std::size_t pairs = 0;
    int runs = 0;
    int failures = 0;
    for (const double down : {0.0, 5.0, 12.0, -20.0}) {
        TwoCameras cameras = Cameras(scene.scale);
        cameras.shiftDown = down * scene.scale;
        cameras.turn = condition.turn;
        cameras.perspective = condition.perspective;
        cameras.light1 = condition.light1;
        cameras.noise = condition.noise;
        cameras.overlap *= condition.overlapShare;
        const TwoViews views = Photograph(cameras, scene.picture);
        for (int seed = 1; seed <= 2; ++seed) {
            cv::setRNGSeed(seed);
            std::vector<cv::Point2f> points1;
            std::vector<cv::Point2f> points2;
            cv::Mat homography;
            double meanError = 0.0;
            CalibrationMatchPointsForDualCam(views.picture1, upright, views.overlap1, views.picture2, upright,
                                             views.overlap2, 0.75, 4.0, 0.3, points1, points2);
            ++runs;
            pairs += points1.size();
            if (!CreateHomography(points1, points2, homography, meanError, 3.0, 2000, 0.995)) {
                ++failures;
                continue;
            }
            meanErrors.Add(meanError);
            const cv::Matx33d found(homography);
            inOverlap.Add(LargestDistance(found, views.homography, cv::Rect2d(views.overlap1)));
            inPicture.Add(LargestDistance(found, views.homography, {cv::Point2d(), cv::Size2d(cameras.view)}));
        }
    }
    const std::string failed = failures > 0 ? ", " + std::to_string(failures) + " failed" : "";
    return std::to_string(pairs / static_cast<std::size_t>(runs)) + failed + ": " + inOverlap.Column() + "; " +
           inPicture.Column();
}

void PrintMapping() {
    const std::vector<SceneOfPhotograph> scenes = Scenes();
    std::puts("### The mapping between the cameras\n");
    std::puts(
        "Pairs in the mean: largest error in the overlap, median / worst; in all of picture 1, median / worst.\n");
    Range meanErrors;
    std::printf("| cameras |");
    for (const SceneOfPhotograph& scene : scenes) std::printf(" %s |", scene.name.c_str());
    std::puts("\n|---|---|---|---|");
    for (const Condition& condition :
         {Condition{"shifted only"}, Condition{"camera 1 turned by 0.5 degrees", 0.5},
          Condition{"turned by 1 degree", 1.0}, Condition{"turned by 2 degrees", 2.0},
          Condition{"turned by 5 degrees", 5.0}, Condition{"turned by 15 degrees", 15.0},
          Condition{"tilted, scale changes by 2 %", 0.0, 0.02}, Condition{"tilted, scale changes by 5 %", 0.0, 0.05},
          Condition{"shifted, picture 1 at 70 % light", 0.0, 0.0, 0.7},
          Condition{"shifted, noise of 5 levels", 0.0, 0.0, 1.0, 5.0},
          Condition{"shifted, noise of 10 levels", 0.0, 0.0, 1.0, 10.0},
          Condition{"shifted, half the overlap", 0.0, 0.0, 1.0, 0.0, 0.5}}) {
        std::printf("| %s |", condition.name.c_str());
        for (const SceneOfPhotograph& scene : scenes)
            std::printf(" %s |", MappingColumns(scene, condition, meanErrors).c_str());
        std::puts("");
        std::fflush(stdout);
    }
    std::printf("\nMean errors told: %.3f to %.3f pixels\n", meanErrors.least, meanErrors.most);
}

double MeanDifference(const cv::Mat& a, const cv::Mat& b) {
    cv::Mat difference;
    cv::absdiff(a, b, difference);
    return cv::mean(difference.reshape(1))[0];
}

/// With the true mapping. Differences of the joined picture and the scene are means over ten columns beside the blended
/// strip and over the strip, in gray levels.
void PrintJoining() {
    std::puts("\n### The joined picture\n");
    std::puts(
        "| picture 1 reaches out by, left and up | strip off by, in x | left of the strip | in it | right of it |");
    std::puts("|---|---|---|---|---|");
    const SceneOfPhotograph gravel = Scenes().front();
    for (const double fraction : {0.0, 0.2, 0.4, 0.6, 0.8}) {
        for (const double up : {0.0, 0.5}) {
            TwoCameras cameras = Cameras(gravel.scale);
            cameras.overlap -= fraction;
            cameras.shiftDown = -up;
            const TwoViews views = Photograph(cameras, gravel.picture);
            cv::Mat joined;
            double seamX = 0.0;
            if (!DoBlendingImageForDualCam(views.picture1, upright, views.picture2, upright, 1.0, 1.0,
                                           cv::Mat(views.homography), seamX, joined)) {
                continue;
            }
            const double reach = -views.homography(0, 2);
            const int left = static_cast<int>(reach);
            const int seam = static_cast<int>(std::round(seamX));
            const int stripOff = seam - left - static_cast<int>(0.5 * (cameras.view.width - reach));
            const cv::Point toScene = views.inScene2.tl() - cv::Point(left, 0);
            const auto off = [&](int begin, int width) {
                const cv::Rect columns(begin, 10, width, joined.rows - 20);
                return MeanDifference(joined(columns), gravel.picture(columns + toScene));
            };
            std::printf("| %.1f, %.1f px | %d px | %.1f | %.1f | %.1f |\n", reach, up, stripOff, off(seam - 25, 10),
                        off(seam - 8, 16), off(seam + 15, 10));
        }
    }
    const cv::Mat& picture = gravel.picture;
    const cv::Size inner(picture.cols - 1, picture.rows - 1);
    std::printf("\nThe gravel against itself, shifted by one pixel in x: %.1f levels in the mean\n",
                MeanDifference(picture(cv::Rect({0, 0}, inner)), picture(cv::Rect({1, 0}, inner))));
}

}  // namespace

int main() {
    PrintMapping();
    PrintJoining();
    return 0;
}
