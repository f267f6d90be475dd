// The bookkeeping of an averaging run (the run's capture loop is the main window's).
#ifndef QUARVELO_SPECTRUM_AVERAGING_H_
#define QUARVELO_SPECTRUM_AVERAGING_H_

#include <cstdint>

#include "spectrum/spectrum.h"

namespace quarvelo::spectrum {

// Before pass `pass` (1..AverageCount) of `channel`: makes it the current averaging slot and,
// unless channel, sample rate (kSa/s) and TransformLength equal those of the run before,
// shows the whole spectrum (FirstPoint 1, LastPoint round(N/2 + 1), quarter point
// round(N/4)) and remembers them. The shown range of a repeated run (a zoom) is kept.
void BeginAveragingPass(Spectrum& spectrum, std::int32_t pass, int channel, double sample_rate);

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_AVERAGING_H_
