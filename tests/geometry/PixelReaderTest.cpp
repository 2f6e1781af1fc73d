#include "geometry/PixelReader.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/support/RandomInput.h"

namespace Quorvane {

using UtilityFunctions::PixelReader;

namespace {

const cv::Mat pixels = (cv::Mat_<uchar>(3, 4) << 0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110);

TEST(PixelReader, ReadsZeroOutsideTheImage) {
    const PixelReader<uchar> reader(pixels);
    EXPECT_EQ(reader.pixelValueAt(1, 2), 60.0);
    EXPECT_EQ(reader.pixelValueAt(-1, 2), 0.0);
    EXPECT_EQ(reader.pixelValueAt(3, 2), 0.0);
    EXPECT_EQ(reader.pixelValueAt(1, -1), 0.0);
    EXPECT_EQ(reader.pixelValueAt(1, 4), 0.0);
}

TEST(PixelReader, RoundsHalvesAwayFromZero) {
    const PixelReader<uchar> reader(pixels);
    EXPECT_EQ(reader.nearest(1.49, 0.5), 50.0);
    EXPECT_EQ(reader.nearest(1.5, 1.49), 60.0);
    EXPECT_EQ(reader.nearest(3.5, 1.0), 0.0) << "rounds to a column that there is not";
    EXPECT_EQ(reader.nearest(3.0, 2.5), 0.0);
}

TEST(PixelReader, WeightsFourNeighbours) {
    const PixelReader<uchar> reader(pixels);
    EXPECT_DOUBLE_EQ(reader.interpolateBilinear(1.25, 0.5), 32.5);
    EXPECT_EQ(reader.interpolateBilinear(2.0, 1.0), 60.0);
}

TEST(PixelReader, ReadsZeroInTheLastRowAndColumnWhenBilinear) {
    const PixelReader<uchar> reader(pixels);
    EXPECT_EQ(reader.interpolateBilinear(3.0, 1.0), 0.0);
    EXPECT_EQ(reader.interpolateBilinear(1.0, 2.0), 0.0);
    EXPECT_EQ(reader.interpolateBilinear(-0.1, 1.0), 0.0);
    EXPECT_EQ(reader.interpolateBilinear(1.0, -0.1), 0.0);
    EXPECT_GT(reader.interpolateBilinear(2.999, 1.999), 0.0);
}

TEST(PixelReader, IsExactForAParabolaWhenBicubic) {
    cv::Mat_<double> parabola(9, 9);
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 9; ++x) parabola(y, x) = x * x - 2.0 * y * y + x * y + 3.0;
    }
    const PixelReader<double> reader(parabola);
    const double x = 3.3;
    const double y = 4.8;
    EXPECT_NEAR(reader.interpolateBicubic(x, y), x * x - 2.0 * y * y + x * y + 3.0, 1e-12);
}

TEST(PixelReader, FallsBackToBilinearNearTheBorderWhenBicubic) {
    const cv::Mat image = TestSupport::RandomInput(1).Image({9, 9});
    const PixelReader<uchar> reader(image);
    for (const cv::Point2d& p : {cv::Point2d(0.99, 4.3), cv::Point2d(7.0, 4.3), cv::Point2d(4.3, 0.99),
                                 cv::Point2d(4.3, 7.0), cv::Point2d(8.2, 4.0)}) {
        EXPECT_EQ(reader.interpolateBicubic(p.x, p.y), reader.interpolateBilinear(p.x, p.y)) << p;
    }
    EXPECT_NE(reader.interpolateBicubic(1.3, 6.9), reader.interpolateBilinear(1.3, 6.9));
}

}  // namespace
}  // namespace Quorvane
