// Failures of the transform engines, returned as values so that a caller can skip the failed
// step and go on.
#ifndef QUARVELO_SPECTRUM_FOURIER_STATUS_H_
#define QUARVELO_SPECTRUM_FOURIER_STATUS_H_

#include <string_view>

namespace quarvelo::spectrum {

// The values are the engine's error numbers.
enum class FourierStatus {
  kOk = 0,
  kBadSampleCount = 380,
  kIndexOutOfRange = 381,
  // The module FFT was given a length that is not a power of two (at least 2).
  kBadLength = 5,
};

// The message that goes with an error number ("" for kOk).
std::string_view FourierStatusMessage(FourierStatus status);

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_FOURIER_STATUS_H_
