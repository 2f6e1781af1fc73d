#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <opencv2/core/types.hpp>
#include <vector>

#include "Includes/FineLevel.h"
#include "Includes/HitRefinement.h"
#include "Includes/ShapeTemplate.h"

namespace line2Dup {

/// The sums of one template for all crop origins in a rectangle of the fine level, as far as they matter: those that
/// reach a least sum.
class WindowSums {
public:
    /// Greatest width and height of the rectangle.
    static constexpr int greatestSide = 48;

    /// Finds the places that reach `leastSum`, above 0. The level must be prepared for them, and stay so until the next
    /// call.
    void find(const FineLevel& level, const ShapeTemplate& templ, const cv::Rect& origins, int leastSum);

    /// The first of the greatest sums in a window of 16 by 16 crop origins within the rectangle, relative to the
    /// window. The sum is 0 if none in the window reaches the least one.
    struct Best {
        cv::Point place;
        int sum;
    };
    Best bestIn(const cv::Rect& window) const;

    /// The sums around a crop origin within the rectangle; those outside of it mean nothing. They live until the next
    /// call.
    const NineSums& around(cv::Point origin);

private:
    static constexpr int atOnce = 16;
    using Sixteen = std::array<ushort, atOnce>;

    void openPlaces(int allowed);
    template <int Planes>
    void countMisses(int allowed);
    void sumOpenPlaces(int leastSum);
    Sixteen sumSixteen(int x, int y) const;
    NineSums sumNine(cv::Point centre) const;

    /// A feature in the level, for the crop origin at the rectangle's first place.
    struct Place {
        const std::uint64_t* missing;
        const uchar* orientations;
        int shift;  // where its first bit lies in a word
        int label;
    };

    std::ptrdiff_t wordColumnStep_ = 0;
    std::ptrdiff_t orientationStep_ = 0;
    cv::Rect origins_;
    std::vector<Place> places_;
    std::array<std::uint64_t, greatestSide> open_{};  // a bit for each place, row by row
    std::uint64_t rows_ = 0;                          // a bit for each row that has any
    std::array<std::array<ushort, greatestSide>, greatestSide> sums_{};
    cv::Point nineCentre_;  // of the sums in `nine_`; several windows have the same best place
    NineSums nine_{};
};

}  // namespace line2Dup
