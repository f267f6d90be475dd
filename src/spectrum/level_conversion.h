// Levels of the module engines' bins in the display units, in one vectorisable sweep.
#ifndef QUARVELO_SPECTRUM_LEVEL_CONVERSION_H_
#define QUARVELO_SPECTRUM_LEVEL_CONVERSION_H_

#include <cstdint>

namespace quarvelo::spectrum::internal {

// The natural logarithm of a positive x (subnormals included) within two units in the last
// place of the library's, written so that a loop of it vectorises. 0 gives -inf, +inf gives
// +inf.
double NaturalLog(double x);

// For i = first..last: v = |re[i] + j im[i]| * to_rms, then levels[i] = v (volts RMS unit),
// 20 log10 v (dBV) or 10 log10(v^2 / 50 / 0.001) (dBm). A logarithmic level of a v that is
// zero or not finite keeps the value levels[i] holds.
void StoreLevels(const double* re, const double* im, std::int32_t first, std::int32_t last,
                 double to_rms, int unit, double* levels);

// StoreLevels, and for the same points sums[i] += levels[i] and means[i] = sums[i] / count
// in the same sweep.
void StoreLevelsAndMeans(const double* re, const double* im, std::int32_t first, std::int32_t last,
                         double to_rms, int unit, double* levels, double* sums, double count,
                         double* means);

}  // namespace quarvelo::spectrum::internal

#endif  // QUARVELO_SPECTRUM_LEVEL_CONVERSION_H_
