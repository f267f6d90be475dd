#include "spectrum/spectrum_analyzer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <span>

#include "display/format.h"
#include "platform/text/number_parse.h"
#include "spectrum/bit_index.h"
#include "spectrum/fresh_memory.h"
#include "spectrum/level_conversion.h"
#include "spectrum/window_function.h"

namespace quarvelo::spectrum {
namespace {

// Nearest integer, halves to even (the default rounding mode).
std::int32_t RoundToInt(double x) { return static_cast<std::int32_t>(std::nearbyint(x)); }

// The smallest e in 0..19 with 2^e > n, or 20 when there is none.
int PaddingExponent(std::int64_t n) {
  for (int e = 0; e <= kLargestPaddingExponent; ++e) {
    if ((std::int64_t{1} << e) > n) return e;
  }
  return kLargestPaddingExponent + 1;
}

// The number of spectrum points of a transform of n samples: round(n/2 + 1).
std::int32_t PointCount(std::int32_t n) { return RoundToInt(n / 2.0 + 1); }

// log10 x as ln x / ln 10, with the natural logarithm of the module engines' level sweep, so
// that every engine's levels come from the same function; within a few units in the last
// place of the library's log10.
double Log10(double x) { return internal::NaturalLog(x) * (1 / std::numbers::ln10); }

// dB steps of the vertical scale: eight divisions of `step` dB above the bottom.
int DecibelStep(double top, double bottom) {
  const double d = (top - bottom) / 8;
  if (d < 10) return 10;
  if (d <= 15) return 15;
  if (d <= 20) return 20;
  if (d <= 25) return 25;
  if (d <= 30) return 30;
  const double step = std::nearbyint((top - bottom) / 7);
  // A range too large for the scale's 16-bit step keeps the widest step it can hold.
  return static_cast<int>(std::min(step, double{std::numeric_limits<std::int16_t>::max()}));
}

}  // namespace

SpectrumAnalyzer::SpectrumAnalyzer(Spectrum& spectrum, FourierWorkspace& workspace,
                                   clsFourier& fourier, SampleStore& samples, SpectrumHost& host,
                                   ui::UiServices& ui, const bool& stop_requested, double two_pi)
    : spectrum_(spectrum),
      workspace_(workspace),
      fourier_(fourier),
      samples_(samples),
      host_(host),
      ui_(ui),
      stop_requested_(stop_requested),
      two_pi_(two_pi) {}

void SpectrumAnalyzer::PadWithZeros(int channel, std::int32_t count, int exponent) {
  const std::int32_t last = std::int32_t{1} << exponent;
  const std::span<double> volts = samples_.GrowVolts(channel, last + 1);
  const std::int64_t end = std::min<std::int64_t>(last, std::ssize(volts) - 1);
  for (std::int64_t i = std::max<std::int32_t>(count, 0); i <= end; ++i) volts[i] = 0;
}

std::optional<PlanLines> SpectrumAnalyzer::PlanTransform(int channel, bool oscilloscope_only,
                                                         const FftSettings& settings) {
  spectrum_.ZeroPadded = false;
  const std::int32_t count = samples_.SampleCount(channel);
  if (oscilloscope_only) return PlanLines{"OSC: " + std::to_string(count) + " pts", ""};
  if (count < 2) {
    // One sample or none: there is no spectrum to plan.
    spectrum_.TransformLength = 0;
    ui_.ShowStatus("Analyse error");
    return std::nullopt;
  }
  const double sample_rate = host_.SampleRate();
  std::int32_t n = count - 1;
  spectrum_.Algorithm = static_cast<std::int16_t>(ChooseAlgorithm(n, settings));
  std::string label;
  std::int32_t shown_count = 0;
  if (spectrum_.Algorithm == kDft) {
    label = "DFT:";
    spectrum_.FrequencyResolution = sample_rate / n * 1000;
    shown_count = count - 1;
  } else {
    label = "FFT:";
    const int e = PaddingExponent(n);
    n = std::int32_t{1} << (e - 1);
    spectrum_.FrequencyResolution = sample_rate / n * 1000;
    shown_count = n;
    if (e <= kLargestPaddingExponent) {
      PadWithZeros(channel, count, e);
      n = std::int32_t{1} << e;
      spectrum_.ZeroPadded = true;
      spectrum_.FrequencyResolution = sample_rate / (count - 1) * 1000;
      shown_count = count - 1;
    }
  }
  spectrum_.TransformLength = n;
  PlanLines lines;
  lines.first = label + std::to_string((shown_count + 1) / 2) + " pts";
  lines.second = "RES " + display::FormatFrequency(spectrum_.FrequencyResolution, true);
  return lines;
}

int SpectrumAnalyzer::ChooseAlgorithm(std::int32_t n, const FftSettings& settings) {
  const double work = static_cast<double>(settings.AverageCount) * n * static_cast<double>(n);
  int result = settings.Algorithm;
  if (settings.AutoAlgorithm == 1) result = work < kAutoDftWorkLimit ? kDft : kModuleFft;
  if (result == kDft && work > kDftWorkLimit) {
    result = kModuleFft;
    ui_.ShowStatus("Numsamples too high for DFT, FFT Selected");
    ui_.Pause(500);
    ui_.ProcessPendingEvents();
  }
  if (result != kObjectFft && result != kDft) result = kModuleFft;  // a corrupt setting
  return result;
}

void SpectrumAnalyzer::BuildWindow(int channel, const FftSettings& settings) {
  const std::int32_t n = spectrum_.TransformLength;
  const std::int64_t m = spectrum_.ZeroPadded ? samples_.SampleCount(channel) - 1 : n;
  std::vector<double>& weights = spectrum_.WindowWeights;
  internal::ResizeFresh(weights, static_cast<std::size_t>(n) + 1);
  spectrum_.History.Reset(PointCount(n) + 1, std::max(settings.AverageCount, 0) + 1);
  const std::int64_t last = std::min<std::int64_t>(m, n);
  // Weights outside the window's span are zero.
  std::fill(weights.begin() + std::max<std::int64_t>(last + 1, 0), weights.end(), 0.0);
  if (last >= 0) {
    FillWindowWeights(settings.WindowIndex, m, two_pi_,
                      std::span<double>(weights).first(static_cast<std::size_t>(last) + 1));
  }
}

void SpectrumAnalyzer::PrepareEngine() {
  const std::int32_t n = spectrum_.TransformLength;
  switch (spectrum_.Algorithm) {
    case kObjectFft:
      fourier_.SetNumberOfSamples(n);  // a refused length leaves the engine as it was
      break;
    case kModuleFft:
      // A workspace of this length needs no clearing: the input fill writes every input and
      // the transform every output it reads; the twiddle tables are still right.
      if (!IsPowerOf2(n) || !workspace_.HasLength(n)) workspace_.AllocateAll(n);
      break;
    case kDft:
      workspace_.AllocateTransformArrays(n);
      break;
    default:
      break;
  }
}

void SpectrumAnalyzer::FillInput(int channel, std::int32_t offset) {
  const std::int64_t n = spectrum_.TransformLength;
  const std::span<const double> volts = samples_.Volts(channel);
  const std::vector<double>& weights = spectrum_.WindowWeights;
  // Samples outside the storage are skipped: their inputs stay zero.
  const std::int64_t first = std::max<std::int64_t>(1, -std::int64_t{offset});
  std::int64_t last = std::min<std::int64_t>(n, std::ssize(volts) - 1 - offset);
  last = std::min<std::int64_t>(last, std::ssize(weights) - 1);
  if (spectrum_.Algorithm == kObjectFft) {
    for (std::int64_t i = first; i <= last; ++i) {
      const auto index = static_cast<std::int32_t>(i);
      fourier_.SetRealIn(index, volts[offset + i] * weights[i]);
      fourier_.SetImagIn(index, 0.0);
    }
    return;
  }
  std::vector<double>& input = workspace_.RealInput;
  last = std::min<std::int64_t>(last, std::ssize(input) - 1);
  // Inputs without a sample are zero.
  std::fill(input.begin(), input.begin() + std::clamp<std::int64_t>(first, 0, std::ssize(input)),
            0.0);
  std::fill(input.begin() + std::clamp<std::int64_t>(last + 1, 0, std::ssize(input)), input.end(),
            0.0);
  double* x = input.data();
  for (std::int64_t i = first; i <= last; ++i) x[i] = volts[offset + i] * weights[i];
}

bool SpectrumAnalyzer::TransformWindowedRecord(int channel, std::int32_t offset) {
  bins_from_pass_ = false;
  const std::int32_t n = spectrum_.TransformLength;
  const std::span<const double> volts = samples_.Volts(channel);
  // The record and the window must hold samples 0..n-1 from the offset; a record that does
  // not (a negative offset, a short record) takes the general path with its zero inputs.
  if (spectrum_.Algorithm != kModuleFft || offset < 0 ||
      std::int64_t{offset} + n > std::ssize(volts) || std::ssize(spectrum_.WindowWeights) < n) {
    return false;
  }
  bins_from_pass_ = internal::WindowedModuleTransform(workspace_, volts.data() + offset,
                                                      spectrum_.WindowWeights.data(), n);
  return bins_from_pass_;
}

void SpectrumAnalyzer::RunEngine() {
  const std::int32_t n = spectrum_.TransformLength;
  if (spectrum_.Algorithm == kModuleFft) {
    PrepareTwiddles(workspace_, n, false);
    Fourier(workspace_, n, false, ui_);  // a refusal leaves zero outputs; the pass goes on
  } else if (spectrum_.Algorithm == kDft) {
    DftContext context;
    context.two_pi = two_pi_;
    context.stop_requested = &stop_requested_;
    context.progress = &host_;
    context.ui = &ui_;
    DiscreteFourier(workspace_, n, context);
  }
}

void SpectrumAnalyzer::ApplyUpperLimit(const FftSettings& settings, double half_rate) {
  if (!settings.UpperLimitOn) return;
  const double denominator = spectrum_.TransformLength / 2.0 + 1;
  const double upper = text::LeadingNumber(settings.UpperLimitText) * 1e6;
  if (!(upper < spectrum_.StopFrequency)) return;
  spectrum_.StopFrequency = upper;
  // Without a sample rate there is no point for the limit; the range stays as it was.
  const double last = denominator * spectrum_.StopFrequency / half_rate;
  if (std::isfinite(last) && std::fabs(last) < std::numeric_limits<std::int32_t>::max()) {
    spectrum_.LastPoint = RoundToInt(last);
  }
  if (spectrum_.LastPoint < spectrum_.FirstPoint + 10) {
    spectrum_.LastPoint = spectrum_.FirstPoint + 10;
    spectrum_.StopFrequency = spectrum_.LastPoint / denominator * half_rate;
  }
}

std::optional<double> SpectrumAnalyzer::PointMagnitude(std::int32_t point) {
  if (spectrum_.Algorithm == kObjectFft) {
    double magnitude = 0;
    if (fourier_.Magnitude(point, &magnitude) != FourierStatus::kOk) return std::nullopt;
    return magnitude;
  }
  const auto i = static_cast<std::size_t>(point);
  if (i >= workspace_.RealOutput.size() || i >= workspace_.ImagOutput.size()) return std::nullopt;
  const double re = workspace_.RealOutput[i];
  const double im = workspace_.ImagOutput[i];
  return std::sqrt(re * re + im * im);
}

void SpectrumAnalyzer::StorePassLevels(const FftSettings& settings, std::int32_t last) {
  const std::int32_t n = spectrum_.TransformLength;
  // RMS volts of a bin: exact for a sine under the Hanning window (coherent gain 0.5).
  const double to_rms = (std::sqrt(2.0) / 2) / (n / 4.0);
  SpectrumHistory& history = spectrum_.History;
  const std::int32_t slot = spectrum_.AverageSlot;
  double* levels = history.Pass(slot);
  double* means = spectrum_.SpectrumLevel.data();
  const int unit = settings.SpectrumUnit;
  if (spectrum_.Algorithm == kObjectFft) {
    // A level that cannot be computed (the logarithm of zero, a bin the engine did not make)
    // keeps the value the pass already holds.
    for (std::int32_t i = 1; i <= last; ++i) {
      const std::optional<double> magnitude = PointMagnitude(i);
      if (!magnitude) continue;
      const double v = *magnitude * to_rms;
      if (unit == kUnitVoltsRms) {
        levels[i] = v;
      } else if (v > 0 && std::isfinite(v)) {
        if (unit == kUnitDbv) levels[i] = 20 * Log10(v);
        if (unit == kUnitDbm) levels[i] = 10 * Log10((v * v / 50) / 0.001);
      }
    }
    // Averaging happens in the displayed unit: dB levels are averaged as dB.
    history.Means(slot, 1, last, means);
    return;
  }
  const std::vector<double>& re = bins_from_pass_ ? workspace_.pass_bins_re : workspace_.RealOutput;
  const std::vector<double>& im = bins_from_pass_ ? workspace_.pass_bins_im : workspace_.ImagOutput;
  const std::int64_t outputs = std::min(std::ssize(re), std::ssize(im));
  const auto computed = static_cast<std::int32_t>(std::min<std::int64_t>(last, outputs - 1));
  // The levels, their sums and means in one sweep; the same numbers as Means.
  double* sums = history.SumsBefore(slot);
  const double count = slot;
  internal::StoreLevelsAndMeans(re.data(), im.data(), 1, computed, to_rms, unit, levels, sums,
                                count, means);
  history.AddedToSums(slot, 1, computed);
  for (std::int32_t i = std::max(computed + 1, 1); i <= last; ++i) means[i] = sums[i] / count;
}

void SpectrumAnalyzer::ComputeLevels(const FftSettings& settings, double half_rate) {
  const std::int32_t n = spectrum_.TransformLength;
  const double denominator = n / 2.0 + 1;
  std::vector<double>& level = spectrum_.SpectrumLevel;
  std::vector<double>& frequency = spectrum_.SpectrumFrequency;
  const auto size = static_cast<std::int32_t>(std::min(level.size(), frequency.size()));
  // Points 1..round(N/2 + 1), as far as the arrays hold them; everything else reads zero.
  const std::int32_t last = std::min(PointCount(n), size - 1);
  // Writes each entry once: a 2^19-point pass would spend milliseconds clearing first.
  const std::int32_t first_zero = std::max(last + 1, 1);
  if (size > 0) level[0] = frequency[0] = 0;
  std::fill(frequency.begin() + first_zero, frequency.end(), 0.0);
  for (std::int32_t i = 1; i <= last; ++i) frequency[i] = i / denominator * half_rate;

  SpectrumHistory& history = spectrum_.History;
  const std::int32_t slot = spectrum_.AverageSlot;
  std::int32_t stored = 0;  // points 1..stored have a level
  if (slot >= 1 && slot < history.passes()) {
    stored = std::max(std::min(last, history.points() - 1), 0);
    StorePassLevels(settings, stored);
  }
  std::fill(level.begin() + std::max(stored + 1, 1), level.end(), 0.0);
  if (last < 1) return;
  spectrum_.LevelTop = -5000;
  spectrum_.LevelBottom = 5000;
  for (std::int32_t i = 2; i <= last; ++i) {  // point 1 never sets the range
    if (level[i] > spectrum_.LevelTop) spectrum_.LevelTop = level[i];
    if (level[i] < spectrum_.LevelBottom) spectrum_.LevelBottom = level[i];
  }
}

void SpectrumAnalyzer::SetVerticalRange(int channel, const FftSettings& settings) {
  switch (settings.SpectrumUnit) {
    case kUnitDbv:
      spectrum_.LevelBottom = -120;
      break;
    case kUnitDbm:
      spectrum_.LevelBottom = -110;
      break;
    case kUnitVoltsRms:
      spectrum_.LevelTop = 4 * host_.ChannelScale(channel);
      spectrum_.LevelBottom = 0;
      return;
    default:
      return;
  }
  const int step = DecibelStep(spectrum_.LevelTop, spectrum_.LevelBottom);
  spectrum_.LevelTop = spectrum_.LevelBottom + 8.0 * step;
}

void SpectrumAnalyzer::ComputeSpectrum(int channel, std::int32_t offset,
                                       const FftSettings& settings) {
  if (host_.WindowMinimised() || spectrum_.SpectrumBusy) return;
  ui_.SetPointer(ui::PointerShape::kHourglass);
  spectrum_.SpectrumReady = false;
  spectrum_.SpectrumBusy = true;
  host_.SetProgressValue(0);
  spectrum_.SpectrumChannel = static_cast<std::int16_t>(channel);
  const std::int32_t n = spectrum_.TransformLength;
  if (n <= 0) {
    ui_.ShowMessage("No data", ui::MessageIcon::kCritical, ui::MessageButtons::kOk);
  } else {
    // Every entry is written below: resizing to the same length costs nothing.
    internal::ResizeFresh(spectrum_.SpectrumLevel, static_cast<std::size_t>(n) + 1);
    internal::ResizeFresh(spectrum_.SpectrumFrequency, static_cast<std::size_t>(n) + 1);
    if (spectrum_.AverageSlot == 1) BuildWindow(channel, settings);
    if (!TransformWindowedRecord(channel, offset)) {
      PrepareEngine();
      FillInput(channel, offset);
      RunEngine();
    }
    const double half_rate = host_.SampleRate() * 1000 / 2;
    const double denominator = n / 2.0 + 1;
    spectrum_.StartFrequency = spectrum_.FirstPoint / denominator * half_rate;
    spectrum_.StopFrequency = spectrum_.LastPoint / denominator * half_rate;
    ApplyUpperLimit(settings, half_rate);
    ComputeLevels(settings, half_rate);
    SetVerticalRange(channel, settings);
    host_.DrawSpectrum(channel);
    ui_.ProcessPendingEvents();
    // The oscilloscope needs time to acquire a fresh record before the next pass.
    if (spectrum_.AverageSlot < settings.AverageCount) ui_.Pause(1000);
    spectrum_.SpectrumReady = true;
  }
  host_.SetProgressValue(0);
  spectrum_.SpectrumBusy = false;
  ui_.SetPointer(ui::PointerShape::kDefault);
}

void SpectrumAnalyzer::MDISpectrum(std::int32_t start, std::int32_t stop,
                                   const FftSettings& settings) {
  if (!host_.MdiChecked() || spectrum_.MdiBusy) return;
  if (!host_.ChannelDisplayed(spectrum_.SpectrumChannel)) return;
  spectrum_.MdiBusy = true;
  const std::int64_t range = std::int64_t{stop} - start;
  spectrum_.TransformLength = static_cast<std::int32_t>(std::clamp<std::int64_t>(
      range, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
  if (range <= 0) {
    spectrum_.MdiBusy = false;
    return;
  }
  host_.RedrawStatusPanel();
  host_.SetLastZoomMode(2);
  spectrum_.AverageSlot = 1;
  host_.ShowAverageCount(1);
  spectrum_.Algorithm = kModuleFft;

  const int reference = host_.ReferenceChannel();
  const std::int32_t count = samples_.SampleCount(reference);
  const double sample_rate = host_.SampleRate();
  const int e = PaddingExponent(range);
  std::int32_t n = std::int32_t{1} << (e - 1);
  spectrum_.FrequencyResolution = sample_rate / n * 1000;
  // A shown range inside the record is transformed as it is; the window then spans it all.
  spectrum_.ZeroPadded = false;
  if ((std::int64_t{1} << e) > std::int64_t{count} - 1 && e <= kLargestPaddingExponent) {
    PadWithZeros(reference, count, e);
    n = std::int32_t{1} << e;
    spectrum_.ZeroPadded = true;
    spectrum_.FrequencyResolution = sample_rate / (count - 1) * 1000;
  }
  spectrum_.TransformLength = n;
  spectrum_.FirstPoint = 1;
  spectrum_.LastPoint = PointCount(n);
  spectrum_.QuarterPoint = RoundToInt(n / 4.0);

  ComputeSpectrum(reference, start, settings);

  spectrum_.FirstPoint = start;
  spectrum_.LastPoint = stop;
  spectrum_.TransformLength = count - 1;
  host_.SetLastZoomMode(0);
  host_.RestoreOscilloscopePane();
  spectrum_.MixedDomain = true;
  spectrum_.MdiBusy = false;
}

}  // namespace quarvelo::spectrum
