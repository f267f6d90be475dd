#include "spectrum/fourier_status.h"

namespace quarvelo::spectrum {

std::string_view FourierStatusMessage(FourierStatus status) {
  switch (status) {
    case FourierStatus::kOk:
      return "";
    case FourierStatus::kBadSampleCount:
      return "Number of Samples must be a positive value of the form 2 ^ n";
    case FourierStatus::kIndexOutOfRange:
      return "Index out of range or number of samples unknown";
    case FourierStatus::kBadLength:
      return "NumSamples is not a positive integer power of two";
  }
  return "";
}

}  // namespace quarvelo::spectrum
