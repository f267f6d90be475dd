#include "acquisition/waveform_record.h"

namespace quarvelo::acquisition {

bool SampleStorage::Grow(std::int32_t samples) {
  if (samples <= capacity_) return false;
  const auto size = static_cast<std::size_t>(samples);
  // Slot 0 never holds a channel, so it gets no samples.
  for (int ch = 1; ch < kWaveformSlots; ++ch) {
    raw_[ch].resize(size);
    time_[ch].resize(size);
    volts_[ch].resize(size);
    // The spectrum's work arrays hold nothing worth keeping across a resize.
    work_a_[ch].assign(size, 0);
    work_b_[ch].assign(size, 0);
  }
  capacity_ = samples;
  ++generation_;
  return true;
}

}  // namespace quarvelo::acquisition
