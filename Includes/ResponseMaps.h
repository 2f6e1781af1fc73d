#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

namespace line2Dup {

/// How well a place of the image supports a feature. An orientation found near the place counts full if it is the
/// feature's own, three quarters if it is one of the two beside it, and nothing otherwise.
constexpr int fullResponse = 4;
constexpr int neighbourResponse = 3;

/// `dst`(y, x) becomes the OR of `src` over the T by T block whose top left corner is (y, x), blocks being cut at the
/// image's end. Both are CV_8U of one size; `dst` is made anew.
void spreadOrientations(const cv::Mat& src, cv::Mat& dst, int T);

/// Byte-wise OR of a rectangle of `src` into `dst`. The strides are in bytes.
void orRowsUnaligned(const uchar* src, int srcStride, uchar* dst, int dstStride, int width, int height);

/// The responses of one label to a row of spread bytes.
void formResponses(const uchar* spread, uchar* responses, int count, int label);

/// From a spread image (CV_8U) to eight maps of its size, CV_8U: element (r, c) of map `i` is the best response of
/// label `i` to any orientation set at (r, c). The number of pixels must be a multiple of 16.
void computeResponseMaps(const cv::Mat& src, std::vector<cv::Mat>& maps);

/// Reorders a response map so that the places of one grid phase are contiguous: row rs * T + cs of `linearised` holds
/// the elements at rows rs, rs + T, ... and columns cs, cs + T, ... in raster order. T must divide rows and columns.
void linearize(const cv::Mat& responseMap, cv::Mat& linearised, int T);

}  // namespace line2Dup
