// The module engines: the procedure FFT ("FFT") with its recurrence tables, and the
// table-driven DFT ("DFT (VY SLOW !)"), both working on a FourierWorkspace.
#ifndef QUARVELO_SPECTRUM_FFT_ORLEN_H_
#define QUARVELO_SPECTRUM_FFT_ORLEN_H_

#include <cstdint>
#include <string>

#include "platform/ui/ui_services.h"
#include "spectrum/fourier_status.h"
#include "spectrum/fourier_workspace.h"
#include "spectrum/progress_bar.h"

namespace quarvelo::spectrum {

// The rounded 2 pi of the twiddle tables.
inline constexpr double kTwiddleTwoPi = 6.28318530717958;
// The program constant `TwoPi`.
inline constexpr double kProgramTwoPi = 2 * 3.14159265358979;
inline constexpr int kDftTableSteps = 10000;
inline constexpr int kDftTableRoom = 10011;

// Fills TwiddleAlpha[b] = 2 sin^2(c / 2b) and TwiddleBeta[b] = sin(c / b), b = 1..n, with
// c = +-kTwiddleTwoPi (minus when inverse). Tables already prepared for n and this direction
// are left as they are. Grows the tables when they are shorter than n + 1.
void PrepareTwiddles(FourierWorkspace& workspace, std::int32_t n, bool inverse);

// The text of the "Error!" box for a bad length.
std::string FourierLengthErrorText(std::int32_t num_samples);

// Radix-2 FFT of RealInput[0..n-1] (imaginary part zero) into RealOutput/ImagOutput[0..n-1],
// with the twiddles from the tables; forward tables give X[k] = sum x[n] e^(+j 2 pi n k / N).
// `inverse` divides the result by n. A length that is not a power of two >= 2 shows the
// "Error!" box and returns kBadLength; arrays shorter than n return kIndexOutOfRange. In both
// cases the outputs are not touched.
FourierStatus Fourier(FourierWorkspace& workspace, std::int32_t num_samples, bool inverse,
                      ui::UiServices& ui);

// What the DFT needs from the main window besides the workspace.
struct DftContext {
  double two_pi = kProgramTwoPi;
  const bool* stop_requested = nullptr;  // `StopRequested`; may be null
  ProgressBar* progress = nullptr;       // `pgbFFT`; may be null
  ui::UiServices* ui = nullptr;          // lets events run once per bin; may be null
};

// DFT of RealInput[0..n] into bins 0..round(n/2) of RealOutput/ImagOutput (added to what is
// there), X[k] = sum x[m] e^(-j 2 pi k m / n), every phase quantised to 1/10000 of a turn.
// Stops early, leaving later bins alone, when *stop_requested becomes true. Terms whose
// indexes fall outside the arrays are skipped. Returns the number of bins computed.
std::int32_t DiscreteFourier(FourierWorkspace& workspace, std::int32_t n,
                             const DftContext& context);

namespace internal {

// The module FFT of the windowed record x[i] w[i], i = 1..n-1 (the input at 0 is zero, though
// x[0] and w[0] must be readable), as `Fourier` makes it after `PrepareTwiddles` (forward),
// bins 0..n/2+1 only, into workspace.pass_bins_re/im. Needs neither the tables nor the
// transform arrays, and writes no other array but the stage twiddles. False, doing nothing,
// for a length `Fourier` refuses.
bool WindowedModuleTransform(FourierWorkspace& workspace, const double* x, const double* w,
                             std::int32_t num_samples);

}  // namespace internal

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_FFT_ORLEN_H_
