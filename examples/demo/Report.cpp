#include "examples/demo/Report.h"

#include <cstdio>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

namespace Demo {

namespace {

constexpr const char* pageStart = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>QuorvaneVision at work</title>
<style>
:root { color-scheme: light; }
body { font: 16px/1.5 system-ui, sans-serif; color: #1b1f24; background: #f6f7f9; margin: 0 auto; max-width: 1200px; padding: 0 16px 48px; }
h1 { margin: 32px 0 4px; } h2 { margin: 48px 0 4px; border-top: 1px solid #cfd5dc; padding-top: 24px; } h3 { margin: 24px 0 4px; }
nav a { margin-right: 16px; white-space: nowrap; }
.pictures { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(300px, 100%), 1fr)); gap: 16px; margin: 12px 0; }
figure { margin: 0; } figure img { width: 100%; height: auto; display: block; background: #fff; border: 1px solid #cfd5dc; image-rendering: auto; }
figcaption { font-size: 14px; color: #4a535e; }
.table { overflow-x: auto; margin: 12px 0; }
table { border-collapse: collapse; font: 14px/1.4 ui-monospace, monospace; background: #fff; }
caption { text-align: left; font: 600 14px system-ui, sans-serif; padding: 4px 0; }
td, th { border: 1px solid #cfd5dc; padding: 3px 10px; text-align: left; overflow-wrap: break-word; }
</style>
</head>
<body>
<h1>QuorvaneVision at work</h1>
<p>Each picture on this page was made by a host program that links the shared library and uses its exported interface alone.</p>
)";

constexpr const char* pageEnd = "</body>\n</html>\n";

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char letter : text) {
        switch (letter) {
            case '&': escaped += "&amp;"; break;
            case '<': escaped += "&lt;"; break;
            case '>': escaped += "&gt;"; break;
            case '"': escaped += "&quot;"; break;
            default: escaped += letter;
        }
    }
    return escaped;
}

std::string TableRow(const std::vector<std::string>& cells, const std::string& tag) {
    std::string row = "<tr>";
    for (const std::string& cell : cells) row += "<" + tag + ">" + Escaped(cell) + "</" + tag + ">";
    return row + "</tr>\n";
}

}  // namespace

Report::Report(std::filesystem::path folder) : folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
}

void Report::Section(const std::string& title, const std::string& introduction) {
    const std::string anchor = "section-" + std::to_string(++sections_);
    contents_ += "<a href=\"#" + anchor + "\">" + Escaped(title) + "</a>\n";
    body_ += "<h2 id=\"" + anchor + "\">" + Escaped(title) + "</h2>\n";
    Paragraph(introduction);
}

void Report::Heading(const std::string& text) { body_ += "<h3>" + Escaped(text) + "</h3>\n"; }

void Report::Paragraph(const std::string& text) { body_ += "<p>" + Escaped(text) + "</p>\n"; }

void Report::Pictures(const std::vector<Picture>& pictures) {
    body_ += "<div class=\"pictures\">\n";
    for (const Picture& picture : pictures) Figure(picture);
    body_ += "</div>\n";
}

void Report::PictureWithGrid(const Picture& picture, const std::string& caption,
                             const std::vector<std::vector<std::string>>& lines) {
    body_ += "<div class=\"pictures\">\n";
    Figure(picture);
    Grid(caption, lines);
    body_ += "</div>\n";
}

void Report::Figure(const Picture& picture) {
    const std::string name = "picture-" + std::to_string(++pictures_) + ".png";
    if (!cv::imwrite((folder_ / name).string(), picture.image)) throw std::runtime_error("cannot write " + name);
    body_ += "<figure><img src=\"" + name + "\" width=\"" + std::to_string(picture.image.cols) + "\" height=\"" +
             std::to_string(picture.image.rows) + "\" alt=\"" + Escaped(picture.caption) + "\"><figcaption>" +
             Escaped(picture.caption) + "</figcaption></figure>\n";
}

void Report::Table(const std::string& caption, const std::vector<Row>& rows) {
    body_ += "<div class=\"table\"><table><caption>" + Escaped(caption) + "</caption>\n";
    for (const Row& row : rows) body_ += TableRow({row.first, row.second}, "td");
    body_ += "</table></div>\n";
}

void Report::Grid(const std::string& caption, const std::vector<std::vector<std::string>>& lines) {
    body_ += "<div class=\"table\"><table><caption>" + Escaped(caption) + "</caption>\n";
    for (std::size_t i = 0; i < lines.size(); ++i) body_ += TableRow(lines[i], i == 0 ? "th" : "td");
    body_ += "</table></div>\n";
}

std::filesystem::path Report::Write() const {
    const std::filesystem::path path = folder_ / "index.html";
    std::ofstream page(path);
    page << pageStart << "<nav>\n" << contents_ << "</nav>\n" << body_ << pageEnd;
    page.close();
    if (!page) throw std::runtime_error("cannot write " + path.string());
    return path;
}

std::string Milliseconds(double milliseconds) { return Number(milliseconds, 1) + " ms"; }

std::string Number(double value, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

cv::Mat Magnified(const cv::Mat& image, const cv::Rect& part, int factor) {
    cv::Mat magnified;
    cv::resize(image(part), magnified, cv::Size(), factor, factor, cv::INTER_NEAREST);
    return magnified;
}

}  // namespace Demo
