// Captured channels: one record per channel number 1..4 (slot 0 holds nothing), the values
// the most recent capture shares across channels, and the sample storage, which only grows.
#ifndef QUARVELO_ACQUISITION_WAVEFORM_RECORD_H_
#define QUARVELO_ACQUISITION_WAVEFORM_RECORD_H_

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace quarvelo::acquisition {

inline constexpr int kWaveformSlots = 5;  // channels 0..4, 0 unused

struct WaveformRecord {
  std::int32_t PreambleCount = 0;  // values read from ":WAVeform:PREamble?"
  std::int32_t Points = 0;         // ":WAVeform:POINts? MAX", then preamble value 3
  double XIncrement = 0;           // seconds per sample
  double XOrigin = 0;              // seconds
  double YOrigin = 0;              // volts
  std::int32_t YReference = 0;     // code
  std::int32_t ByteCount = 0;      // bytes of the ":WAVeform:DATA?" block
};

// Values of the most recent capture, whatever its channel.
struct WaveformShared {
  std::int16_t Format = 0;
  std::int16_t Type = 0;
  std::int32_t Count = 0;
  std::int32_t XReference = 0;
  double YIncrement = 0;
  std::int32_t LastIndex = -1;  // ByteCount - 1
  double SampleRateK = 0;       // kilosamples per second
};

// Raw codes, times and volts per channel, indexes 0..capacity()-1. Samples beyond a channel's
// ByteCount are stale.
class SampleStorage {
 public:
  // Grows every channel to `samples` keeping the contents, and re-creates the two integer work
  // arrays of the spectrum computation; does nothing when the storage is already as large.
  // Returns true when it grew.
  bool Grow(std::int32_t samples);
  std::int32_t capacity() const { return capacity_; }
  // Times the storage was enlarged, for callers that cache views into it.
  int generation() const { return generation_; }

  std::span<double> Raw(int channel) { return Row(raw_, channel); }
  std::span<double> Time(int channel) { return Row(time_, channel); }
  std::span<double> Volts(int channel) { return Row(volts_, channel); }
  std::span<const double> Raw(int channel) const { return Row(raw_, channel); }
  std::span<const double> Time(int channel) const { return Row(time_, channel); }
  std::span<const double> Volts(int channel) const { return Row(volts_, channel); }
  std::span<std::int32_t> SpectrumWork(int which, int channel) {
    return Row(which == 0 ? work_a_ : work_b_, channel);
  }

 private:
  template <typename T>
  static std::span<T> Row(std::array<std::vector<T>, kWaveformSlots>& rows, int channel) {
    if (channel < 0 || channel >= kWaveformSlots) return {};
    return rows[channel];
  }
  template <typename T>
  static std::span<const T> Row(const std::array<std::vector<T>, kWaveformSlots>& rows,
                                int channel) {
    if (channel < 0 || channel >= kWaveformSlots) return {};
    return rows[channel];
  }

  std::int32_t capacity_ = 0;
  int generation_ = 0;
  std::array<std::vector<double>, kWaveformSlots> raw_;
  std::array<std::vector<double>, kWaveformSlots> time_;
  std::array<std::vector<double>, kWaveformSlots> volts_;
  std::array<std::vector<std::int32_t>, kWaveformSlots> work_a_;
  std::array<std::vector<std::int32_t>, kWaveformSlots> work_b_;
};

// The five record slots with their storage; owned by the main window.
struct WaveformRecords {
  std::array<WaveformRecord, kWaveformSlots> Records;
  WaveformShared Shared;
  SampleStorage Samples;
};

}  // namespace quarvelo::acquisition

#endif  // QUARVELO_ACQUISITION_WAVEFORM_RECORD_H_
