#pragma once

#include <opencv2/core/hal/interface.h>
#include <array>
#include <cstddef>

#include "Includes/OrientationLabel.h"

namespace line2Dup {

/// For each label a vector of sixteen bytes, all the same.
using LabelVectors = std::array<std::array<uchar, 16>, labelCount>;

template <typename ByteOf>
constexpr LabelVectors labelVectorsOf(ByteOf byteOf) {
    LabelVectors vectors{};
    for (int label = 0; label < labelCount; ++label) {
        for (uchar& byte : vectors[static_cast<std::size_t>(label)]) byte = static_cast<uchar>(byteOf(label));
    }
    return vectors;
}

/// A label's own orientation.
inline constexpr LabelVectors ownOrientations = labelVectorsOf([](int label) { return oneHotOf(label); });
/// All orientations that give a label a response.
inline constexpr LabelVectors foundOrientations =
    labelVectorsOf([](int label) { return oneHotOf(label) | neighboursOf(label); });

}  // namespace line2Dup
