#include "algorithms/FindMarkPoint.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>
#include <vector>

#include "algorithms/CircleMarks.h"
#include "algorithms/CrossTemplate.h"
#include "framework/NumberText.h"

namespace Quorvane {

namespace {

enum class Direction { Rising, Falling };

/// The marks of one run: index i of all lists belongs to one mark.
struct Marks {
    std::vector<cv::Point2f> centres;
    std::vector<double> radii;
    std::vector<double> similarities;
};

/// The middle of an image of whole pixels: 320 for 641 columns.
cv::Point2f MiddleOf(const cv::Mat& image) {
    const int column = image.cols / 2;
    const int row = image.rows / 2;
    return {static_cast<float>(column), static_cast<float>(row)};
}

std::vector<double> DistancesTo(const cv::Point2f& point, const std::vector<cv::Point2f>& centres) {
    std::vector<double> distances;
    distances.reserve(centres.size());
    for (const cv::Point2f& centre : centres) {
        const double dx = centre.x - point.x;
        const double dy = centre.y - point.y;
        distances.push_back(std::sqrt(dx * dx + dy * dy));
    }
    return distances;
}

/// Puts the elements in the order of their keys. Lists that are ordered by the same keys stay parallel: the sort looks
/// at the keys alone, and equal keys keep their order.
template <typename Element>
void ReorderByKey(const std::vector<double>& keys, Direction direction, std::vector<Element>& elements) {
    std::vector<std::pair<double, Element>> pairs;
    pairs.reserve(elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) pairs.emplace_back(keys[i], elements[i]);
    std::stable_sort(pairs.begin(), pairs.end(), [direction](const auto& a, const auto& b) {
        return direction == Direction::Rising ? a.first < b.first : a.first > b.first;
    });
    for (std::size_t i = 0; i < elements.size(); ++i) elements[i] = pairs[i].second;
}

void ReorderByKey(const std::vector<double>& keys, Direction direction, Marks& marks) {
    ReorderByKey(keys, direction, marks.centres);
    ReorderByKey(keys, direction, marks.radii);
    ReorderByKey(keys, direction, marks.similarities);
}

void Order(const std::string& sortMode, const cv::Point2f& middle, Marks& marks) {
    const std::vector<double> similarities = marks.similarities;
    const std::vector<double> distances = DistancesTo(middle, marks.centres);
    if (sortMode == "Similarity_Ascendingorder") ReorderByKey(similarities, Direction::Rising, marks);
    if (sortMode == "Similarity_Descendingorder") ReorderByKey(similarities, Direction::Falling, marks);
    if (sortMode == "DistToImgCenter_Ascendingorder") ReorderByKey(distances, Direction::Rising, marks);
    if (sortMode == "DistToImgCenter_Descendingorder") ReorderByKey(distances, Direction::Falling, marks);
}

void DrawMarks(cv::Mat& destination, const std::vector<cv::Point2f>& centres, const std::vector<double>& radii) {
    const cv::Scalar green(0, 255, 0);
    const cv::Scalar red(0, 0, 255);
    constexpr int dotRadius = 1;
    constexpr int lineThickness = 1;
    for (std::size_t i = 0; i < centres.size(); ++i) {
        const cv::Point centre(cvRound(centres[i].x), cvRound(centres[i].y));
        cv::circle(destination, centre, dotRadius, green, cv::FILLED, cv::LINE_8);
        cv::circle(destination, centre, cvRound(radii[i]), red, lineThickness, cv::LINE_8);
    }
}

template <typename Element, typename Value>
std::vector<std::string> Texts(const std::vector<Element>& elements, Value value) {
    std::vector<std::string> texts;
    texts.reserve(elements.size());
    for (const Element& element : elements) texts.push_back(FixedText(value(element)));
    return texts;
}

void StoreMarks(const Marks& marks, AlgorithmResult& results) {
    const auto itself = [](double value) { return value; };
    results.SetResult("FindCount", std::to_string(marks.centres.size()));
    results.SetResult("MarkPoint_X", Texts(marks.centres, [](const cv::Point2f& centre) { return centre.x; }));
    results.SetResult("MarkPoint_Y", Texts(marks.centres, [](const cv::Point2f& centre) { return centre.y; }));
    results.SetResult("MarkPoint_Similarity", Texts(marks.similarities, itself));
    results.SetResult("MarkPoint_Radius", Texts(marks.radii, itself));
}

int Fail(int status, const std::string& message, AlgorithmResult& results) {
    results.SetResult("AlgorithmErrorMsg", message);
    return status;
}

int ExecuteCircle(const cv::Mat& source, cv::Mat& destination, double similarityMin, const std::string& sortMode,
                  const AlgorithmParameters& parameters, AlgorithmResult& results) {
    const double radius = parameters.GetParameter("Radius").ToDouble();
    if (!(radius > 0.0)) return Fail(3, "[FindMarkPoint] Param(Radius) is invalid!", results);

    const double tolerance = (1.0 - similarityMin) * radius;
    Marks marks;
    FindCircleMarks(source, radius, tolerance, similarityMin, marks.centres, marks.radii, marks.similarities);
    DrawMarks(destination, marks.centres, marks.radii);
    Order(sortMode, MiddleOf(source), marks);
    StoreMarks(marks, results);
    return 0;
}

int ExecuteCross(const AlgorithmParameters& parameters, AlgorithmResult& results) {
    const int width = parameters.GetParameter("Width").ToInt();
    const int height = parameters.GetParameter("Height").ToInt();
    if (width < 1 || height < 1) {
        return Fail(3, "[FindMarkPoint] Param(iCrossWidth/iCrossHeight) is invalid!", results);
    }
    // Deliberately goes no further: no cross is searched for, and a size that no image can have is OpenCV's exception.
    const cv::Mat cross = MakeCrossTemplate(width, height);
    return 0;
}

}  // namespace

FindMarkPoint::FindMarkPoint() {
    parameters_->SetParameter("MarkPointType", "Circle");
    parameters_->SetParameter("Radius", 50);
    parameters_->SetParameter("SimilarityMin", 0.85f);
    parameters_->SetParameter("SortMode", "DistToImgCenter_Ascendingorder");
    results_->SetResult("AlgorithmErrorMsg", "");
    results_->SetResult("FindCount", "0");
    results_->SetResult("MarkPoint_X", std::vector<std::string>{});
    results_->SetResult("MarkPoint_Y", std::vector<std::string>{});
    results_->SetResult("MarkPoint_Similarity", std::vector<std::string>{});
    // "MarkPoint_Radius" deliberately has no entry before the first run for circles.
}

FindMarkPoint::~FindMarkPoint() = default;

int FindMarkPoint::Execute(const cv::Mat& source, cv::Mat& destination) {
    if (source.empty()) return Fail(2, "[FindMarkPoint] SourceImage is invalid!", *results_);
    // Not copied into the pixels that the destination has: those may be the source's, which must not be drawn in.
    destination = source.clone();

    const std::string type = parameters_->GetParameter("MarkPointType").ToString();
    const std::string sortMode = parameters_->GetParameter("SortMode").ToString();
    const double similarityMin = parameters_->GetParameter("SimilarityMin").ToDouble();
    if (type == "Circle") {
        return ExecuteCircle(source, destination, similarityMin, sortMode, *parameters_, *results_);
    }
    if (type == "Cross") return ExecuteCross(*parameters_, *results_);
    return 0;
}

}  // namespace Quorvane
