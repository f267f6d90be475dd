// The double arrays the module engines work on. The spectrum computation (re)allocates them
// before each transform; every array is indexed 0..N.
#ifndef QUARVELO_SPECTRUM_FOURIER_WORKSPACE_H_
#define QUARVELO_SPECTRUM_FOURIER_WORKSPACE_H_

#include <cstdint>
#include <vector>

#include "spectrum/radix2_kernel.h"

namespace quarvelo::spectrum {

struct FourierWorkspace {
  std::vector<double> RealInput;
  std::vector<double> ImagInput;  // allocated with the others, read by no engine
  std::vector<double> RealOutput;
  std::vector<double> ImagOutput;
  std::vector<double> TwiddleAlpha;  // indexed by block size 1..N
  std::vector<double> TwiddleBeta;

  // Inputs and outputs 0..n, all zero. Memory of an earlier run of the same or a larger
  // length is reused, so the passes of an averaging run do not allocate.
  void AllocateTransformArrays(std::int32_t n);
  // The transform arrays and the twiddle tables. Tables already prepared for this length keep
  // their values: `PrepareTwiddles` would write the same numbers into them again.
  void AllocateAll(std::int32_t n);

  // All six arrays hold 0..n.
  bool HasLength(std::int32_t n) const;

  // Engine bookkeeping, not part of the arrays' meaning.
  std::int32_t prepared_length = -1;  // length of the prepared twiddle tables, -1 = none
  bool prepared_inverse = false;
  internal::StageTwiddles stage_twiddles;  // per-stage twiddles of the module FFT
  std::vector<double> stage_twiddles_key;  // the table entries they were built from
  // Bins 0..N/2+1 of the spectrum pass's windowed module transform.
  std::vector<double> pass_bins_re;
  std::vector<double> pass_bins_im;
};

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_FOURIER_WORKSPACE_H_
