// The spectrum state the computation fills and the spectrum view draws, and the settings the
// computation reads.
#ifndef QUARVELO_SPECTRUM_SPECTRUM_H_
#define QUARVELO_SPECTRUM_SPECTRUM_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quarvelo::spectrum {

// `SpectrumUnit` codes.
inline constexpr int kUnitDbv = 0;
inline constexpr int kUnitDbm = 1;
inline constexpr int kUnitVoltsRms = 2;

// `Algorithm` codes.
inline constexpr int kObjectFft = 1;
inline constexpr int kModuleFft = 2;
inline constexpr int kDft = 3;

// The settings of section "FFT" the computation reads, and the upper frequency limit of the
// ribbon (button `ssrBW`, entry box `txtMHz` index 2). The caller copies them from the
// program's settings and controls.
struct FftSettings {
  std::int16_t WindowIndex = 6;
  std::int32_t AverageCount = 1;
  std::int16_t SpectrumUnit = kUnitDbv;
  std::int16_t AutoAlgorithm = 0;
  std::int16_t Algorithm = kModuleFft;
  bool UpperLimitOn = false;
  std::string UpperLimitText;  // MHz, read leniently
};

// Levels of every spectrum point in every averaging pass. Points 0..points-1, passes
// 0..passes-1 (pass 0 unused, as the passes count from 1). Each pass is contiguous.
class SpectrumHistory {
 public:
  SpectrumHistory() = default;
  SpectrumHistory(const SpectrumHistory& other);
  SpectrumHistory& operator=(const SpectrumHistory& other);

  // All levels zero. Memory of a previous run of the same or a larger size is reused.
  void Reset(std::int32_t points, std::int32_t passes);
  std::int32_t points() const { return points_; }
  std::int32_t passes() const { return passes_; }
  bool Contains(std::int32_t point, std::int32_t pass) const {
    return point >= 0 && point < points_ && pass >= 0 && pass < passes_;
  }
  double At(std::int32_t point, std::int32_t pass) const {
    return cleared_[pass] ? levels_[static_cast<std::size_t>(pass) * points_ + point] : 0.0;
  }
  void Set(std::int32_t point, std::int32_t pass, double level);
  // The levels of one pass, for writing; `pass` must be valid.
  double* Pass(std::int32_t pass);
  // means[i] = (sum of passes 1..pass of point i) / pass, for points first..last, summed in
  // pass order. An averaging run that fills its passes in order adds one pass per call
  // instead of summing them all again; the result is the same.
  void Means(std::int32_t pass, std::int32_t first, std::int32_t last, double* means);
  // Means in two halves, for a caller that adds the levels of points first..last of `pass`
  // to the sums itself, in the sweep that computes them: SumsBefore returns the sums of
  // passes 1..pass-1 (summed again when out of date); AddedToSums then adds the pass's other
  // points. Together they leave the sums as Means does, with the same additions.
  double* SumsBefore(std::int32_t pass);
  void AddedToSums(std::int32_t pass, std::int32_t first, std::int32_t last);

 private:
  void Invalidate(std::int32_t pass);
  // Zeroes a pass on its first use after a reset: a run of 16 passes over 2^18 points would
  // otherwise clear 35 MB before its first pass.
  void Clear(std::int32_t pass);

  std::int32_t points_ = 0;
  std::int32_t passes_ = 0;
  // Not zeroed on allocation: a pass is zeroed on its first use (`Clear`), so a run that
  // makes 16 passes' room touches only the passes it reaches, and the first pass does not
  // wait for the system to supply and zero all of it. Nothing reads a pass before that.
  std::unique_ptr<double[]> levels_;
  std::size_t capacity_ = 0;        // doubles allocated in levels_
  std::vector<char> cleared_;       // per pass: its levels have been zeroed since the reset
  std::vector<double> sums_;        // per point, the sum of passes 1..summed_passes_
  std::int32_t summed_passes_ = 0;  // -1: the sums are out of date
};

// What the averaging driver remembers of the run before, to keep the shown range.
struct LastRun {
  bool valid = false;
  std::int32_t channel = 0;
  double sample_rate = 0;
  std::int16_t algorithm = 0;
  std::int32_t transform_length = 0;
};

struct Spectrum {
  std::int16_t SpectrumChannel = 1;
  // N; while the oscilloscope view is shown, its last sample index.
  std::int32_t TransformLength = 0;
  bool ZeroPadded = false;
  std::int16_t Algorithm = kModuleFft;  // the algorithm the plan chose
  double FrequencyResolution = 0;       // Hz
  std::vector<double> WindowWeights;    // 0..N
  // Points 1..round(N/2 + 1) of passes 1..AverageCount (only the points a spectrum has).
  SpectrumHistory History;
  std::vector<double> SpectrumLevel;      // 0..N, the mean of the passes so far
  std::vector<double> SpectrumFrequency;  // 0..N, Hz
  std::int16_t AverageSlot = 1;
  double LevelTop = 0;
  double LevelBottom = 0;
  // Shown points of the spectrum, or shown samples of the oscilloscope view.
  std::int32_t FirstPoint = 0;
  std::int32_t LastPoint = 0;
  double StartFrequency = 0;
  double StopFrequency = 0;
  bool SpectrumReady = false;
  bool SpectrumBusy = false;
  std::int32_t QuarterPoint = 0;
  LastRun Last;
  bool MixedDomain = false;  // the last spectrum came from MDISpectrum
  bool MdiBusy = false;
};

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_SPECTRUM_H_
