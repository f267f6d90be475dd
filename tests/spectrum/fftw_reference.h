// FFTW as the independent oracle of the accuracy tests.
#ifndef QUARVELO_TESTS_SPECTRUM_FFTW_REFERENCE_H_
#define QUARVELO_TESTS_SPECTRUM_FFTW_REFERENCE_H_

#include <fftw3.h>

#include <complex>
#include <vector>

namespace quarvelo::spectrum {

// Unnormalised complex DFT of `input`: sign -1 is sum x e^(-j...), sign +1 sum x e^(+j...).
inline std::vector<std::complex<double>> ReferenceDft(
    const std::vector<std::complex<double>>& input, int sign) {
  const int n = static_cast<int>(input.size());
  std::vector<std::complex<double>> in = input;
  std::vector<std::complex<double>> out(input.size());
  fftw_plan plan = fftw_plan_dft_1d(n, reinterpret_cast<fftw_complex*>(in.data()),
                                    reinterpret_cast<fftw_complex*>(out.data()),
                                    sign < 0 ? FFTW_FORWARD : FFTW_BACKWARD, FFTW_ESTIMATE);
  fftw_execute(plan);
  fftw_destroy_plan(plan);
  return out;
}

inline double LargestMagnitude(const std::vector<std::complex<double>>& bins) {
  double largest = 0;
  for (const auto& bin : bins) largest = std::max(largest, std::abs(bin));
  return largest;
}

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_TESTS_SPECTRUM_FFTW_REFERENCE_H_
