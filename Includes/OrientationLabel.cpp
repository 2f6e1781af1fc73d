// The vote counts all eight labels of a pixel at once. A one-hot byte is eight counters of one bit each; three such
// bytes add up to eight counters of two bits, kept as two bytes ("ones" and "twos") by the logic of a full adder.
// Adding the three columns of the block in this way gives each label's count of nine as u + 2 * (a + b + c + d), in
// which u, a, b, c and d are bits. At least five means: the bracket is at least 3, or it is 2 and u is set.
// All steps are plain logic on bytes, which the compiler turns into the vector instructions of the processor.

#include "Includes/OrientationLabel.h"

#include "Includes/MatcherError.h"

namespace line2Dup {

namespace {

/// The two-bit sum of three bits, for eight counters at once.
struct BitSum {
    unsigned ones;
    unsigned twos;
};

inline BitSum addBits(unsigned a, unsigned b, unsigned c) {
    const unsigned difference = a ^ b;
    return {difference ^ c, (a & b) | (difference & c)};
}

}  // namespace

int getLabel(int oneHot) {
    for (int label = 0; label < labelCount; ++label) {
        if (oneHot == oneHotOf(label)) return label;
    }
    raiseBadArgument("Invalid value of quantized parameter", "line2Dup::getLabel");
}

void majorityOfNine(const uchar* above, const uchar* here, const uchar* below, uchar* winners, int width) {
    for (int x = 1; x < width - 1; ++x) {
        const BitSum left = addBits(above[x - 1], here[x - 1], below[x - 1]);
        const BitSum middle = addBits(above[x], here[x], below[x]);
        const BitSum right = addBits(above[x + 1], here[x + 1], below[x + 1]);
        const BitSum singles = addBits(left.ones, middle.ones, right.ones);
        const BitSum pairs = addBits(left.twos, middle.twos, right.twos);
        const unsigned atLeastThree = pairs.twos & (pairs.ones | singles.twos);
        const unsigned atLeastTwo = pairs.twos | (pairs.ones & singles.twos);
        winners[x] = static_cast<uchar>(atLeastThree | (atLeastTwo & singles.ones));
    }
}

}  // namespace line2Dup
