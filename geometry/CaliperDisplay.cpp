#include "geometry/CaliperDisplay.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/highgui.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

namespace Quorvane::UtilityFunctions {

namespace {

// Blue, green, red.
const cv::Scalar rectangleColour(0, 255, 255);
const cv::Scalar arrowColour(255, 128, 0);
const cv::Scalar edgeColour(0, 0, 255);
const cv::Scalar plotColour(160, 80, 0);
const cv::Scalar axisColour(128, 128, 128);
const cv::Scalar textColour(0, 0, 0);
const cv::Scalar paper(255, 255, 255);

const cv::Size plotSize(800, 600);
constexpr int plotMargin = 50;
constexpr int edgeDotRadius = 4;
constexpr double textScale = 0.5;

/// Positions far outside every picture are drawn at its far outside, which keeps them in the range of an int.
cv::Point PixelAt(double x, double y) {
    constexpr double farOutside = 30000.0;
    const auto limited = [&](double value) {
        return std::isnan(value) ? 0 : static_cast<int>(std::lround(std::clamp(value, -farOutside, farOutside)));
    };
    return {limited(x), limited(y)};
}

std::string OneDecimal(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

std::string SizeText(const cv::Mat& picture) {
    return std::to_string(picture.cols) + "x" + std::to_string(picture.rows);
}

/// A colour copy, 8-bit. Other depths are stretched to its range; what cannot be shown is black.
cv::Mat ColourCopy(const cv::Mat& image) {
    if (image.empty() || image.dims > 2 || image.channels() == 2 || image.channels() > 4) {
        return cv::Mat::zeros(std::max(image.rows, 1), std::max(image.cols, 1), CV_8UC3);
    }
    cv::Mat bytes = image;
    if (image.depth() != CV_8U) cv::normalize(image, bytes, 0.0, 255.0, cv::NORM_MINMAX, CV_8U);
    cv::Mat colour;
    if (bytes.channels() == 3) return bytes.clone();
    cv::cvtColor(bytes, colour, bytes.channels() == 1 ? cv::COLOR_GRAY2BGR : cv::COLOR_BGRA2BGR);
    return colour;
}

cv::Mat DrawMeasurement(const EdgeCaliper& caliper, const cv::Mat& image, const CaliperFindings& findings) {
    cv::Mat picture = ColourCopy(image);
    const double cosine = std::cos(caliper.angle);
    const double sine = std::sin(caliper.angle);
    const auto at = [&](double along, double across) {
        return PixelAt(along * cosine + caliper.column - across * sine, across * cosine + along * sine + caliper.row);
    };
    const double l = caliper.halfLength;
    const double w = caliper.halfWidth;
    const std::vector<cv::Point> corners{at(-l, -w), at(l, -w), at(l, w), at(-l, w)};
    cv::polylines(picture, corners, true, rectangleColour, 1, cv::LINE_AA);
    cv::arrowedLine(picture, at(-l, 0.0), at(l, 0.0), arrowColour, 1, cv::LINE_AA);
    for (std::size_t i = 0; i < findings.rows.size(); ++i) {
        const cv::Point edge = PixelAt(findings.columns[i], findings.rows[i]);
        cv::circle(picture, edge, edgeDotRadius, edgeColour, cv::FILLED, cv::LINE_AA);
        cv::putText(picture, OneDecimal(findings.amplitudes[i]), edge + cv::Point(2 * edgeDotRadius, -edgeDotRadius),
                    cv::FONT_HERSHEY_SIMPLEX, textScale, edgeColour, 1, cv::LINE_AA);
    }
    return picture;
}

/// One curve over the samples of the profile, with its title, its zero line and its range, inside `area`.
void DrawPlot(cv::Mat& canvas, const cv::Rect& area, const std::string& title, const std::vector<double>& values) {
    cv::rectangle(canvas, area, axisColour);
    cv::putText(canvas, title, area.tl() + cv::Point(0, -8), cv::FONT_HERSHEY_SIMPLEX, textScale, textColour, 1,
                cv::LINE_AA);
    double least = 0.0;
    double most = 0.0;
    for (const double value : values) {
        if (!std::isfinite(value)) continue;
        least = std::min(least, value);
        most = std::max(most, value);
    }
    const double range = most > least ? most - least : 1.0;
    const auto y = [&](double value) { return area.y + area.height * (most - value) / range; };
    cv::line(canvas, PixelAt(area.x, y(0.0)), PixelAt(area.x + area.width, y(0.0)), axisColour);
    cv::putText(canvas, OneDecimal(most), {4, area.y + 12}, cv::FONT_HERSHEY_SIMPLEX, textScale * 0.8, textColour);
    cv::putText(canvas, OneDecimal(least), {4, area.y + area.height}, cv::FONT_HERSHEY_SIMPLEX, textScale * 0.8,
                textColour);
    std::vector<cv::Point> curve;
    const double width = values.size() > 1 ? static_cast<double>(values.size() - 1) : 1.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        curve.push_back(PixelAt(area.x + area.width * static_cast<double>(i) / width, y(values[i])));
    }
    cv::polylines(canvas, curve, false, plotColour, 2, cv::LINE_AA);
}

cv::Mat DrawProfiles(const CaliperFindings& findings) {
    std::vector<double> amplitudes;
    for (const double d : findings.derivative) amplitudes.push_back(d * findings.scale);
    cv::Mat canvas(plotSize, CV_8UC3, paper);
    const cv::Size area(plotSize.width - 2 * plotMargin, plotSize.height / 2 - 2 * plotMargin);
    const cv::Point upper(plotMargin, plotMargin);
    const cv::Point lower(plotMargin, plotSize.height / 2 + plotMargin);
    DrawPlot(canvas, {upper, area}, "Gray Value Profile", findings.profile);
    DrawPlot(canvas, {lower, area}, "Derivative (scaled)", amplitudes);
    return canvas;
}

/// The factor, at most 1, by which a picture fits into the limits.
double ScaleToFit(const cv::Mat& picture, int width, int height) {
    return std::min({1.0, static_cast<double>(width) / picture.cols, static_cast<double>(height) / picture.rows});
}

/// Shows a picture, shrunk where it has to be, and returns the name of its window. `shown` receives what is shown.
std::string ShowWindow(const std::string& title, const cv::Mat& picture, const EdgeCaliper& caliper, cv::Mat& shown) {
    const double scale = ScaleToFit(picture, caliper.displayWidth, caliper.displayHeight);
    shown = picture;
    std::string name = title;
    if (scale < 1.0) {
        const cv::Size size(std::max(static_cast<int>(picture.cols * scale), 1),
                            std::max(static_cast<int>(picture.rows * scale), 1));
        cv::resize(picture, shown, size, 0.0, 0.0, cv::INTER_AREA);
        name += " (" + OneDecimal(scale * 100.0) + "%)";
    }
    cv::imshow(name, shown);
    return name;
}

}  // namespace

void showDebugPlots(const EdgeCaliper& caliper, const cv::Mat& image, const CaliperFindings& findings) {
    const cv::Mat picture = DrawMeasurement(caliper, image, findings);
    cv::Mat shownPicture;
    cv::Mat shownPlots;
    const std::string results = ShowWindow("Measurement Results", picture, caliper, shownPicture);
    const std::string profiles = ShowWindow("Profile Analysis", DrawProfiles(findings), caliper, shownPlots);
    std::cout << "\n=== Debug Visualization ===\n"
              << "Original size: " << SizeText(picture) << "\n"
              << "Display size: " << SizeText(shownPicture) << "\n"
              << "Press any key to close..." << std::endl;
    cv::waitKey(0);
    cv::destroyWindow(results);
    cv::destroyWindow(profiles);
}

}  // namespace Quorvane::UtilityFunctions
