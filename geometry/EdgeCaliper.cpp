#include "geometry/EdgeCaliper.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>

#include "geometry/CaliperDisplay.h"
#include "geometry/EdgeProfile.h"
#include "geometry/GrayImage.h"
#include "geometry/PixelReader.h"

namespace Quorvane::UtilityFunctions {

namespace {

EdgePolarity PolarityOf(const std::string& transition) {
    if (transition == "all") return EdgePolarity::All;
    if (transition == "positive") return EdgePolarity::Positive;
    if (transition == "negative") return EdgePolarity::Negative;
    throw std::invalid_argument("Invalid transition parameter");
}

void CheckSelection(const std::string& select) {
    if (select != "all" && select != "first" && select != "last") {
        throw std::invalid_argument("Invalid select parameter");
    }
}

/// The mean over the points that lie in the image; 0 if none does.
template <typename Pixel, typename Read>
double MeanOf(const std::vector<cv::Point2d>& points, const PixelReader<Pixel>& reader, Read read) {
    double sum = 0.0;
    int count = 0;
    for (const cv::Point2d& point : points) {
        if (!reader.Holds(point.x, point.y)) continue;
        sum += read(point.x, point.y);
        ++count;
    }
    return count > 0 ? sum / count : 0.0;
}

/// Correlates with the kernel; what lies outside the profile counts as nothing.
std::vector<double> Derivative(const std::vector<double>& profile, const std::vector<double>& kernel) {
    const auto length = static_cast<int>(profile.size());
    const auto size = static_cast<int>(kernel.size());
    std::vector<double> derivative(profile.size(), 0.0);
    for (int i = 0; i < length; ++i) {
        const int begin = i - size / 2;
        double sum = 0.0;
        for (int k = std::max(0, -begin); k < size && begin + k < length; ++k) {
            const int at = begin + k;
            sum += kernel[static_cast<std::size_t>(k)] * profile[static_cast<std::size_t>(at)];
        }
        derivative[static_cast<std::size_t>(i)] = sum;
    }
    return derivative;
}

std::vector<EdgeRecord> FindEdges(const std::vector<double>& derivative, double scale, double threshold,
                                  EdgePolarity polarity) {
    std::vector<EdgeRecord> edges;
    const auto length = static_cast<int>(derivative.size());
    if (length < leastSamplesOfAnEdge) return edges;
    for (int i = samplesWithoutEdge; i < length - samplesWithoutEdge; ++i) {
        const double* d = derivative.data() + i;
        if (IsEdge(d, scale, threshold, polarity)) edges.push_back({i, *d * scale, i + EdgeOffset(d)});
    }
    return edges;
}

void KeepSelected(const std::string& select, std::vector<EdgeRecord>& edges) {
    if (edges.empty() || select == "all") return;
    if (select != "first") edges.front() = edges.back();
    edges.erase(edges.begin() + 1, edges.end());
}

}  // namespace

void EdgeCaliper::configure(double newRow, double newColumn, double newAngle, double newHalfLength, double newHalfWidth,
                            const cv::Mat& /*image*/, const std::string& newInterpolation) {
    row = newRow;
    column = newColumn;
    angle = newAngle;
    halfLength = newHalfLength;
    halfWidth = newHalfWidth;
    interpolation = newInterpolation;
    profileLength = SampleCount(halfLength);
    const int across = SampleCount(halfWidth);

    centerLine.clear();
    sampleGrid.clear();
    if (profileLength <= 0) return;
    centerLine.reserve(static_cast<std::size_t>(profileLength));
    sampleGrid.reserve(static_cast<std::size_t>(profileLength));
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    for (int i = 0; i < profileLength; ++i) {
        const double s = i - halfLength;
        const cv::Point2d onAxis(s * cosine + column, s * sine + row);
        centerLine.push_back(onAxis);
        std::vector<cv::Point2d>& points = sampleGrid.emplace_back();
        points.reserve(static_cast<std::size_t>(std::max(across, 0)));
        for (int j = 0; j < across; ++j) {
            const double t = j - halfWidth;
            points.emplace_back(onAxis.x - t * sine, t * cosine + onAxis.y);
        }
    }
}

cv::Mat EdgeCaliper::GrayImageUnderGrid(const cv::Mat& image) const {
    double top = row;
    double bottom = row;
    if (!sampleGrid.empty()) {
        // The corners of the grid are its outermost points.
        for (const std::vector<cv::Point2d>* points : {&sampleGrid.front(), &sampleGrid.back()}) {
            if (points->empty()) continue;
            top = std::min({top, points->front().y, points->back().y});
            bottom = std::max({bottom, points->front().y, points->back().y});
        }
    }
    return grayImageBetween(image, top, bottom);
}

std::vector<double> EdgeCaliper::ReadProfile(const cv::Mat& gray) const {
    std::vector<double> profile(sampleGrid.size(), 0.0);
    WithPixelReader(gray, [&](const auto& reader) {
        const auto fill = [&](auto read) {
            for (std::size_t i = 0; i < profile.size(); ++i) profile[i] = MeanOf(sampleGrid[i], reader, read);
        };
        if (interpolation == "nearest") {
            fill([&](double x, double y) { return reader.nearest(x, y); });
        } else if (interpolation == "bicubic") {
            fill([&](double x, double y) { return reader.interpolateBicubic(x, y); });
        } else {
            fill([&](double x, double y) { return reader.interpolateBilinear(x, y); });
        }
    });
    return profile;
}

bool EdgeCaliper::measure(const cv::Mat& image, double sigma, double threshold, const std::string& transition,
                          const std::string& select, std::vector<double>& rows, std::vector<double>& columns,
                          std::vector<double>& amplitudes, std::vector<double>& distances) const {
    const cv::Mat gray = GrayImageUnderGrid(image);
    const double usedSigma = LimitedSigma(sigma, halfLength);
    const EdgePolarity polarity = PolarityOf(transition);
    CheckSelection(select);
    rows.clear();
    columns.clear();
    amplitudes.clear();
    distances.clear();

    const std::vector<double> profile = ReadProfile(gray);
    const std::vector<double> derivative = Derivative(profile, DerivativeKernel(usedSigma));
    const double scale = AmplitudeScale(usedSigma);
    std::vector<EdgeRecord> edges = FindEdges(derivative, scale, threshold, polarity);
    KeepSelected(select, edges);

    for (const EdgeRecord& edge : edges) {
        const double s = edge.position - halfLength;
        columns.push_back(s * std::cos(angle) + column);
        rows.push_back(s * std::sin(angle) + row);
        amplitudes.push_back(edge.amplitude);
    }
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const double dx = columns[i] - columns[i - 1];
        const double dy = rows[i] - rows[i - 1];
        distances.push_back(std::sqrt(dx * dx + dy * dy));
    }
    if (debugEnabled) showDebugPlots(*this, image, {profile, derivative, scale, rows, columns, amplitudes});
    return !rows.empty() && !columns.empty();
}

}  // namespace Quorvane::UtilityFunctions
