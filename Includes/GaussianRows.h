#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>
#include <vector>

namespace line2Dup {

/// The 7 by 7 Gaussian of an 8-bit image, row by row, for some of its columns: exactly what `cv::GaussianBlur` of the
/// whole image gives with sigma 0 and replicated border. Each channel comes as a row of its own.
class GaussianRows {
public:
    /// The image (CV_8UC1 or CV_8UC3) stays the caller's. `columns` lie in the image and are not empty.
    GaussianRows(const cv::Mat& image, cv::Range columns);

    /// Values that `blur` writes: the number of columns, rounded up; what lies behind the last column means nothing.
    std::size_t writtenValues() const { return written_; }

    /// Row y of the image, blurred, channel k into `blurred[k]`. Rows must be asked for from top to bottom.
    void blur(int y, short* const* blurred);

private:
    const short* sourceRow(int y, int channel) const;
    void loadRow(int y);

    cv::Mat image_;
    cv::Range source_;  // columns that the blur looks at
    std::size_t leftPad_;
    std::size_t written_;
    std::size_t stride_;
    int nextRow_ = -1;  // the first one that is not loaded yet
    std::vector<short> ring_;
    std::vector<short> column_;
};

}  // namespace line2Dup
