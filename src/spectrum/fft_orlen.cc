#include "spectrum/fft_orlen.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "spectrum/bit_index.h"
#include "spectrum/fresh_memory.h"

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define QUARVELO_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define QUARVELO_VECTOR_CLONES
#endif

namespace quarvelo::spectrum {
namespace {

// The per-stage twiddle sequences of the module FFT, from the recurrence coefficients of the
// block sizes 2, 4 .. n (alpha(b), beta(b)). They depend only on those, so they are rebuilt
// only when they differ from the ones the cached sequences came from.
template <typename Alpha, typename Beta>
void BuildStageTwiddles(FourierWorkspace& workspace, std::size_t n, int bits, Alpha alpha_of,
                        Beta beta_of) {
  std::vector<double>& key = workspace.stage_twiddles_key;
  bool same =
      workspace.stage_twiddles.length == n && key.size() == 2 * static_cast<std::size_t>(bits);
  for (int stage = 0; same && stage < bits; ++stage) {
    const std::size_t b = std::size_t{2} << stage;
    same = key[2 * stage] == alpha_of(b) && key[2 * stage + 1] == beta_of(b);
  }
  if (same) return;
  internal::StageTwiddles& twiddles = workspace.stage_twiddles;
  twiddles.Reserve(n);
  key.resize(2 * static_cast<std::size_t>(bits));
  for (int stage = 0; stage < bits; ++stage) {
    const std::size_t half = std::size_t{1} << stage;
    const double alpha = alpha_of(2 * half);
    const double beta = beta_of(2 * half);
    key[2 * stage] = alpha;
    key[2 * stage + 1] = beta;
    double w_re = 1.0;
    double w_im = 0.0;
    for (std::size_t j = 0; j < half; ++j) {
      twiddles.re[half + j] = w_re;
      twiddles.im[half + j] = w_im;
      const double t = alpha * w_re + beta * w_im;
      w_im = beta * w_re + (w_im - alpha * w_im);
      w_re = w_re - t;
    }
  }
  twiddles.length = n;
}

// The twiddle tables hold 2 sin^2(c / 2b) and sin(c / b) for every block size b = 1..N:
// 2^20 sines for a 2^19-point transform, which took longer than the transform itself. From
// this block size on the angle is below 2 pi / 64 and a short Taylor series gives the sine
// within a unit in the last place; unlike the library call, it vectorises.
constexpr std::int32_t kSeriesFirstBlock = 64;

void SetTwiddlesWithLibrarySine(double* alpha, double* beta, double c, std::int32_t b) {
  const double delta = c / b;
  const double s = std::sin(delta * 0.5);
  alpha[b] = 2 * s * s;
  beta[b] = std::sin(delta);
}

// sin x for |x| <= 2 pi / 64, by its Taylor series: the first term left out, x^11 / 11!, is
// below 3e-18 of x there, far under the rounding of the result (1.1e-16 of it).
inline double SmallAngleSine(double x) {
  const double x2 = x * x;
  const double tail = -1.0 / 6 + x2 * (1.0 / 120 + x2 * (-1.0 / 5040 + x2 * (1.0 / 362880)));
  return x + x * x2 * tail;
}

QUARVELO_VECTOR_CLONES
void SetTwiddlesBySeries(double* __restrict alpha, double* __restrict beta, double c,
                         std::int32_t first, std::int32_t last) {
  for (std::int32_t b = first; b <= last; ++b) {
    const double delta = c / b;
    const double s = SmallAngleSine(delta * 0.5);
    alpha[b] = 2 * s * s;
    beta[b] = SmallAngleSine(delta);
  }
}

// One DFT bin: sum over m = 0..n of input[m] * table[phase(m)]. Terms whose table index
// falls outside the tables are skipped.
QUARVELO_VECTOR_CLONES
void DftBin(const double* input, std::size_t input_size, std::int32_t n, double omega,
            double two_pi, double inv_two_pi, double to_index, const double* cos_table,
            const double* neg_sin_table, double* re_sum, double* im_sum) {
  double re = *re_sum;
  double im = *im_sum;
  const std::int64_t last = std::min<std::int64_t>(n, static_cast<std::int64_t>(input_size) - 1);
  for (std::int64_t m = 0; m <= last; ++m) {
    const double a = omega * static_cast<double>(m);
    const double turns = std::floor(a * inv_two_pi);
    const double index = std::nearbyint((a - turns * two_pi) * to_index);
    if (!(index >= 0 && index < kDftTableRoom)) continue;
    const auto i = static_cast<std::size_t>(index);
    re += input[m] * cos_table[i];
    im += input[m] * neg_sin_table[i];
  }
  *re_sum = re;
  *im_sum = im;
}

}  // namespace

void PrepareTwiddles(FourierWorkspace& workspace, std::int32_t n, bool inverse) {
  if (n < 1) return;
  const auto size = static_cast<std::size_t>(n) + 1;
  if (workspace.prepared_length == n && workspace.prepared_inverse == inverse &&
      workspace.TwiddleAlpha.size() >= size && workspace.TwiddleBeta.size() >= size) {
    return;
  }
  if (workspace.TwiddleAlpha.size() < size) workspace.TwiddleAlpha.resize(size);
  if (workspace.TwiddleBeta.size() < size) workspace.TwiddleBeta.resize(size);
  const double c = inverse ? -kTwiddleTwoPi : kTwiddleTwoPi;
  double* alpha = workspace.TwiddleAlpha.data();
  double* beta = workspace.TwiddleBeta.data();
  const std::int32_t library_last = std::min(n, kSeriesFirstBlock - 1);
  for (std::int32_t b = 1; b <= library_last; ++b) SetTwiddlesWithLibrarySine(alpha, beta, c, b);
  if (n >= kSeriesFirstBlock) SetTwiddlesBySeries(alpha, beta, c, kSeriesFirstBlock, n);
  // The block sizes the transform uses get exactly the library's sines, so its results do
  // not depend on the series at all.
  for (std::int64_t b = kSeriesFirstBlock; b <= n; b *= 2) {
    SetTwiddlesWithLibrarySine(alpha, beta, c, static_cast<std::int32_t>(b));
  }
  workspace.prepared_length = n;
  workspace.prepared_inverse = inverse;
}

std::string FourierLengthErrorText(std::int32_t num_samples) {
  return "Error in procedure Fourier:\r\n NumSamples is " + std::to_string(num_samples) +
         ", which is not a positive integer power of two.";
}

FourierStatus Fourier(FourierWorkspace& workspace, std::int32_t num_samples, bool inverse,
                      ui::UiServices& ui) {
  if (num_samples < 2 || !IsPowerOf2(num_samples)) {
    ui.ShowTitledMessage("Error!", FourierLengthErrorText(num_samples), ui::MessageIcon::kNone,
                         ui::MessageButtons::kOk);
    return FourierStatus::kBadLength;
  }
  const auto n = static_cast<std::size_t>(num_samples);
  if (workspace.RealInput.size() < n || workspace.RealOutput.size() < n ||
      workspace.ImagOutput.size() < n || workspace.TwiddleAlpha.size() < n + 1 ||
      workspace.TwiddleBeta.size() < n + 1) {
    return FourierStatus::kIndexOutOfRange;
  }
  const int bits = LowestBitIndex(num_samples);
  double* re = workspace.RealOutput.data();
  double* im = workspace.ImagOutput.data();
  BuildStageTwiddles(
      workspace, n, bits, [&](std::size_t b) { return workspace.TwiddleAlpha[b]; },
      [&](std::size_t b) { return workspace.TwiddleBeta[b]; });
  // The input is real: half the work as a transform of n/2 complex points.
  internal::RealTransform(workspace.RealInput.data(), 1, re, im, n, bits, workspace.stage_twiddles);
  if (inverse) {
    const double scale = static_cast<double>(num_samples);
    for (std::size_t i = 0; i < n; ++i) {
      re[i] /= scale;
      im[i] /= scale;
    }
  }
  return FourierStatus::kOk;
}

namespace internal {

bool WindowedModuleTransform(FourierWorkspace& workspace, const double* x, const double* w,
                             std::int32_t num_samples) {
  if (num_samples < 2 || !IsPowerOf2(num_samples)) return false;
  const auto n = static_cast<std::size_t>(num_samples);
  const int bits = LowestBitIndex(num_samples);
  // The forward tables' entries of the block sizes the transform uses, without the tables:
  // the same library sines `PrepareTwiddles` gives them.
  BuildStageTwiddles(
      workspace, n, bits,
      [](std::size_t b) {
        const double s = std::sin(kTwiddleTwoPi / static_cast<double>(b) * 0.5);
        return 2 * s * s;
      },
      [](std::size_t b) { return std::sin(kTwiddleTwoPi / static_cast<double>(b)); });
  ResizeFresh(workspace.pass_bins_re, n / 2 + 2);
  ResizeFresh(workspace.pass_bins_im, n / 2 + 2);
  WindowedRealTransform(x, w, workspace.pass_bins_re.data(), workspace.pass_bins_im.data(), n, bits,
                        workspace.stage_twiddles);
  return true;
}

}  // namespace internal

std::int32_t DiscreteFourier(FourierWorkspace& workspace, std::int32_t n,
                             const DftContext& context) {
  if (n <= 0) return 0;
  const double two_pi = context.two_pi;
  const double d_omega = two_pi / n;
  std::array<double, kDftTableRoom> cos_table{};
  std::array<double, kDftTableRoom> neg_sin_table{};
  for (int t = 0; t <= kDftTableSteps; ++t) {
    const double a = two_pi / kDftTableSteps * t;
    cos_table[t] = std::cos(a);
    neg_sin_table[t] = -std::sin(a);
  }
  const double to_index = kDftTableSteps / two_pi;
  const double inv_two_pi = 1 / two_pi;
  const auto bins = static_cast<std::int32_t>(std::nearbyint(n / 2.0));
  if (context.progress != nullptr) {
    context.progress->SetProgressRange(0, 32767);
    context.progress->SetProgressValue(0);
  }
  const double step = 65532.0 / n;
  const auto outputs =
      static_cast<std::int64_t>(std::min(workspace.RealOutput.size(), workspace.ImagOutput.size()));
  std::int32_t computed = 0;
  for (std::int32_t k = 0; k <= bins; ++k) {
    if (context.stop_requested != nullptr && *context.stop_requested) return computed;
    if (k < outputs) {
      DftBin(workspace.RealInput.data(), workspace.RealInput.size(), n, d_omega * k, two_pi,
             inv_two_pi, to_index, cos_table.data(), neg_sin_table.data(), &workspace.RealOutput[k],
             &workspace.ImagOutput[k]);
    }
    ++computed;
    if (context.ui != nullptr) context.ui->ProcessPendingEvents();
    if (context.progress != nullptr) {
      context.progress->SetProgressValue(static_cast<float>(k * step));
    }
  }
  if (context.progress != nullptr) context.progress->SetProgressValue(0);
  return computed;
}

}  // namespace quarvelo::spectrum
