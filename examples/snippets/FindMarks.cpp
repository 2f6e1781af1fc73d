#include <QuorvaneVision.h>

#include <cstddef>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

int main() {
    const cv::Mat picture = cv::imread("coins.png");

    Quorvane::AlgorithmFactory factory;
    Quorvane::Algorithm* marks = factory.CreateAlgorithm("FindMarkPoint");
    marks->SetParameter("Radius", 26);          // pixels
    marks->SetParameter("SimilarityMin", 0.7);  // also lets the radius differ by 30 percent
    marks->SetParameter("SortMode", "Similarity_Descendingorder");

    cv::Mat drawn;
    const int status = marks->Execute(picture, drawn);
    if (status == 0) {
        const std::vector<std::string> x = marks->GetResultValues("MarkPoint_X");
        const std::vector<std::string> y = marks->GetResultValues("MarkPoint_Y");
        const std::vector<std::string> similarity = marks->GetResultValues("MarkPoint_Similarity");
        for (std::size_t i = 0; i < x.size(); ++i) {
            std::cout << x[i] << ", " << y[i] << ": " << similarity[i] << '\n';
        }
        std::cout << marks->GetResultValue("FindCount") << " marks\n";
        cv::imwrite("marks.png", drawn);
    } else {
        std::string message;
        marks->GetErrorMsg(message);
        std::cerr << message << '\n';
    }
    factory.ReleaseAlgorithm(marks);
    return status;
}
