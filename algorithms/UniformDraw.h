#pragma once

#include <cstdint>
#include <random>

namespace Quorvane {

/// The 32-bit Mersenne Twister with its standard parameters: the outputs of `std::mt19937`, with a state of 32-bit
/// words where some standard libraries keep it in 64-bit ones, which compilers then cannot renew four words at a time.
/// (Matsumoto and Nishimura, "Mersenne Twister", 1998.)
using MersenneTwister = std::mersenne_twister_engine<std::uint32_t, 32, 624, 397, 31, 0x9908b0dfU, 11, 0xffffffffU, 7,
                                                     0x9d2c5680U, 15, 0xefc60000U, 18, 1812433253U>;

/// Uniform in 0 to 1, from two outputs of the generator: the first counts least, the second is worth 2^32 times as
/// much.
template <typename Generator>
double DrawUniform(Generator& generator) {
    constexpr double twoTo32 = 4294967296.0;
    const auto first = static_cast<double>(generator());
    const auto second = static_cast<double>(generator());
    return (first + second * twoTo32) / (twoTo32 * twoTo32);
}

}  // namespace Quorvane
