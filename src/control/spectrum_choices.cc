#include "control/spectrum_choices.h"

#include <bit>

#include "platform/text/number_text.h"

namespace quarvelo::control {

int AverageExponent(const SpectrumChoices& choices) {
  if (choices.AverageCount <= 1) return 0;
  const int exponent = std::bit_width(static_cast<unsigned>(choices.AverageCount)) - 1;
  return exponent > kMaxAverageExponent ? kMaxAverageExponent : exponent;
}

spectrum::FftSettings FftSettingsOf(const SpectrumChoices& choices) {
  spectrum::FftSettings settings;
  settings.WindowIndex = static_cast<std::int16_t>(choices.WindowIndex);
  settings.AverageCount = choices.AverageCount;
  settings.SpectrumUnit = static_cast<std::int16_t>(choices.SpectrumUnit);
  settings.AutoAlgorithm = choices.AutoAlgorithm ? 1 : 0;
  settings.Algorithm = static_cast<std::int16_t>(choices.Algorithm);
  settings.UpperLimitOn = choices.BandwidthLimitOn;
  settings.UpperLimitText = text::NumberText(choices.UpperLimitMhz);
  return settings;
}

}  // namespace quarvelo::control
