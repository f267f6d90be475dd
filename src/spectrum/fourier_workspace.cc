#include "spectrum/fourier_workspace.h"

#include "spectrum/fresh_memory.h"

namespace quarvelo::spectrum {
namespace {

void Zeroed(std::vector<double>& array, std::int32_t n) {
  internal::AssignFresh(array, static_cast<std::size_t>(n < 0 ? 0 : n + 1), 0.0);
}

}  // namespace

void FourierWorkspace::AllocateTransformArrays(std::int32_t n) {
  Zeroed(RealInput, n);
  Zeroed(ImagInput, n);
  Zeroed(RealOutput, n);
  Zeroed(ImagOutput, n);
}

bool FourierWorkspace::HasLength(std::int32_t n) const {
  const auto size = static_cast<std::size_t>(n) + 1;
  return n >= 0 && RealInput.size() == size && ImagInput.size() == size &&
         RealOutput.size() == size && ImagOutput.size() == size && TwiddleAlpha.size() == size &&
         TwiddleBeta.size() == size;
}

void FourierWorkspace::AllocateAll(std::int32_t n) {
  AllocateTransformArrays(n);
  if (prepared_length == n && TwiddleAlpha.size() == RealInput.size() &&
      TwiddleBeta.size() == RealInput.size()) {
    return;
  }
  Zeroed(TwiddleAlpha, n);
  Zeroed(TwiddleBeta, n);
  prepared_length = -1;
}

}  // namespace quarvelo::spectrum
