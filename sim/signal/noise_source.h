// A small seeded generator of noise: the same seed gives the same acquisition, so a
// stopped instrument answers the same data twice and tests are repeatable.
#ifndef QUARVELO_SIM_SIGNAL_NOISE_SOURCE_H_
#define QUARVELO_SIM_SIGNAL_NOISE_SOURCE_H_

#include <cstdint>

namespace quarvelo::sim {

class NoiseSource {
 public:
  explicit NoiseSource(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15ull + 1) {}

  // Uniform in (0, 1).
  double Uniform() {
    return (static_cast<double>(Next() >> 11) + 0.5) * (1.0 / 9007199254740992.0);
  }

  // Zero mean, unit variance, close to normal: the sum of four 16-bit uniforms (one generator
  // step per sample, a tenth of the cost of Box-Muller), bounded at about 3.5 sigma, which is
  // all a simulated noise floor needs.
  double Normal() {
    std::uint64_t bits = Next();
    double sum = static_cast<double>((bits & 0xFFFF) + ((bits >> 16) & 0xFFFF) +
                                     ((bits >> 32) & 0xFFFF) + (bits >> 48));
    constexpr double kScale = 1.7320508075688772 / 65536.0;  // sqrt(3) / 2^16
    return (sum - 2.0 * 65535.0) * kScale;
  }

 private:
  std::uint64_t Next() {
    state_ ^= state_ >> 12;
    state_ ^= state_ << 25;
    state_ ^= state_ >> 27;
    return state_ * 0x2545F4914F6CDD1Dull;
  }

  std::uint64_t state_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SIGNAL_NOISE_SOURCE_H_
