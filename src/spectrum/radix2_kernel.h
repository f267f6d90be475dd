// The radix-2 decimation-in-time core shared by both FFT engines. The engines differ only in
// how they produce each stage's twiddle factors (their own recurrences); the butterflies are
// the same. Every block of a stage uses the same twiddle sequence, so each stage's sequence is
// produced once and the blocks are processed side by side with it, which gives exactly the
// values the block-by-block recurrence would give.
#ifndef QUARVELO_SPECTRUM_RADIX2_KERNEL_H_
#define QUARVELO_SPECTRUM_RADIX2_KERNEL_H_

#include <complex>
#include <cstddef>
#include <vector>

namespace quarvelo::spectrum::internal {

// Twiddles of all stages of one transform length: the stage of half-size h (blocks of 2h)
// uses (re[h + j], im[h + j]) for j = 0 .. h-1. Index 0 is unused.
struct StageTwiddles {
  std::size_t length = 0;  // transform length the table was built for; 0 = none
  std::vector<double> re;
  std::vector<double> im;

  // Makes room for a transform of `n` points without giving back memory.
  void Reserve(std::size_t n);
};

// out[reverse(i)] = in[i] for i = 0..n-1, n = 2^bits.
void BitReverseCopyComplex(const std::complex<double>* in, double* out_re, double* out_im,
                           std::size_t n, int bits);
// The same for points whose parts lie at in_re[i * stride] and in_im[i * stride]: a real
// record read as n complex points (even samples real, odd samples imaginary) is in_re = x,
// in_im = x + 1, stride 2.
void BitReverseCopyStrided(const double* in_re, const double* in_im, std::size_t stride,
                           double* out_re, double* out_im, std::size_t n, int bits);

// Runs every butterfly stage (half-sizes 1 .. n/2) on the bit-reversed data in (re, im):
// t = w * x[k]; x[k] = x[j] - t; x[j] = x[j] + t, with w from `twiddles`.
void RunButterflyStages(double* re, double* im, std::size_t n, const StageTwiddles& twiddles);

// A real record x of n points is transformed as the n/2-point complex transform Z of
// z[m] = x[2m] + i x[2m+1]. Given Z in (re, im)[0 .. n/2-1], writes the n-point transform X
// of x into (re, im)[0 .. n-1]: X[k] = E[k] + w^k O[k] with E, O the transforms of the even
// and odd samples, taken from Z[k] and Z[n/2-k], w^k the twiddles of the last stage (half-size
// n/2) in `twiddles`, and X[n-k] = conj X[k]. n >= 2 is a power of two.
void SplitRealSpectrum(double* re, double* im, std::size_t n, const StageTwiddles& twiddles);

// The same split writing only bins 0 .. n/2 + 1 (the arrays may hold just n/2 + 2 points);
// bin n/2 + 1 is conj X[n/2 - 1], or 0 when n = 2.
void SplitRealSpectrumLowerBins(double* re, double* im, std::size_t n,
                                const StageTwiddles& twiddles);

// The n-point transform of the real record x (read at x[i * stride] for i = 0..n-1) into
// (re, im)[0 .. n-1], by the half-length transform and the split. `twiddles` holds every
// stage of an n-point transform; bits = log2 n >= 1.
void RealTransform(const double* x, std::size_t stride, double* re, double* im, std::size_t n,
                   int bits, const StageTwiddles& twiddles);

// Bins 0 .. n/2 + 1 of the transform of the windowed record x[i] w[i], i = 0..n-1, with the
// input at i = 0 taken as zero (x[0] and w[0] are read but not used), into (re, im)[0 ..
// n/2 + 1]: the window is applied as the record is read, and the bins above n/2 + 1, the
// mirror images of those below, are not written. bits = log2 n >= 1.
void WindowedRealTransform(const double* x, const double* w, double* re, double* im, std::size_t n,
                           int bits, const StageTwiddles& twiddles);

}  // namespace quarvelo::spectrum::internal

#endif  // QUARVELO_SPECTRUM_RADIX2_KERNEL_H_
