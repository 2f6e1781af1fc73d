#include "examples/demo/Report.h"

#include <cstdio>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

namespace Demo {

namespace {

constexpr const char* pageStart = R"html(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>QuorvaneVision at work</title>
<style>
:root { color-scheme: light; }
* { box-sizing: border-box; }
html { scroll-behavior: smooth; -webkit-text-size-adjust: 100%; }
body { font: 16px/1.5 system-ui, sans-serif; color: #1b1f24; background: #f6f7f9; margin: 0 auto; max-width: 1200px; padding: 0 16px 48px; }
h1 { margin: 32px 0 4px; } h2 { margin: 56px 0 4px; border-top: 2px solid #cfd5dc; padding-top: 24px; } h3 { margin: 28px 0 4px; }
h1, h2, h3, nav span, figcaption { overflow-wrap: anywhere; }
p { max-width: 75ch; margin: 8px 0; overflow-wrap: break-word; }
nav { display: grid; grid-template-columns: repeat(auto-fill, minmax(150px, 1fr)); gap: 16px; margin: 24px 0; }
nav a { color: inherit; font-weight: 600; text-decoration: none; background: #fff; border: 1px solid #cfd5dc; border-radius: 4px; overflow: hidden; }
nav a:hover, nav a:focus { border-color: #0a58ca; color: #0a58ca; }
nav img { width: 100%; aspect-ratio: 4 / 3; object-fit: cover; display: block; }
nav span { display: block; padding: 6px 10px; line-height: 1.3; }
.pictures { display: grid; grid-template-columns: repeat(var(--columns), minmax(0, 1fr)); gap: 16px; margin: 12px 0; align-items: start; }
@media (max-width: 900px) { .pictures { grid-template-columns: repeat(auto-fit, minmax(min(280px, 100%), 1fr)); } }
figure { margin: 0; max-width: 760px; } figure img { width: 100%; height: auto; display: block; background: #fff; border: 1px solid #cfd5dc; }
figcaption { font-size: 14px; color: #4a535e; padding-top: 4px; }
.table { display: inline-block; vertical-align: top; max-width: calc(100% - 24px); overflow-x: auto; margin: 8px 24px 8px 0; }
.pictures .table { margin: 0; max-width: 100%; }
table { border-collapse: collapse; font: 14px/1.4 ui-monospace, monospace; background: #fff; }
caption { text-align: left; font: 600 14px/1.5 system-ui, sans-serif; padding: 4px 0; white-space: nowrap; }
td, th { border: 1px solid #cfd5dc; padding: 3px 10px; text-align: left; vertical-align: top; overflow-wrap: break-word; }
th { background: #eceff3; }
@media (max-width: 600px) { .table { margin-right: 0; max-width: 100%; } td, th { padding: 3px 6px; } table { font-size: 13px; } }
td:empty::after { content: "(empty)";
color : #6a737d;
}
</style>
</head>
<body>
<h1>QuorvaneVision at work</h1>
<p>Each picture on this page was made by a host program that links the shared library and uses its exported interface
alone. Only the shape matcher, which works inside the filling, is shown from within.</p>
)html";

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

// The long names of parameters and results may be broken after an underscore within them.
std::string BreakableAtUnderscores(const std::string& text) {
    std::string breakable;
    for (const char letter : text) {
        const bool atStart = breakable.empty();
        breakable += letter;
        if (letter == '_' && !atStart) breakable += "<wbr>";
    }
    return breakable;
}

std::string TableRow(const std::vector<std::string>& cells, const std::string& tag) {
    std::string row = "<tr>";
    for (const std::string& cell : cells) {
        row += "<" + tag + ">" + BreakableAtUnderscores(Escaped(cell)) + "</" + tag + ">";
    }
    return row + "</tr>\n";
}

// Side by side on a wide window: up to four pictures in one row, more of them in rows of three, or of four where that
// comes out even.
std::string RowOfPictures(std::size_t pictures) {
    constexpr std::size_t longestRow = 4;
    constexpr std::size_t usualRow = 3;
    std::size_t columns = usualRow;
    if (pictures <= longestRow) {
        columns = pictures;
    } else if (pictures % usualRow != 0 && pictures % longestRow == 0) {
        columns = longestRow;
    }
    return "<div class=\"pictures\" style=\"--columns: " + std::to_string(columns) + "\">\n";
}

}  // namespace

Report::Report(std::filesystem::path folder) : folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
}

void Report::Section(const std::string& title, const std::string& introduction) {
    sections_.push_back({title, "", 0});
    const std::string anchor = "section-" + std::to_string(sections_.size());
    body_ += "<h2 id=\"" + anchor + "\">" + Escaped(title) + "</h2>\n";
    Paragraph(introduction);
}

void Report::Heading(const std::string& text) { body_ += "<h3>" + Escaped(text) + "</h3>\n"; }

void Report::Paragraph(const std::string& text) { body_ += "<p>" + Escaped(text) + "</p>\n"; }

void Report::Pictures(const std::vector<Picture>& pictures) {
    body_ += RowOfPictures(pictures.size());
    for (const Picture& picture : pictures) Figure(picture);
    body_ += "</div>\n";
}

void Report::PictureWithGrid(const Picture& picture, const std::string& caption,
                             const std::vector<std::vector<std::string>>& lines) {
    body_ += RowOfPictures(2);  // the table takes the place of the second picture
    Figure(picture);
    Grid(caption, lines);
    body_ += "</div>\n";
}

void Report::Figure(const Picture& picture) {
    const std::string name = "picture-" + std::to_string(++pictures_) + ".png";
    if (!cv::imwrite((folder_ / name).string(), picture.image)) throw std::runtime_error("cannot write " + name);
    if (!sections_.empty()) {
        // The first pictures of a section are what goes in and what comes out of it: the second one stands for it.
        SectionOnPage& section = sections_.back();
        if (section.pictures++ <= 1) section.cover = name;
    }
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

std::string Report::Contents() const {
    std::string contents = "<nav>\n";
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        const SectionOnPage& section = sections_[i];
        contents += "<a href=\"#section-" + std::to_string(i + 1) + "\">";
        if (!section.cover.empty()) contents += "<img src=\"" + section.cover + "\" alt=\"\">";
        contents += "<span>" + Escaped(section.title) + "</span></a>\n";
    }
    return contents + "</nav>\n";
}

std::filesystem::path Report::Write() const {
    const std::filesystem::path path = folder_ / "index.html";
    std::ofstream page(path);
    page << pageStart << Contents() << body_ << pageEnd;
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
