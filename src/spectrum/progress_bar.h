// The FFT progress bar `pgbFFT` of the main window.
#ifndef QUARVELO_SPECTRUM_PROGRESS_BAR_H_
#define QUARVELO_SPECTRUM_PROGRESS_BAR_H_

namespace quarvelo::spectrum {

class ProgressBar {
 public:
  virtual ~ProgressBar() = default;
  virtual void SetProgressRange(int minimum, int maximum) = 0;
  virtual void SetProgressValue(double value) = 0;
};

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_PROGRESS_BAR_H_
