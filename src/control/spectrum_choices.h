// The user's spectrum choices: one record, owned by the main window (it is the base of
// `AppSettings`, loaded at start-up and saved at shutdown). The combo dispatcher writes it;
// the toolbar rebuild selects the combos from it; the capture reads `BinsIndex`; the sweep,
// the FFT run and the screen read the rest. Nothing keeps a copy: the spectrum computation's
// `spectrum::FftSettings` is made from this record at each use with `FftSettingsOf`.
#ifndef QUARVELO_CONTROL_SPECTRUM_CHOICES_H_
#define QUARVELO_CONTROL_SPECTRUM_CHOICES_H_

#include "spectrum/spectrum.h"

namespace quarvelo::control {

inline constexpr int kMaxAverageExponent = 4;  // ID_AVG lists 2^0 .. 2^4
inline constexpr int kBinsCount = 12;          // ID_Bins lists 256 .. 524288

struct SpectrumChoices {
  // "ID_Bins": the capture asks for 256 * 2^BinsIndex points. Not persisted; the list shows
  // "65536" when the program starts.
  int BinsIndex = 8;
  int SpectrumUnit = 0;        // "ID_Scale", "FFT" "SCALE": 0 dBV, 1 dBm, 2 V RMS
  int WindowIndex = 6;         // "ID_Window", "FFT" "Window": 6 = Hanning
  int AverageCount = 1;        // "ID_AVG": 1, 2, 4, 8 or 16; "FFT" "AVG" keeps its exponent
  int Algorithm = 2;           // "FFT" "Algo": 1 "FFT A", 2 "FFT", 3 "DFT (VY SLOW !)"; 0 for junk
  bool AutoAlgorithm = false;  // "FFT" "Auto"
  double UpperLimitMhz = 200;  // "FFT" "BWL": the upper-limit entry box beside `ssrBW`
  bool BandwidthLimitOn = false;  // "FFT" "BW": `ssrBW` is down
  // Tool ID_MDI: the spectrum pane is shown beside the traces. Not persisted; the FFT run
  // switches it off.
  bool MixedDomain = false;
};

// log2 of the averaging count: the ID_AVG list index and the stored "AVG" value.
int AverageExponent(const SpectrumChoices& choices);

// What the spectrum computation reads, made afresh from the record at each use.
spectrum::FftSettings FftSettingsOf(const SpectrumChoices& choices);

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_SPECTRUM_CHOICES_H_
