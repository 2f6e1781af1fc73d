#pragma once

#include <filesystem>
#include <opencv2/core/mat.hpp>
#include <string>
#include <utility>
#include <vector>

namespace Demo {

struct Picture {
    cv::Mat image;
    std::string caption;
};

/// Name and value of a parameter, a result or a measured figure.
using Row = std::pair<std::string, std::string>;

/// An HTML page with its pictures beside it: static, without scripts and without network, readable on a phone.
class Report {
public:
    /// Writes into `folder`, which is made if need be.
    explicit Report(std::filesystem::path folder);

    /// What follows belongs to this section.
    void Section(const std::string& title, const std::string& introduction);
    void Heading(const std::string& text);
    void Paragraph(const std::string& text);
    /// Pictures side by side where the window is wide enough, each written as a PNG file.
    void Pictures(const std::vector<Picture>& pictures);
    /// One picture with a table of any number of columns beside it, under it where the window is narrow.
    void PictureWithGrid(const Picture& picture, const std::string& caption,
                         const std::vector<std::vector<std::string>>& lines);
    void Table(const std::string& caption, const std::vector<Row>& rows);
    /// A table of any number of columns; the first line holds their titles.
    void Grid(const std::string& caption, const std::vector<std::vector<std::string>>& lines);

    /// Writes the page and returns its path. Throws `std::runtime_error` if it cannot be written.
    std::filesystem::path Write() const;

private:
    /// A section's entry in the contents at the top of the page.
    struct SectionOnPage {
        std::string title;
        std::string cover;  ///< The file of the picture that stands for it; empty as long as it has none.
        int pictures = 0;
    };

    void Figure(const Picture& picture);
    std::string Contents() const;

    std::filesystem::path folder_;
    std::string body_;
    std::vector<SectionOnPage> sections_;
    int pictures_ = 0;
};

/// "12.3 ms"
std::string Milliseconds(double milliseconds);

/// A number with the given count of digits after the point.
std::string Number(double value, int digits);

/// A part of a picture, magnified without smoothing so that single pixels show.
cv::Mat Magnified(const cv::Mat& image, const cv::Rect& part, int factor);

}  // namespace Demo
