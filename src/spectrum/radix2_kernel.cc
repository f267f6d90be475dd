#include "spectrum/radix2_kernel.h"

#include <algorithm>
#include <cstdint>

#include "spectrum/fresh_memory.h"

// Each hot loop is compiled for AVX2 and AVX-512 as well as the baseline and picked at load
// time. The operations and their order stay those of the scalar code: the language mode keeps
// the compiler from contracting multiply-adds, so every variant gives the same bits.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define QUARVELO_VECTOR_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define QUARVELO_VECTOR_CLONES
#endif

namespace quarvelo::spectrum::internal {
namespace {

// Stages up to this block size run chunk by chunk while the chunk is in cache.
constexpr std::size_t kCacheChunk = 4096;

std::uint32_t Reverse32(std::uint32_t x) {
  x = ((x >> 1) & 0x55555555u) | ((x & 0x55555555u) << 1);
  x = ((x >> 2) & 0x33333333u) | ((x & 0x33333333u) << 2);
  x = ((x >> 4) & 0x0F0F0F0Fu) | ((x & 0x0F0F0F0Fu) << 4);
  x = ((x >> 8) & 0x00FF00FFu) | ((x & 0x00FF00FFu) << 8);
  return (x >> 16) | (x << 16);
}

// Bit-reversed copies. A plain loop over i writes all over a large array. Here the index is
// split into high, middle and low parts of kTileBits, bits - 2 * kTileBits and kTileBits
// bits; for one middle part, the 2^kTileBits rows of 2^kTileBits neighbours that map onto
// each other go through a small transposing buffer, so that every row is read and written
// whole. The rows lie a power of two apart, so touching them all at once would also thrash
// the cache's sets.
constexpr int kTileBits = 5;
constexpr std::size_t kTile = std::size_t{1} << kTileBits;

struct TilePlan {
  int high_shift;
  int middle_bits;
  std::size_t reverse_low[kTile];
};

TilePlan MakeTilePlan(int bits) {
  TilePlan plan;
  plan.high_shift = bits - kTileBits;
  plan.middle_bits = bits - 2 * kTileBits;
  for (std::size_t y = 0; y < kTile; ++y) {
    plan.reverse_low[y] =
        static_cast<std::size_t>(Reverse32(static_cast<std::uint32_t>(y)) >> (32 - kTileBits));
  }
  return plan;
}

// Calls tile(from_base, to_base) for every middle part: the tile's element (x, y) is read at
// from_base + (x << high_shift) + y and written at to_base + (reverse(y) << high_shift) +
// reverse(x).
template <typename Tile>
void ForEachTile(const TilePlan& plan, Tile tile) {
  const std::size_t middles = std::size_t{1} << plan.middle_bits;
  for (std::size_t m = 0; m < middles; ++m) {
    const std::size_t reverse_middle = static_cast<std::size_t>(
        Reverse32(static_cast<std::uint32_t>(m)) >> (32 - plan.middle_bits));
    tile(m << kTileBits, reverse_middle << kTileBits);
  }
}

// One array through the buffer: rows of the input (point i read as in(i)) to transposed,
// column-reversed rows of `out`.
template <typename Input>
inline void CopyTile(const TilePlan& plan, Input in, double* out, std::size_t from_base,
                     std::size_t to_base, double (&buffer)[kTile][kTile]) {
  for (std::size_t x = 0; x < kTile; ++x) {
    const std::size_t row = from_base + (x << plan.high_shift);
    const std::size_t column = plan.reverse_low[x];
    for (std::size_t y = 0; y < kTile; ++y) buffer[y][column] = in(row + y);
  }
  for (std::size_t y = 0; y < kTile; ++y) {
    double* row = out + to_base + (plan.reverse_low[y] << plan.high_shift);
    for (std::size_t c = 0; c < kTile; ++c) row[c] = buffer[y][c];
  }
}

// One butterfly on (x[j], x[k]) with twiddle (wr, wi).
inline void Butterfly(double* re, double* im, std::size_t j, std::size_t k, double wr, double wi) {
  const double t_re = wr * re[k] - wi * im[k];
  const double t_im = wi * re[k] + wr * im[k];
  re[k] = re[j] - t_re;
  im[k] = im[j] - t_im;
  re[j] = re[j] + t_re;
  im[j] = im[j] + t_im;
}

// One stage of half-size `half` over [0, n) of (re, im).
QUARVELO_VECTOR_CLONES
void Stage(double* __restrict re, double* __restrict im, std::size_t n, std::size_t half,
           const double* __restrict w_re, const double* __restrict w_im) {
  if (half == 1) {
    const double wr = w_re[0], wi = w_im[0];
    for (std::size_t i = 0; i < n; i += 2) Butterfly(re, im, i, i + 1, wr, wi);
    return;
  }
  if (half == 2) {
    const double wr0 = w_re[0], wi0 = w_im[0], wr1 = w_re[1], wi1 = w_im[1];
    for (std::size_t i = 0; i < n; i += 4) {
      Butterfly(re, im, i, i + 2, wr0, wi0);
      Butterfly(re, im, i + 1, i + 3, wr1, wi1);
    }
    return;
  }
  for (std::size_t i = 0; i < n; i += 2 * half) {
    double* __restrict a_re = re + i;
    double* __restrict a_im = im + i;
    double* __restrict b_re = re + i + half;
    double* __restrict b_im = im + i + half;
    for (std::size_t j = 0; j < half; ++j) {
      const double t_re = w_re[j] * b_re[j] - w_im[j] * b_im[j];
      const double t_im = w_im[j] * b_re[j] + w_re[j] * b_im[j];
      b_re[j] = a_re[j] - t_re;
      b_im[j] = a_im[j] - t_im;
      a_re[j] = a_re[j] + t_re;
      a_im[j] = a_im[j] + t_im;
    }
  }
}

// The stages of half-sizes `half` and 2*half in one sweep over memory: the four points
// j, j+h, j+2h, j+3h of a 4h-block get their two stage-h butterflies, then their two
// stage-2h butterflies, which is the order the separate stages would use on them.
QUARVELO_VECTOR_CLONES
void StagePair(double* __restrict re, double* __restrict im, std::size_t n, std::size_t half,
               const double* __restrict w1_re, const double* __restrict w1_im,
               const double* __restrict w2_re, const double* __restrict w2_im) {
  for (std::size_t i = 0; i < n; i += 4 * half) {
    double* __restrict p0r = re + i;
    double* __restrict p0i = im + i;
    double* __restrict p1r = re + i + half;
    double* __restrict p1i = im + i + half;
    double* __restrict p2r = re + i + 2 * half;
    double* __restrict p2i = im + i + 2 * half;
    double* __restrict p3r = re + i + 3 * half;
    double* __restrict p3i = im + i + 3 * half;
    for (std::size_t j = 0; j < half; ++j) {
      double x0r = p0r[j], x0i = p0i[j], x1r = p1r[j], x1i = p1i[j];
      double x2r = p2r[j], x2i = p2i[j], x3r = p3r[j], x3i = p3i[j];
      const double wr = w1_re[j], wi = w1_im[j];
      double t_re = wr * x1r - wi * x1i;
      double t_im = wi * x1r + wr * x1i;
      x1r = x0r - t_re;
      x1i = x0i - t_im;
      x0r = x0r + t_re;
      x0i = x0i + t_im;
      t_re = wr * x3r - wi * x3i;
      t_im = wi * x3r + wr * x3i;
      x3r = x2r - t_re;
      x3i = x2i - t_im;
      x2r = x2r + t_re;
      x2i = x2i + t_im;
      const double ur = w2_re[j], ui = w2_im[j];
      t_re = ur * x2r - ui * x2i;
      t_im = ui * x2r + ur * x2i;
      p2r[j] = x0r - t_re;
      p2i[j] = x0i - t_im;
      p0r[j] = x0r + t_re;
      p0i[j] = x0i + t_im;
      const double vr = w2_re[j + half], vi = w2_im[j + half];
      t_re = vr * x3r - vi * x3i;
      t_im = vi * x3r + vr * x3i;
      p3r[j] = x1r - t_re;
      p3i[j] = x1i - t_im;
      p1r[j] = x1r + t_re;
      p1i[j] = x1i + t_im;
    }
  }
}

// out[reverse(i)] = (in_re(i), in_im(i)) for i = 0..n-1, n = 2^bits.
template <typename InputRe, typename InputIm>
void BitReverseCopy(InputRe in_re, InputIm in_im, double* out_re, double* out_im, std::size_t n,
                    int bits) {
  if (bits == 0) {
    if (n == 1) {
      out_re[0] = in_re(0);
      out_im[0] = in_im(0);
    }
    return;
  }
  if (bits < 2 * kTileBits + 1) {
    for (std::size_t i = 0; i < n; ++i) {
      const std::size_t j = Reverse32(static_cast<std::uint32_t>(i)) >> (32 - bits);
      out_re[j] = in_re(i);
      out_im[j] = in_im(i);
    }
    return;
  }
  const TilePlan plan = MakeTilePlan(bits);
  double buffer[kTile][kTile];
  ForEachTile(plan, [&](std::size_t from_base, std::size_t to_base) {
    CopyTile(plan, in_re, out_re, from_base, to_base, buffer);
    CopyTile(plan, in_im, out_im, from_base, to_base, buffer);
  });
}

}  // namespace

void StageTwiddles::Reserve(std::size_t n) {
  if (re.size() < n) {
    ResizeFresh(re, n);
    ResizeFresh(im, n);
  }
}

void BitReverseCopyStrided(const double* in_re, const double* in_im, std::size_t stride,
                           double* out_re, double* out_im, std::size_t n, int bits) {
  BitReverseCopy([=](std::size_t i) { return in_re[i * stride]; },
                 [=](std::size_t i) { return in_im[i * stride]; }, out_re, out_im, n, bits);
}

void BitReverseCopyComplex(const std::complex<double>* in, double* out_re, double* out_im,
                           std::size_t n, int bits) {
  // std::complex<double> is laid out as two doubles, real part first.
  const double* parts = reinterpret_cast<const double*>(in);
  BitReverseCopyStrided(parts, parts + 1, 2, out_re, out_im, n, bits);
}

void RunButterflyStages(double* re, double* im, std::size_t n, const StageTwiddles& twiddles) {
  const double* w_re = twiddles.re.data();
  const double* w_im = twiddles.im.data();
  const std::size_t chunk = std::min(n, kCacheChunk);
  for (std::size_t start = 0; start < n; start += chunk) {
    for (std::size_t half = 1; half < chunk; half *= 2) {
      Stage(re + start, im + start, chunk, half, w_re + half, w_im + half);
    }
  }
  std::size_t half = chunk;
  for (; 2 * half < n; half *= 4) {
    StagePair(re, im, n, half, w_re + half, w_im + half, w_re + 2 * half, w_im + 2 * half);
  }
  if (half < n) Stage(re, im, n, half, w_re + half, w_im + half);
}

namespace {

// The split; with `kUpperBins` false the bins above n/2 + 1 are left out.
template <bool kUpperBins>
[[gnu::always_inline]] inline void Split(double* __restrict re, double* __restrict im,
                                         std::size_t n, const StageTwiddles& twiddles) {
  const std::size_t m = n / 2;
  const double* __restrict w_re = twiddles.re.data() + m;
  const double* __restrict w_im = twiddles.im.data() + m;
  const double z0_re = re[0];
  const double z0_im = im[0];
  re[0] = z0_re + z0_im;
  im[0] = 0;
  re[m] = z0_re - z0_im;
  im[m] = 0;
  // Bins k and j = m - k come from the same two points of Z; E[j] = conj E[k] and
  // O[j] = conj O[k].
  for (std::size_t k = 1; 2 * k <= m; ++k) {
    const std::size_t j = m - k;
    const double a_re = re[k], a_im = im[k], b_re = re[j], b_im = im[j];
    const double e_re = 0.5 * (a_re + b_re);
    const double e_im = 0.5 * (a_im - b_im);
    const double o_re = 0.5 * (a_im + b_im);
    const double o_im = 0.5 * (b_re - a_re);
    const double xk_re = e_re + (w_re[k] * o_re - w_im[k] * o_im);
    const double xk_im = e_im + (w_re[k] * o_im + w_im[k] * o_re);
    const double xj_re = e_re + (w_re[j] * o_re + w_im[j] * o_im);
    const double xj_im = (w_im[j] * o_re - w_re[j] * o_im) - e_im;
    re[k] = xk_re;
    im[k] = xk_im;
    re[j] = xj_re;
    im[j] = xj_im;
    if constexpr (kUpperBins) {
      re[n - k] = xk_re;
      im[n - k] = -xk_im;
      re[n - j] = xj_re;
      im[n - j] = -xj_im;
    }
  }
  if constexpr (!kUpperBins) {
    // Bin n/2 + 1 mirrors bin n/2 - 1; for n = 2 it is bin 2 = n, which no transform makes.
    re[m + 1] = m >= 2 ? re[m - 1] : 0;
    im[m + 1] = m >= 2 ? -im[m - 1] : 0;
  }
}

}  // namespace

QUARVELO_VECTOR_CLONES
void SplitRealSpectrum(double* re, double* im, std::size_t n, const StageTwiddles& twiddles) {
  Split<true>(re, im, n, twiddles);
}

QUARVELO_VECTOR_CLONES
void SplitRealSpectrumLowerBins(double* re, double* im, std::size_t n,
                                const StageTwiddles& twiddles) {
  Split<false>(re, im, n, twiddles);
}

void RealTransform(const double* x, std::size_t stride, double* re, double* im, std::size_t n,
                   int bits, const StageTwiddles& twiddles) {
  const std::size_t m = n / 2;
  BitReverseCopyStrided(x, x + stride, 2 * stride, re, im, m, bits - 1);
  RunButterflyStages(re, im, m, twiddles);
  SplitRealSpectrum(re, im, n, twiddles);
}

void WindowedRealTransform(const double* x, const double* w, double* re, double* im, std::size_t n,
                           int bits, const StageTwiddles& twiddles) {
  const std::size_t m = n / 2;
  BitReverseCopy([=](std::size_t p) { return x[2 * p] * w[2 * p]; },
                 [=](std::size_t p) { return x[2 * p + 1] * w[2 * p + 1]; }, re, im, m, bits - 1);
  re[0] = 0;  // point 0 keeps x[0] = 0 whatever the record holds there
  RunButterflyStages(re, im, m, twiddles);
  SplitRealSpectrumLowerBins(re, im, n, twiddles);
}

}  // namespace quarvelo::spectrum::internal
