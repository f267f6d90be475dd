#include "spectrum/cls_fourier.h"

#include <chrono>
#include <cmath>

namespace quarvelo::spectrum {
namespace {

std::int64_t PerformanceCounter() {
  return std::chrono::steady_clock::now().time_since_epoch().count();
}

constexpr std::int64_t kCounterFrequency =
    std::chrono::steady_clock::period::den / std::chrono::steady_clock::period::num;

}  // namespace

clsFourier::clsFourier()
    : input_(1), out_re_(1), out_im_(1), counter_frequency_(kCounterFrequency) {}

FourierStatus clsFourier::SetNumberOfSamples(std::int32_t n) {
  if (n < 2 || (n & (n - 1)) != 0) return FourierStatus::kBadSampleCount;
  // assign() keeps the memory of a run of the same length: no allocation on later passes.
  input_.assign(static_cast<std::size_t>(n), {0.0, 0.0});
  out_re_.assign(static_cast<std::size_t>(n), 0.0);
  out_im_.assign(static_cast<std::size_t>(n), 0.0);
  n_ = n;
  n_unknown_ = false;
  dirty_ = true;
  imag_zero_ = true;
  return FourierStatus::kOk;
}

bool clsFourier::IndexValid(std::int32_t index) const {
  return !n_unknown_ && index >= 1 && index <= n_;
}

FourierStatus clsFourier::SetRealIn(std::int32_t index, double value) {
  if (!IndexValid(index)) return FourierStatus::kIndexOutOfRange;
  input_[static_cast<std::size_t>(index - 1)].real(value);
  dirty_ = true;
  return FourierStatus::kOk;
}

FourierStatus clsFourier::SetImagIn(std::int32_t index, double value) {
  if (!IndexValid(index)) return FourierStatus::kIndexOutOfRange;
  input_[static_cast<std::size_t>(index - 1)].imag(value);
  if (value != 0.0) imag_zero_ = false;
  dirty_ = true;
  return FourierStatus::kOk;
}

FourierStatus clsFourier::ComplexOut(std::int32_t index, std::complex<double>* value) {
  if (!IndexValid(index)) return FourierStatus::kIndexOutOfRange;
  ComputeIfDirty();
  const auto i = static_cast<std::size_t>(index - 1);
  *value = {out_re_[i], out_im_[i]};
  return FourierStatus::kOk;
}

FourierStatus clsFourier::RealOut(std::int32_t index, double* value) {
  std::complex<double> out;
  const FourierStatus status = ComplexOut(index, &out);
  if (status == FourierStatus::kOk) *value = out.real();
  return status;
}

FourierStatus clsFourier::ImagOut(std::int32_t index, double* value) {
  std::complex<double> out;
  const FourierStatus status = ComplexOut(index, &out);
  if (status == FourierStatus::kOk) *value = out.imag();
  return status;
}

FourierStatus clsFourier::Magnitude(std::int32_t index, double* value) {
  std::complex<double> out;
  const FourierStatus status = ComplexOut(index, &out);
  if (status == FourierStatus::kOk) {
    *value = std::sqrt(out.real() * out.real() + out.imag() * out.imag());
  }
  return status;
}

float clsFourier::Timing() const {
  if (counter_frequency_ == 0) return 0.0f;
  return static_cast<float>(static_cast<double>(end_count_ - start_count_) /
                            static_cast<double>(counter_frequency_) * 1000.0);
}

void clsFourier::BuildTwiddles(int bits) {
  const auto n = static_cast<std::size_t>(n_);
  if (twiddles_.length == n && twiddles_reverse_ == reverse_) return;
  twiddles_.Reserve(n);
  double theta0 = 4.0 * std::atan(1.0);
  if (reverse_) theta0 = -theta0;
  for (int stage = 0; stage < bits; ++stage) {
    const std::size_t half = std::size_t{1} << stage;
    const double delta = theta0 / static_cast<double>(half);
    const double s = std::sin(delta / 2);
    const double alpha = 2 * s * s;
    const double beta = std::sin(delta);
    double w_re = 1.0;
    double w_im = 0.0;
    for (std::size_t j = 0; j < half; ++j) {
      twiddles_.re[half + j] = w_re;
      twiddles_.im[half + j] = w_im;
      const double next_re = w_re - (alpha * w_re + beta * w_im);
      w_im = w_im - (alpha * w_im - beta * w_re);
      w_re = next_re;
    }
  }
  twiddles_.length = n;
  twiddles_reverse_ = reverse_;
}

void clsFourier::ComputeIfDirty() {
  if (!dirty_) return;
  dirty_ = false;
  start_count_ = PerformanceCounter();
  const auto n = static_cast<std::size_t>(n_);
  const int bits = static_cast<int>(std::nearbyint(std::log(n_) / std::log(2.0)));
  BuildTwiddles(bits);
  if (imag_zero_) {
    // std::complex<double> is laid out as two doubles, real part first.
    internal::RealTransform(reinterpret_cast<const double*>(input_.data()), 2, out_re_.data(),
                            out_im_.data(), n, bits, twiddles_);
  } else {
    internal::BitReverseCopyComplex(input_.data(), out_re_.data(), out_im_.data(), n, bits);
    internal::RunButterflyStages(out_re_.data(), out_im_.data(), n, twiddles_);
  }
  if (reverse_) {
    const double scale = static_cast<double>(n_);
    for (std::size_t i = 0; i < n; ++i) {
      out_re_[i] /= scale;
      out_im_[i] /= scale;
    }
  }
  end_count_ = PerformanceCounter();
}

}  // namespace quarvelo::spectrum
