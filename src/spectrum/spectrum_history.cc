#include <algorithm>

#include "spectrum/spectrum.h"

namespace quarvelo::spectrum {

void SpectrumHistory::Reset(std::int32_t points, std::int32_t passes) {
  points_ = std::max(points, 0);
  passes_ = std::max(passes, 0);
  levels_.resize(static_cast<std::size_t>(points_) * static_cast<std::size_t>(passes_));
  cleared_.assign(static_cast<std::size_t>(passes_), 0);
  sums_.assign(static_cast<std::size_t>(points_), 0.0);
  summed_passes_ = 0;
}

void SpectrumHistory::Invalidate(std::int32_t pass) {
  // A pass already in the sums changed: they are rebuilt at the next mean.
  if (pass <= summed_passes_) summed_passes_ = -1;
}

void SpectrumHistory::Clear(std::int32_t pass) {
  if (cleared_[pass]) return;
  const auto begin = levels_.begin() + static_cast<std::ptrdiff_t>(pass) * points_;
  std::fill(begin, begin + points_, 0.0);
  cleared_[pass] = 1;
}

void SpectrumHistory::Set(std::int32_t point, std::int32_t pass, double level) {
  Invalidate(pass);
  Clear(pass);
  levels_[static_cast<std::size_t>(pass) * points_ + point] = level;
}

double* SpectrumHistory::Pass(std::int32_t pass) {
  Invalidate(pass);
  Clear(pass);
  return levels_.data() + static_cast<std::size_t>(pass) * points_;
}

void SpectrumHistory::Means(std::int32_t pass, std::int32_t first, std::int32_t last,
                            double* means) {
  if (summed_passes_ < 0 || pass != summed_passes_ + 1) {
    // Passes out of order: sum again from pass 1.
    std::fill(sums_.begin(), sums_.end(), 0.0);
    for (std::int32_t k = 1; k < pass; ++k) {
      Clear(k);
      const double* levels = levels_.data() + static_cast<std::size_t>(k) * points_;
      for (std::int32_t i = 0; i < points_; ++i) sums_[i] += levels[i];
    }
  }
  Clear(pass);
  const double* levels = levels_.data() + static_cast<std::size_t>(pass) * points_;
  double* sums = sums_.data();
  for (std::int32_t i = 0; i < points_; ++i) sums[i] += levels[i];
  summed_passes_ = pass;
  const double count = pass;
  for (std::int32_t i = first; i <= last; ++i) means[i] = sums[i] / count;
}

}  // namespace quarvelo::spectrum
