#include "tests/support/Scene.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "tests/support/RandomInput.h"

namespace Quorvane::TestSupport {

namespace {

/// A point of a pixel is never farther from its centre than this.
const double halfDiagonal = std::sqrt(0.5);

/// The share of the pixel around `centre` that the shape covers.
double Coverage(const Shape& shape, cv::Point2d centre) {
    const double distance = shape(centre);
    if (distance >= halfDiagonal) return 0.0;
    if (distance <= -halfDiagonal) return 1.0;
    constexpr int grid = 16;
    int inside = 0;
    for (int i = 0; i < grid; ++i) {
        for (int j = 0; j < grid; ++j) {
            const cv::Point2d offset((j + 0.5) / grid - 0.5, (i + 0.5) / grid - 0.5);
            if (shape(centre + offset) < 0.0) ++inside;
        }
    }
    return static_cast<double>(inside) / (grid * grid);
}

}  // namespace

Scene::Scene(cv::Size size, double background) : Scene(size, cv::Scalar::all(background)) {}

Scene::Scene(cv::Size size, const cv::Scalar& background) : canvas_(size, CV_32FC3, background) {}

Scene::Scene(const cv::Mat& picture) {
    cv::Mat colour = picture;
    if (picture.channels() == 1) cv::cvtColor(picture, colour, cv::COLOR_GRAY2BGR);
    colour.convertTo(canvas_, CV_32FC3);
}

Scene& Scene::Paint(const Shape& shape, double colour) { return Paint(shape, cv::Scalar::all(colour)); }

Scene& Scene::Paint(const Shape& shape, const cv::Scalar& colour) {
    const cv::Vec3f paint(static_cast<float>(colour[0]), static_cast<float>(colour[1]), static_cast<float>(colour[2]));
    for (int y = 0; y < canvas_.rows; ++y) {
        for (int x = 0; x < canvas_.cols;) {
            const double distance = shape({static_cast<double>(x), static_cast<double>(y)});
            if (distance > 2.0) {
                // No point nearer than this can belong to the shape.
                x += static_cast<int>(distance - halfDiagonal);
                continue;
            }
            const auto share = static_cast<float>(Coverage(shape, {static_cast<double>(x), static_cast<double>(y)}));
            auto& pixel = canvas_.at<cv::Vec3f>(y, x);
            pixel += (paint - pixel) * share;
            ++x;
        }
    }
    return *this;
}

Scene& Scene::Blur(double sigma) {
    cv::GaussianBlur(canvas_, canvas_, cv::Size(), sigma, sigma, cv::BORDER_REPLICATE);
    return *this;
}

Scene& Scene::Light(double left, double right) {
    for (int y = 0; y < canvas_.rows; ++y) {
        for (int x = 0; x < canvas_.cols; ++x) {
            const double factor = left + (right - left) * x / std::max(canvas_.cols - 1, 1);
            canvas_.at<cv::Vec3f>(y, x) *= static_cast<float>(factor);
        }
    }
    return *this;
}

Scene& Scene::Noise(double deviation, std::uint32_t seed) {
    RandomInput random(seed);
    for (int y = 0; y < canvas_.rows; ++y) {
        for (int x = 0; x < canvas_.cols; ++x) {
            auto& pixel = canvas_.at<cv::Vec3f>(y, x);
            for (int k = 0; k < 3; ++k) pixel[k] += static_cast<float>(deviation * random.Normal());
        }
    }
    return *this;
}

cv::Mat Scene::Colour() const {
    cv::Mat picture;
    canvas_.convertTo(picture, CV_8U);
    return picture;
}

cv::Mat Scene::ColourWithAlpha() const {
    cv::Mat picture;
    cv::cvtColor(Colour(), picture, cv::COLOR_BGR2BGRA);
    return picture;
}

cv::Mat Scene::Gray() const {
    cv::Mat gray;
    cv::cvtColor(canvas_, gray, cv::COLOR_BGR2GRAY);
    gray.convertTo(gray, CV_8U);
    return gray;
}

}  // namespace Quorvane::TestSupport
