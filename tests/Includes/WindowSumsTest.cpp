#include "Includes/WindowSums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/core.hpp>

#include "Includes/Similarity.h"
#include "tests/Includes/FastSearchScenes.h"
#include "tests/reference/PlainShapeMatcher.h"

namespace line2Dup {

using Quorvane::TestSupport::Noise;
using Quorvane::TestSupport::RandomInput;
using Quorvane::TestSupport::ScatteredLevel;
using Quorvane::TestSupport::weakGradient;
namespace Reference = Quorvane::Reference;

namespace {

/// The sums of a template for all crop origins in a rectangle, from the definition.
cv::Mat PlainSums(const cv::Mat& image, const ShapeTemplate& templ, const cv::Rect& origins) {
    const std::vector<cv::Mat> maps =
        Reference::ComputeResponseMaps(Reference::ComputeGradients(image, weakGradient).quantised);
    cv::Mat sums = cv::Mat::zeros(origins.size(), CV_32S);
    for (const GradientFeature& feature : templ.features) {
        for (int y = 0; y < origins.height; ++y) {
            for (int x = 0; x < origins.width; ++x) {
                sums.at<int>(y, x) += maps[static_cast<std::size_t>(feature.label)].at<uchar>(
                    origins.y + y + feature.y, origins.x + x + feature.x);
            }
        }
    }
    return sums;
}

WindowSums::Best PlainBest(const cv::Mat& sums, cv::Point first, int leastSum) {
    WindowSums::Best best{{}, 0};
    for (int y = 0; y < localWindow; ++y) {
        for (int x = 0; x < localWindow; ++x) {
            const int sum = sums.at<int>(first.y + y, first.x + x);
            if (sum >= leastSum && sum > best.sum) best = {{x, y}, sum};
        }
    }
    return best;
}

/// An image with its fine level, a template in it, and the crop origins that keep it in the image.
struct Search {
    Search(RandomInput& random, int features)
        : image(Noise(random, {random.Integer(60, 170), random.Integer(60, 130)})),
          level(image, weakGradient),
          templ(ScatteredLevel(random, 0, features, {12, 12}, 0, 12)),
          origins(0, 0, random.Integer(localWindow, WindowSums::greatestSide),
                  random.Integer(localWindow, WindowSums::greatestSide)) {
        origins.width = std::min(origins.width, image.cols - 13);
        origins.height = std::min(origins.height, image.rows - 13);
        origins.x = random.Integer(0, image.cols - 13 - origins.width);
        origins.y = random.Integer(0, image.rows - 13 - origins.height);
        level.need(templ, cv::Rect(0, 0, 13, 13), origins);
        level.prepareNeeded();
    }

    cv::Mat image;
    FineLevel level;
    ShapeTemplate templ;
    cv::Rect origins;
};

TEST(WindowSums, FindsTheBestPlaceOfEveryWindowAndTheSumsAroundIt) {
    RandomInput random(440);
    int found = 0;
    for (int i = 0; i < 150; ++i) {
        const Search search(random, random.Integer(1, 90));
        const cv::Mat plain = PlainSums(search.image, search.templ, search.origins);
        double greatest = 0.0;
        cv::minMaxLoc(plain, nullptr, &greatest);
        const int leastSum = std::max(1, static_cast<int>(greatest * random.Real(0.0, 1.1)));
        WindowSums sums;
        sums.find(search.level, search.templ, search.origins, leastSum);
        for (int k = 0; k < 10; ++k) {
            const cv::Point first(random.Integer(0, search.origins.width - localWindow),
                                  random.Integer(0, search.origins.height - localWindow));
            const cv::Rect window(search.origins.tl() + first, cv::Size(localWindow, localWindow));
            const WindowSums::Best expected = PlainBest(plain, first, leastSum);
            const WindowSums::Best best = sums.bestIn(window);
            ASSERT_EQ(best.sum, expected.sum) << i;
            if (best.sum == 0) continue;
            ASSERT_EQ(best.place, expected.place) << i;
            const NineSums nine = sums.around(window.tl() + best.place);
            for (int n = 0; n < 9; ++n) {
                const cv::Point place = first + best.place + cv::Point(n % 3 - 1, n / 3 - 1);
                if (!cv::Rect(cv::Point(), search.origins.size()).contains(place)) continue;
                ASSERT_EQ(nine[static_cast<std::size_t>(n / 3)][static_cast<std::size_t>(n % 3)], plain.at<int>(place))
                    << i << ", " << place;
            }
            ++found;
        }
    }
    EXPECT_GT(found, 100);
}

TEST(WindowSums, AreExactForManyFeatures) {
    RandomInput random(441);
    int greatest = 0;
    for (const int features : {255, 256, 511, 700, 2000}) {
        const Search search(random, features);
        const cv::Mat plain = PlainSums(search.image, search.templ, search.origins);
        WindowSums sums;
        sums.find(search.level, search.templ, search.origins, 1);
        const cv::Rect window(search.origins.tl(), cv::Size(localWindow, localWindow));
        const WindowSums::Best expected = PlainBest(plain, {}, 1);
        greatest = std::max(greatest, expected.sum);
        EXPECT_EQ(sums.bestIn(window).sum, expected.sum) << features;
        EXPECT_EQ(sums.bestIn(window).place, expected.place) << features;
    }
    EXPECT_GT(greatest, 255);  // more than a byte holds
}

TEST(WindowSums, FindsNothingAboveTheGreatestSum) {
    RandomInput random(442);
    const Search search(random, 10);
    WindowSums sums;
    sums.find(search.level, search.templ, search.origins, 41);
    EXPECT_EQ(sums.bestIn(cv::Rect(search.origins.tl(), cv::Size(localWindow, localWindow))).sum, 0);
}

}  // namespace
}  // namespace line2Dup
