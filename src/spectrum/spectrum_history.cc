#include "spectrum/spectrum.h"

namespace quarvelo::spectrum {

void SpectrumHistory::Reset(std::int32_t points, std::int32_t passes) {
  points_ = points < 0 ? 0 : points;
  passes_ = passes < 0 ? 0 : passes;
  levels_.assign(static_cast<std::size_t>(points_) * static_cast<std::size_t>(passes_), 0.0);
}

}  // namespace quarvelo::spectrum
