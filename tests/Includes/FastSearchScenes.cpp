#include "tests/Includes/FastSearchScenes.h"

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "Includes/FastSearch.h"
#include "tests/Includes/MatcherMatchers.h"

namespace Quorvane::TestSupport {

using line2Dup::ColorGradient;
using line2Dup::Detector;
using line2Dup::FastSearch;
using line2Dup::MatchHit;
using line2Dup::ShapeTemplate;
using line2Dup::ShapeTemplateLevels;

std::vector<MatchHit> SearchFast(const Detector& detector, const std::vector<Reference::TemplateClass>& classes,
                                 const cv::Mat& scene, float threshold) {
    std::vector<std::string> classIds;
    for (const Reference::TemplateClass& templates : classes) {
        EXPECT_TRUE(FastSearch::takesImage(scene, cv::Mat(), {1, 2}, threshold));
        EXPECT_TRUE(FastSearch::takesTemplates(templates.second));
        classIds.push_back(templates.first);
    }
    return detector.match(scene, threshold, classIds, cv::Mat());
}

testing::AssertionResult FindsWhatThePlainSearchFinds(const Detector& detector,
                                                      const std::vector<Reference::TemplateClass>& classes,
                                                      const cv::Mat& scene, float threshold, std::size_t& hits) {
    const std::vector<MatchHit> found = SearchFast(detector, classes, scene, threshold);
    hits += found.size();
    return SameHits(found, Reference::MatchShapes(plainSettings, classes, scene, threshold, cv::Mat()));
}

cv::Size RandomSize(RandomInput& random, int least, int most) {
    return {16 * random.Integer(least, most), 16 * random.Integer(least, most)};
}

cv::Size RandomSearchableSize(RandomInput& random, int least, int most) {
    const bool odd = random.Integer(0, 2) == 0;
    const auto isOdd = [](cv::Size size) { return size.width % 2 != 0 || size.height % 2 != 0; };
    for (;;) {
        const cv::Size size(random.Integer(least, most), random.Integer(least, most));
        if (isOdd(size) == odd && FastSearch::takesImage(cv::Mat(size, CV_8UC3), cv::Mat(), {1, 2}, 1.0f)) return size;
    }
}

std::vector<Pose> RandomPoses(RandomInput& random, int count, cv::Size size) {
    std::vector<Pose> poses;
    for (int i = 0; i < count; ++i) {
        poses.push_back({{random.Real(0.0, size.width), random.Real(0.0, size.height)}, random.Real(0.0, 360.0)});
    }
    return poses;
}

cv::Mat Noise(RandomInput& random, cv::Size size) {
    cv::Mat image = random.Image(size, 3);
    cv::GaussianBlur(image, image, {9, 9}, 1.5);
    cv::normalize(image, image, 0.0, 255.0, cv::NORM_MINMAX);
    return image;
}

cv::Mat Stripes(RandomInput& random, cv::Size size) {
    const double angle = random.Real(0.0, CV_PI);
    const double period = random.Real(10.0, 24.0);
    cv::Mat image(size, CV_8UC3);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double phase = (x * std::cos(angle) + y * std::sin(angle)) * 2.0 * CV_PI / period;
            image.at<cv::Vec3b>(y, x) = cv::Vec3b::all(cv::saturate_cast<uchar>(127.5 + 400.0 * std::sin(phase)));
        }
    }
    return image;
}

testing::AssertionResult FindsHandmadeAsThePlainSearchDoes(const std::vector<ShapeTemplateLevels>& templates,
                                                           const cv::Mat& scene, float threshold, std::size_t& hits) {
    EXPECT_TRUE(FastSearch::takesImage(scene, cv::Mat(), {1, 2}, threshold));
    EXPECT_TRUE(FastSearch::takesTemplates(templates));
    FastSearch search(ColorGradient(weakGradient, 64, strongGradient), scene);
    std::vector<MatchHit> found;
    search.matchClass(threshold, found, "handmade", templates);
    std::stable_sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    hits += found.size();
    return SameHits(found,
                    Reference::MatchShapes(plainSettings, {{"handmade", templates}}, scene, threshold, cv::Mat()));
}

ShapeTemplate ScatteredLevel(RandomInput& random, int pyramidLevel, int count, cv::Size extent, int least, int most) {
    ShapeTemplate level{extent.width, extent.height, 0, 0, pyramidLevel, {}};
    for (int i = 0; i < count; ++i) {
        level.features.push_back(
            {random.Integer(least, most), random.Integer(least, most), random.Integer(0, 7), 0.0f});
    }
    return level;
}

}  // namespace Quorvane::TestSupport
