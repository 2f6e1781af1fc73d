#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "framework/AlgorithmFactory.h"
#include "tests/support/MarkPlate.h"
#include "tests/support/Scene.h"

namespace Quorvane {

using Texts = std::vector<std::string>;

/// The lists that hold one text for each mark.
inline const Texts markLists{"MarkPoint_X", "MarkPoint_Y", "MarkPoint_Similarity", "MarkPoint_Radius"};

/// A search for marks, and what it found.
class MarkPointFixture : public testing::Test {
protected:
    std::string ErrorMessage() {
        std::string message;
        algorithm->GetErrorMsg(message);
        return message;
    }

    void SetSearch(double radius, double similarityMin, const std::string& sortMode = "none") {
        algorithm->SetParameter("Radius", radius);
        algorithm->SetParameter("SimilarityMin", similarityMin);
        algorithm->SetParameter("SortMode", sortMode);
    }

    cv::Mat Run(const cv::Mat& source) {
        cv::Mat destination;
        EXPECT_EQ(algorithm->Execute(source, destination), 0);
        return destination;
    }

    /// One line of texts for each mark: x, y, similarity, radius.
    std::vector<Texts> Lines() {
        std::vector<Texts> lines(algorithm->GetResultValues(markLists[0]).size());
        for (const std::string& name : markLists) {
            const Texts values = algorithm->GetResultValues(name);
            EXPECT_EQ(values.size(), lines.size()) << name;
            for (std::size_t i = 0; i < values.size(); ++i) lines.at(i).push_back(values[i]);
        }
        EXPECT_THAT(algorithm->GetResultValues("FindCount"), testing::ElementsAre(std::to_string(lines.size())));
        return lines;
    }

    /// The data results, for comparison before and after a run.
    std::vector<Texts> Data() {
        std::vector<Texts> data{algorithm->GetResultValues("FindCount")};
        for (const std::string& name : markLists) data.push_back(algorithm->GetResultValues(name));
        return data;
    }

    std::unique_ptr<Algorithm> algorithm{AlgorithmFactory().CreateAlgorithm("FindMarkPoint")};
};

/// Six marks of radius 24 in differing contrast, so that all similarities differ.
inline cv::Mat SixMarks() {
    TestSupport::Scene scene({400, 300}, 40.0);
    const std::vector<cv::Point2d> centres = TestSupport::MarkPlate{{400, 300}, {3, 2}, 24.0}.Centres();
    double brightness = 250.0;
    for (const cv::Point2d& centre : centres) scene.Paint(TestSupport::Disc(centre, 24.0), brightness -= 30.0);
    return scene.Blur(0.8).Noise(3.0, 5).Colour();
}

}  // namespace Quorvane
