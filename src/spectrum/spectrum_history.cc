#include <algorithm>
#include <memory>
#include <utility>

#include "spectrum/fresh_memory.h"
#include "spectrum/spectrum.h"

namespace quarvelo::spectrum {

SpectrumHistory::SpectrumHistory(const SpectrumHistory& other)
    : points_(other.points_),
      passes_(other.passes_),
      cleared_(other.cleared_),
      sums_(other.sums_),
      summed_passes_(other.summed_passes_) {
  const std::size_t size = static_cast<std::size_t>(points_) * static_cast<std::size_t>(passes_);
  if (size == 0) return;
  levels_ = std::make_unique_for_overwrite<double[]>(size);
  capacity_ = size;
  // Only the passes in use hold levels; the others are zeroed when first used.
  for (std::int32_t pass = 0; pass < passes_; ++pass) {
    if (!cleared_[pass]) continue;
    const std::size_t begin = static_cast<std::size_t>(pass) * points_;
    std::copy(other.levels_.get() + begin, other.levels_.get() + begin + points_,
              levels_.get() + begin);
  }
}

SpectrumHistory& SpectrumHistory::operator=(const SpectrumHistory& other) {
  if (this == &other) return *this;
  SpectrumHistory copy(other);
  points_ = copy.points_;
  passes_ = copy.passes_;
  levels_ = std::move(copy.levels_);
  capacity_ = copy.capacity_;
  cleared_ = std::move(copy.cleared_);
  sums_ = std::move(copy.sums_);
  summed_passes_ = copy.summed_passes_;
  return *this;
}

void SpectrumHistory::Reset(std::int32_t points, std::int32_t passes) {
  points_ = std::max(points, 0);
  passes_ = std::max(passes, 0);
  const std::size_t size = static_cast<std::size_t>(points_) * static_cast<std::size_t>(passes_);
  if (size > capacity_) {
    levels_ = std::make_unique_for_overwrite<double[]>(size);
    capacity_ = size;
    // Large pages, but no pages yet: the passes are written one by one.
    internal::AdviseFreshMemory(levels_.get(), size * sizeof(double), false);
  }
  cleared_.assign(static_cast<std::size_t>(passes_), 0);
  internal::AssignFresh(sums_, static_cast<std::size_t>(points_), 0.0);
  summed_passes_ = 0;
}

void SpectrumHistory::Invalidate(std::int32_t pass) {
  // A pass already in the sums changed: they are rebuilt at the next mean.
  if (pass <= summed_passes_) summed_passes_ = -1;
}

void SpectrumHistory::Clear(std::int32_t pass) {
  if (cleared_[pass]) return;
  double* begin = levels_.get() + static_cast<std::size_t>(pass) * points_;
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
  return levels_.get() + static_cast<std::size_t>(pass) * points_;
}

double* SpectrumHistory::SumsBefore(std::int32_t pass) {
  if (summed_passes_ < 0 || pass != summed_passes_ + 1) {
    // Passes out of order: sum again from pass 1.
    std::fill(sums_.begin(), sums_.end(), 0.0);
    for (std::int32_t k = 1; k < pass; ++k) {
      Clear(k);
      const double* levels = levels_.get() + static_cast<std::size_t>(k) * points_;
      for (std::int32_t i = 0; i < points_; ++i) sums_[i] += levels[i];
    }
    summed_passes_ = pass - 1;
  }
  return sums_.data();
}

void SpectrumHistory::AddedToSums(std::int32_t pass, std::int32_t first, std::int32_t last) {
  Clear(pass);
  const double* levels = levels_.get() + static_cast<std::size_t>(pass) * points_;
  double* sums = sums_.data();
  const std::int32_t below = std::clamp(first, 0, points_);
  const std::int32_t above = std::clamp(last + 1, below, points_);
  for (std::int32_t i = 0; i < below; ++i) sums[i] += levels[i];
  for (std::int32_t i = above; i < points_; ++i) sums[i] += levels[i];
  summed_passes_ = pass;
}

void SpectrumHistory::Means(std::int32_t pass, std::int32_t first, std::int32_t last,
                            double* means) {
  double* sums = SumsBefore(pass);
  Clear(pass);
  const double* levels = levels_.get() + static_cast<std::size_t>(pass) * points_;
  for (std::int32_t i = 0; i < points_; ++i) sums[i] += levels[i];
  summed_passes_ = pass;
  const double count = pass;
  for (std::int32_t i = first; i <= last; ++i) means[i] = sums[i] / count;
}

}  // namespace quarvelo::spectrum
