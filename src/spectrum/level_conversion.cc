#include "spectrum/level_conversion.h"

#include <bit>
#include <cmath>
#include <limits>
#include <numbers>

#include "spectrum/spectrum.h"

// The level loop is compiled for AVX2 as well as the baseline and picked at load time.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define QUARVELO_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define QUARVELO_VECTOR_CLONES
#endif

namespace quarvelo::spectrum::internal {
namespace {

constexpr double kLn2High = 6.93147180369123816490e-01;  // ln 2 with its last 32 bits zero
constexpr double kLn2Low = 1.90821492927058770002e-10;
constexpr double kSmallest = std::numeric_limits<double>::min();

// ln x = e ln 2 + ln m with x = 2^e m, m in [sqrt(1/2), sqrt(2)); ln m = 2 atanh s with
// s = (m - 1) / (m + 1), |s| < 0.172, by its series up to s^21 (the next term is below
// 1e-18 of the sum). Only arithmetic and selects: the library call would keep the level
// loop scalar, and cost it three quarters of its time.
inline double LogOfPositive(double x) {
  const bool subnormal = x < kSmallest;
  const double scaled = subnormal ? x * 0x1p54 : x;
  const auto bits = std::bit_cast<std::uint64_t>(scaled);
  // The exponent field as a double without an integer conversion, which has no vector form
  // before AVX-512: the field in the low bits of 2^52, minus 2^52.
  const double field = std::bit_cast<double>((bits >> 52) | 0x4330000000000000ull) - 0x1p52;
  double exponent = field - (subnormal ? 1023 + 54 : 1023);
  double m = std::bit_cast<double>((bits & 0x000FFFFFFFFFFFFFull) | 0x3FF0000000000000ull);
  const bool high = m > std::numbers::sqrt2;
  m = high ? m * 0.5 : m;
  exponent = high ? exponent + 1 : exponent;
  const double s = (m - 1) / (m + 1);
  const double s2 = s * s;
  double series = 1.0 / 21;
  series = 1.0 / 19 + s2 * series;
  series = 1.0 / 17 + s2 * series;
  series = 1.0 / 15 + s2 * series;
  series = 1.0 / 13 + s2 * series;
  series = 1.0 / 11 + s2 * series;
  series = 1.0 / 9 + s2 * series;
  series = 1.0 / 7 + s2 * series;
  series = 1.0 / 5 + s2 * series;
  series = 1.0 / 3 + s2 * series;
  const double log_m = 2 * s + 2 * s * (s2 * series);
  return exponent * kLn2High + (log_m + exponent * kLn2Low);
}

inline double Log10(double x) { return LogOfPositive(x) * (1 / std::numbers::ln10); }

inline bool PositiveFinite(double v) { return v > 0 && v <= std::numeric_limits<double>::max(); }

// The level of one bin of RMS volts v in each unit; `kept` where a logarithm has no value.
struct DbvLevel {
  double operator()(double v, double kept) const {
    const double level = 20 * Log10(v);
    return PositiveFinite(v) ? level : kept;
  }
};

struct DbmLevel {
  double operator()(double v, double kept) const {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double power = (v * v / 50) / 0.001;
    // v^2 may underflow to zero or overflow where v did not: the logarithm's own limits.
    double level = 10 * Log10(power);
    level = power == 0 ? -kInfinity : level;
    level = power > std::numeric_limits<double>::max() ? kInfinity : level;
    return PositiveFinite(v) ? level : kept;
  }
};

struct VoltsLevel {
  double operator()(double v, double) const { return v; }
};

// The levels of bins first..last and, with kMeans, their running sums and means in the same
// sweep, so that the levels are not read back from memory.
template <typename Level, bool kMeans>
[[gnu::always_inline]] inline void Sweep(const double* __restrict re, const double* __restrict im,
                                         std::int32_t first, std::int32_t last, double to_rms,
                                         double* __restrict levels, double* __restrict sums,
                                         double count, double* __restrict means) {
  const Level level_of;
  for (std::int32_t i = first; i <= last; ++i) {
    const double v = std::sqrt(re[i] * re[i] + im[i] * im[i]) * to_rms;
    const double level = level_of(v, levels[i]);
    levels[i] = level;
    if constexpr (kMeans) {
      const double sum = sums[i] + level;
      sums[i] = sum;
      means[i] = sum / count;
    }
  }
}

#define QUARVELO_LEVEL_SWEEP(name, level, means)                                           \
  QUARVELO_VECTOR_CLONES                                                                   \
  void name(const double* re, const double* im, std::int32_t first, std::int32_t last,     \
            double to_rms, double* levels, double* sums, double count, double* mean_out) { \
    Sweep<level, means>(re, im, first, last, to_rms, levels, sums, count, mean_out);       \
  }

QUARVELO_LEVEL_SWEEP(StoreDbv, DbvLevel, false)
QUARVELO_LEVEL_SWEEP(StoreDbm, DbmLevel, false)
QUARVELO_LEVEL_SWEEP(StoreVolts, VoltsLevel, false)
QUARVELO_LEVEL_SWEEP(StoreDbvMeans, DbvLevel, true)
QUARVELO_LEVEL_SWEEP(StoreDbmMeans, DbmLevel, true)
QUARVELO_LEVEL_SWEEP(StoreVoltsMeans, VoltsLevel, true)
#undef QUARVELO_LEVEL_SWEEP

}  // namespace

double NaturalLog(double x) {
  if (x == 0) return -std::numeric_limits<double>::infinity();
  if (x > std::numeric_limits<double>::max()) return x;
  return LogOfPositive(x);
}

void StoreLevels(const double* re, const double* im, std::int32_t first, std::int32_t last,
                 double to_rms, int unit, double* levels) {
  if (unit == kUnitVoltsRms) StoreVolts(re, im, first, last, to_rms, levels, nullptr, 1, nullptr);
  if (unit == kUnitDbv) StoreDbv(re, im, first, last, to_rms, levels, nullptr, 1, nullptr);
  if (unit == kUnitDbm) StoreDbm(re, im, first, last, to_rms, levels, nullptr, 1, nullptr);
}

void StoreLevelsAndMeans(const double* re, const double* im, std::int32_t first, std::int32_t last,
                         double to_rms, int unit, double* levels, double* sums, double count,
                         double* means) {
  if (unit == kUnitVoltsRms) {
    StoreVoltsMeans(re, im, first, last, to_rms, levels, sums, count, means);
  } else if (unit == kUnitDbv) {
    StoreDbvMeans(re, im, first, last, to_rms, levels, sums, count, means);
  } else if (unit == kUnitDbm) {
    StoreDbmMeans(re, im, first, last, to_rms, levels, sums, count, means);
  } else {
    // No unit makes a level: the pass keeps what it holds, and still counts.
    for (std::int32_t i = first; i <= last; ++i) {
      sums[i] += levels[i];
      means[i] = sums[i] / count;
    }
  }
}

}  // namespace quarvelo::spectrum::internal
