// A small seeded generator of Gaussian noise: the same seed gives the same acquisition, so a
// stopped instrument answers the same data twice and tests are repeatable.
#ifndef QUARVELO_SIM_SIGNAL_NOISE_SOURCE_H_
#define QUARVELO_SIM_SIGNAL_NOISE_SOURCE_H_

#include <cmath>
#include <cstdint>

namespace quarvelo::sim {

class NoiseSource {
 public:
  explicit NoiseSource(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15ull + 1) {}

  // Uniform in (0, 1).
  double Uniform() {
    state_ ^= state_ >> 12;
    state_ ^= state_ << 25;
    state_ ^= state_ >> 27;
    std::uint64_t bits = (state_ * 0x2545F4914F6CDD1Dull) >> 11;
    return (static_cast<double>(bits) + 0.5) * (1.0 / 9007199254740992.0);
  }

  // Standard normal (Box-Muller, both outputs used).
  double Gaussian() {
    if (has_spare_) {
      has_spare_ = false;
      return spare_;
    }
    double radius = std::sqrt(-2.0 * std::log(Uniform()));
    double angle = 6.283185307179586 * Uniform();
    spare_ = radius * std::sin(angle);
    has_spare_ = true;
    return radius * std::cos(angle);
  }

 private:
  std::uint64_t state_;
  double spare_ = 0;
  bool has_spare_ = false;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SIGNAL_NOISE_SOURCE_H_
