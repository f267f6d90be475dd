// From a captured channel to the drawn spectrum: planning the transform length and engine,
// one averaging pass of the windowed, scaled, averaged spectrum, and the mixed-domain
// spectrum of the samples the oscilloscope view shows.
#ifndef QUARVELO_SPECTRUM_SPECTRUM_ANALYZER_H_
#define QUARVELO_SPECTRUM_SPECTRUM_ANALYZER_H_

#include <cstdint>
#include <optional>
#include <string>

#include "platform/ui/ui_services.h"
#include "spectrum/cls_fourier.h"
#include "spectrum/fft_orlen.h"
#include "spectrum/fourier_workspace.h"
#include "spectrum/spectrum.h"
#include "spectrum/spectrum_host.h"

namespace quarvelo::spectrum {

// The two lines of the acquisition box ("FFT:500 pts", "RES 1.001MHz").
struct PlanLines {
  std::string first;
  std::string second;
};

// The automatic choice keeps the O(N^2) DFT below this many averages x N^2 ...
inline constexpr double kAutoDftWorkLimit = 2.5e8;
// ... and a manual choice of the DFT is overridden above this.
inline constexpr double kDftWorkLimit = 1e9;
// Records of this many samples or more are cut to 2^19 instead of padded.
inline constexpr int kLargestPaddingExponent = 19;

class SpectrumAnalyzer {
 public:
  // Borrows the records and services for its lifetime; `stop_requested` is the main window's
  // `StopRequested` flag, set by the "Stop averaging" button while events run.
  SpectrumAnalyzer(Spectrum& spectrum, FourierWorkspace& workspace, clsFourier& fourier,
                   SampleStore& samples, SpectrumHost& host, ui::UiServices& ui,
                   const bool& stop_requested, double two_pi = kProgramTwoPi);
  SpectrumAnalyzer(const SpectrumAnalyzer&) = delete;
  SpectrumAnalyzer& operator=(const SpectrumAnalyzer&) = delete;

  // Sets TransformLength, ZeroPadded, Algorithm and FrequencyResolution for the record of
  // `channel`, zero-padding its storage up to the next power of two for the FFTs. With
  // `oscilloscope_only` only the first line "OSC: <count> pts" is made. A record too short to
  // transform shows "Analyse error", leaves TransformLength 0 and returns nothing.
  std::optional<PlanLines> PlanTransform(int channel, bool oscilloscope_only,
                                         const FftSettings& settings);

  // 1 object FFT, 2 module FFT or 3 DFT for a transform of n points.
  int ChooseAlgorithm(std::int32_t n, const FftSettings& settings);

  // One averaging pass (`AverageSlot`) over samples offset+1 .. offset+N of `channel`;
  // draws the result. Does nothing while minimised or already computing.
  void ComputeSpectrum(int channel, std::int32_t offset, const FftSettings& settings);

  // The spectrum of samples start .. stop of the reference channel, when `ID_MDI` is checked.
  void MDISpectrum(std::int32_t start, std::int32_t stop, const FftSettings& settings);

 private:
  void BuildWindow(int channel, const FftSettings& settings);
  // The module FFT of a record that holds every input, windowed as it is read, into the
  // workspace's pass bins; false when the general path must run instead.
  bool TransformWindowedRecord(int channel, std::int32_t offset);
  void PrepareEngine();
  void FillInput(int channel, std::int32_t offset);
  void RunEngine();
  void ApplyUpperLimit(const FftSettings& settings, double half_rate);
  void ComputeLevels(const FftSettings& settings, double half_rate);
  // Writes this pass's level of points 1..last into the history, and the mean of the passes
  // so far into SpectrumLevel; averaging happens in the displayed unit (dB averaged as dB).
  void StorePassLevels(const FftSettings& settings, std::int32_t last);
  void SetVerticalRange(int channel, const FftSettings& settings);
  std::optional<double> PointMagnitude(std::int32_t point);
  // Grows the channel's storage to index 2^exponent and zeroes it from the record's end.
  void PadWithZeros(int channel, std::int32_t count, int exponent);

  Spectrum& spectrum_;
  FourierWorkspace& workspace_;
  clsFourier& fourier_;
  SampleStore& samples_;
  SpectrumHost& host_;
  ui::UiServices& ui_;
  const bool& stop_requested_;
  double two_pi_;
  // This pass's module bins are the workspace's pass bins, not its transform outputs.
  bool bins_from_pass_ = false;
};

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_SPECTRUM_ANALYZER_H_
