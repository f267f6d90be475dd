// The object FFT engine ("FFT A"): a self-contained transform with indexed inputs and outputs
// counting from 1, computed lazily on the first read after a change.
#ifndef QUARVELO_SPECTRUM_CLS_FOURIER_H_
#define QUARVELO_SPECTRUM_CLS_FOURIER_H_

#include <complex>
#include <cstdint>
#include <vector>

#include "spectrum/fourier_status.h"
#include "spectrum/radix2_kernel.h"

namespace quarvelo::spectrum {

// Forward: X[k] = sum x[n] e^(+j 2 pi n k / N). Reverse: e^(-j...) and a 1/N factor.
// Index arguments count from 1. A failing call returns its error number and changes nothing.
class clsFourier {
 public:
  clsFourier();

  // Accepts n >= 2 that is a power of two: all inputs and outputs become zero.
  FourierStatus SetNumberOfSamples(std::int32_t n);
  FourierStatus SetRealIn(std::int32_t index, double value);
  FourierStatus SetImagIn(std::int32_t index, double value);
  // Takes effect at the next computation, that is after the next input write.
  void SetTransformReverse(bool reverse) { reverse_ = reverse; }

  // Reads compute the transform first when an input changed since the last computation.
  FourierStatus ComplexOut(std::int32_t index, std::complex<double>* value);
  FourierStatus RealOut(std::int32_t index, double* value);
  FourierStatus ImagOut(std::int32_t index, double* value);
  FourierStatus Magnitude(std::int32_t index, double* value);

  // Milliseconds the last computation took.
  float Timing() const;

  // The number of samples; 0 while unknown.
  std::int32_t NumberOfSamples() const { return n_unknown_ ? 0 : n_; }

 private:
  bool IndexValid(std::int32_t index) const;
  void ComputeIfDirty();
  void BuildTwiddles(int bits);

  std::vector<std::complex<double>> input_;
  std::vector<double> out_re_;
  std::vector<double> out_im_;
  std::int32_t n_ = 1;
  bool n_unknown_ = true;
  bool dirty_ = true;
  bool reverse_ = false;
  // No imaginary input other than zero since the length was set: the record is real and is
  // transformed as one of half the length.
  bool imag_zero_ = true;
  std::int64_t start_count_ = 0;
  std::int64_t end_count_ = 0;
  std::int64_t counter_frequency_ = 0;
  // The stage twiddles depend only on the length and direction; kept for the next run.
  internal::StageTwiddles twiddles_;
  bool twiddles_reverse_ = false;
};

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_CLS_FOURIER_H_
