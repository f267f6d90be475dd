#include "spectrum/averaging.h"

#include <cmath>

namespace quarvelo::spectrum {

void BeginAveragingPass(Spectrum& spectrum, std::int32_t pass, int channel, double sample_rate) {
  spectrum.AverageSlot = static_cast<std::int16_t>(pass);
  const std::int32_t n = spectrum.TransformLength;
  LastRun& last = spectrum.Last;
  if (last.valid && last.channel == channel && last.sample_rate == sample_rate &&
      last.transform_length == n) {
    return;
  }
  spectrum.FirstPoint = 1;
  spectrum.LastPoint = static_cast<std::int32_t>(std::nearbyint(n / 2.0 + 1));
  spectrum.QuarterPoint = static_cast<std::int32_t>(std::nearbyint(n / 4.0));
  last.valid = true;
  last.channel = channel;
  last.sample_rate = sample_rate;
  last.algorithm = spectrum.Algorithm;
  last.transform_length = n;
}

}  // namespace quarvelo::spectrum
