#include "spectrum/spectrum_analyzer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>
#include <vector>

#include "fftw_reference.h"
#include "platform/ui/recording_ui.h"
#include "spectrum/averaging.h"
#include "spectrum/window_function.h"
#include "spectrum_fakes.h"

namespace quarvelo::spectrum {
namespace {

class SpectrumAnalyzerTest : public testing::Test {
 protected:
  // Sets up averaging pass `pass` of a transform of n points (no padding) over `samples`.
  void UseRecord(std::int32_t n, std::vector<double> samples, int algorithm, int pass = 1) {
    store_.SetRecord(1, std::move(samples));
    spectrum_.TransformLength = n;
    spectrum_.ZeroPadded = false;
    spectrum_.Algorithm = static_cast<std::int16_t>(algorithm);
    BeginAveragingPass(spectrum_, pass, 1, host_.sample_rate);
  }
  // The highest level of points 2 .. last_point, and its point.
  std::pair<double, std::int32_t> Peak(std::int32_t last_point) const {
    const auto begin = spectrum_.SpectrumLevel.begin() + 2;
    const auto it = std::max_element(begin, spectrum_.SpectrumLevel.begin() + last_point + 1);
    return {*it, static_cast<std::int32_t>(it - spectrum_.SpectrumLevel.begin())};
  }

  Spectrum spectrum_;
  FourierWorkspace workspace_;
  clsFourier fourier_;
  MemorySampleStore store_;
  FakeSpectrumHost host_;
  ui::RecordingUi ui_;
  bool stop_requested_ = false;
  SpectrumAnalyzer analyzer_{spectrum_, workspace_, fourier_, store_, host_, ui_, stop_requested_};
  FftSettings settings_;
};

struct PlanCase {
  std::int32_t count;
  int algorithm;
  std::int32_t transform_length;
  bool padded;
  const char* first_line;
  double resolution_divisor;  // resolution = sample rate * 1000 / divisor
};

class PlanTransformTest : public SpectrumAnalyzerTest,
                          public testing::WithParamInterface<PlanCase> {};

TEST_P(PlanTransformTest, PadsToThePowerOfTwoAboveTheLastIndex) {
  const PlanCase& c = GetParam();
  store_.SetRecord(2, std::vector<double>(c.count, 1.0));
  settings_.Algorithm = static_cast<std::int16_t>(c.algorithm);
  const std::optional<PlanLines> lines = analyzer_.PlanTransform(2, false, settings_);
  ASSERT_TRUE(lines.has_value());
  EXPECT_EQ(spectrum_.TransformLength, c.transform_length);
  EXPECT_EQ(spectrum_.ZeroPadded, c.padded);
  EXPECT_EQ(spectrum_.Algorithm, c.algorithm);
  EXPECT_EQ(lines->first, c.first_line);
  EXPECT_DOUBLE_EQ(spectrum_.FrequencyResolution, host_.sample_rate * 1000 / c.resolution_divisor);
  const std::vector<double>& storage = store_.storage(2);
  if (c.padded) {
    ASSERT_GE(std::ssize(storage), c.transform_length + 1);
    for (std::int32_t i = c.count; i <= c.transform_length; ++i) ASSERT_EQ(storage[i], 0.0) << i;
  }
  EXPECT_EQ(storage[c.count - 1], 1.0) << "the record itself is kept";
}

INSTANTIATE_TEST_SUITE_P(
    Records, PlanTransformTest,
    testing::Values(PlanCase{1000, kModuleFft, 1024, true, "FFT:500 pts", 999},
                    PlanCase{1023, kModuleFft, 1024, true, "FFT:511 pts", 1022},
                    PlanCase{1024, kModuleFft, 1024, true, "FFT:512 pts", 1023},
                    PlanCase{1025, kObjectFft, 2048, true, "FFT:512 pts", 1024},
                    PlanCase{2, kModuleFft, 2, true, "FFT:1 pts", 1},
                    PlanCase{524288, kModuleFft, 524288, true, "FFT:262144 pts", 524287},
                    PlanCase{524289, kModuleFft, 524288, false, "FFT:262144 pts", 524288},
                    PlanCase{600000, kModuleFft, 524288, false, "FFT:262144 pts", 524288},
                    PlanCase{1001, kDft, 1000, false, "DFT:500 pts", 1000}));

TEST_F(SpectrumAnalyzerTest, PlanPrintsTheResolutionAndOscilloscopeLinesAndRefusesNoRecord) {
  host_.sample_rate = 1e6;  // 1 GSa/s
  store_.SetRecord(1, std::vector<double>(1000, 0.0));
  EXPECT_EQ(analyzer_.PlanTransform(1, false, settings_).value().second, "RES 1.001MHz");
  EXPECT_EQ(analyzer_.PlanTransform(1, true, settings_).value().first, "OSC: 1000 pts");
  store_.SetRecord(1, {});
  EXPECT_FALSE(analyzer_.PlanTransform(1, false, settings_).has_value());
  EXPECT_EQ(ui_.status(), "Analyse error");
  EXPECT_EQ(spectrum_.TransformLength, 0);
}

struct ChoiceCase {
  int auto_algorithm;
  int algorithm;
  std::int32_t averages;
  std::int32_t n;
  int expected;
  bool overridden;
};

class ChooseAlgorithmTest : public SpectrumAnalyzerTest,
                            public testing::WithParamInterface<ChoiceCase> {};

TEST_P(ChooseAlgorithmTest, KeepsTheDftToSmallWork) {
  const ChoiceCase& c = GetParam();
  settings_.AutoAlgorithm = static_cast<std::int16_t>(c.auto_algorithm);
  settings_.Algorithm = static_cast<std::int16_t>(c.algorithm);
  settings_.AverageCount = c.averages;
  EXPECT_EQ(analyzer_.ChooseAlgorithm(c.n, settings_), c.expected);
  using Lines = std::vector<std::string>;
  EXPECT_EQ(ui_.status_lines(),
            c.overridden ? Lines{"Numsamples too high for DFT, FFT Selected"} : Lines{});
  EXPECT_EQ(ui_.pauses(), c.overridden ? std::vector<int>{500} : std::vector<int>{});
}

INSTANTIATE_TEST_SUITE_P(Choices, ChooseAlgorithmTest,
                         testing::Values(ChoiceCase{1, kObjectFft, 1, 15000, kDft, false},
                                         ChoiceCase{1, kObjectFft, 1, 16000, kModuleFft, false},
                                         ChoiceCase{1, kDft, 4, 8000, kModuleFft, false},
                                         ChoiceCase{0, kDft, 16, 10000, kModuleFft, true},
                                         ChoiceCase{0, kDft, 1, 31622, kDft, false},
                                         ChoiceCase{0, kObjectFft, 16, 100000, kObjectFft, false},
                                         ChoiceCase{0, 9, 1, 100, kModuleFft, false}));

// A sine of amplitude A at a bin centre reads A/sqrt(2) V RMS under the Hanning window.
struct LevelCase {
  int algorithm;
  int unit;
  double amplitude;
  double expected;
  double tolerance;
};

class SineLevelTest : public SpectrumAnalyzerTest, public testing::WithParamInterface<LevelCase> {};

TEST_P(SineLevelTest, ReadsTheRmsLevelInTheChosenUnit) {
  const LevelCase& c = GetParam();
  const std::int32_t n = 4096;
  constexpr int kCycles = 37;
  UseRecord(n, Sine(n + 2, c.amplitude, kCycles, n), c.algorithm);
  settings_.SpectrumUnit = static_cast<std::int16_t>(c.unit);
  analyzer_.ComputeSpectrum(1, 1, settings_);
  // The DFT has no bin for the last point, whose level stays at the history's 0 (not the
  // logarithm of an empty bin).
  const auto [level, point] = Peak(c.algorithm == kDft ? n / 2 : n / 2 + 1);
  EXPECT_NEAR(level, c.expected, c.tolerance);
  EXPECT_TRUE(c.algorithm != kDft || spectrum_.SpectrumLevel[n / 2 + 1] == 0.0);
  // The object engine's point i holds bin i - 1; the module engines' point i holds bin i.
  EXPECT_EQ(point, c.algorithm == kObjectFft ? kCycles + 1 : kCycles);
  EXPECT_TRUE(spectrum_.SpectrumReady);
  EXPECT_DOUBLE_EQ(spectrum_.SpectrumFrequency[point],
                   point / (n / 2.0 + 1) * host_.sample_rate * 1000 / 2);
}

// Each unit and each engine once: the engines' bins are checked against FFTW elsewhere.
const double kRoot2 = std::sqrt(2.0);
INSTANTIATE_TEST_SUITE_P(
    UnitsAndEngines, SineLevelTest,
    testing::Values(LevelCase{kModuleFft, kUnitVoltsRms, 2.0, 2.0 / kRoot2, 2e-3},
                    LevelCase{kModuleFft, kUnitDbv, 2.0, 20 * std::log10(2.0 / kRoot2), 0.01},
                    LevelCase{kModuleFft, kUnitDbm, 1.0, 10.0, 0.01},
                    LevelCase{kObjectFft, kUnitDbv, 0.5, 20 * std::log10(0.5 / kRoot2), 0.01},
                    LevelCase{kDft, kUnitDbv, 1.0, 20 * std::log10(1.0 / kRoot2), 0.03}));

struct RangeCase {
  int unit;
  double peak_level;  // dBV of the sine
  double bottom;
  double top;
};

class VerticalRangeTest : public SpectrumAnalyzerTest,
                          public testing::WithParamInterface<RangeCase> {};

TEST_P(VerticalRangeTest, EightDivisionsAboveTheFixedBottom) {
  const RangeCase& c = GetParam();
  const std::int32_t n = 1024;
  const double amplitude = std::pow(10.0, c.peak_level / 20) * kRoot2;
  settings_.SpectrumUnit = static_cast<std::int16_t>(c.unit);
  // Rectangular window at a bin centre: the other bins are empty, so only the peak counts.
  settings_.WindowIndex = 0;
  UseRecord(n, Sine(n + 2, amplitude, 64, n), kModuleFft);
  analyzer_.ComputeSpectrum(1, 1, settings_);
  EXPECT_EQ(spectrum_.LevelBottom, c.bottom);
  EXPECT_EQ(spectrum_.LevelTop, c.top);
}

// Without the Hanning gain a rectangular window reads the sine 6.02 dB high.
INSTANTIATE_TEST_SUITE_P(
    Ranges, VerticalRangeTest,
    testing::Values(RangeCase{kUnitDbv, -20 - 6.0206, -120, 0},        // d 12.5, step 15
                    RangeCase{kUnitDbv, -50 - 6.0206, -120, -40},      // d 8.75, step 10
                    RangeCase{kUnitDbv, 30 - 6.0206, -120, 40},        // d 18.75, step 20
                    RangeCase{kUnitDbv, 75 - 6.0206, -120, 80},        // d 24.4, step 25
                    RangeCase{kUnitDbv, 100 - 6.0206, -120, 120},      // d 27.5, step 30
                    RangeCase{kUnitDbv, 200 - 6.0206, -120, 248},      // round(320 / 7) = 46
                    RangeCase{kUnitDbm, -20 - 6.0206, -110, 10},       // -7 dBm: d 12.9, step 15
                    RangeCase{kUnitVoltsRms, -20 - 6.0206, 0, 2.0}));  // 4 divisions x 0.5 V

TEST_F(SpectrumAnalyzerTest, AveragesPassesInTheDisplayedUnitWithPausesBetween) {
  const std::int32_t n = 1024;
  settings_.AverageCount = 4;
  settings_.SpectrumUnit = kUnitDbv;
  const double amplitudes[] = {1.0, 0.1, 1.0, 0.01};
  double sum = 0;  // of the passes' peak levels in dBV
  std::vector<double> first_pass_window;
  for (int pass = 1; pass <= 4; ++pass) {
    UseRecord(n, Sine(n + 2, amplitudes[pass - 1], 50, n), kModuleFft, pass);
    if (pass == 2) settings_.WindowIndex = 0;  // takes effect at the next run only
    analyzer_.ComputeSpectrum(1, 1, settings_);
    sum += 20 * std::log10(amplitudes[pass - 1] / kRoot2);
    EXPECT_NEAR(spectrum_.SpectrumLevel[50], sum / pass, 0.01) << pass;
    if (pass == 1) first_pass_window = spectrum_.WindowWeights;
  }
  EXPECT_EQ(spectrum_.WindowWeights, first_pass_window);
  EXPECT_EQ(ui_.pauses(), (std::vector<int>{1000, 1000, 1000}));
  EXPECT_EQ(host_.drawn_channels, (std::vector<int>{1, 1, 1, 1}));
}

struct LimitCase {
  bool on;
  const char* megahertz;
  std::int32_t last_point;
  double stop_frequency;
};

class UpperLimitTest : public SpectrumAnalyzerTest,
                       public testing::WithParamInterface<LimitCase> {};

TEST_P(UpperLimitTest, CutsTheShownPoints) {
  host_.sample_rate = 200000;  // 200 MSa/s: points up to 100 MHz
  const std::int32_t n = 1024;
  UseRecord(n, Sine(n + 2, 1.0, 10, n), kModuleFft);
  settings_.UpperLimitOn = GetParam().on;
  settings_.UpperLimitText = GetParam().megahertz;
  analyzer_.ComputeSpectrum(1, 1, settings_);
  EXPECT_EQ(spectrum_.FirstPoint, 1);
  EXPECT_EQ(spectrum_.LastPoint, GetParam().last_point);
  EXPECT_NEAR(spectrum_.StopFrequency, GetParam().stop_frequency, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Limits, UpperLimitTest,
                         testing::Values(LimitCase{true, "10", 51, 10e6},  // round(513 / 10)
                                         LimitCase{true, "0.001", 11, 11 / 513.0 * 100e6},
                                         LimitCase{true, "abc", 11, 11 / 513.0 * 100e6},
                                         LimitCase{true, "150", 513, 100e6},
                                         LimitCase{false, "10", 513, 100e6}));

TEST_F(SpectrumAnalyzerTest, NoDataShowsTheMessageAndRestoresTheFlags) {
  spectrum_.TransformLength = 0;
  analyzer_.ComputeSpectrum(1, 1, settings_);
  ASSERT_EQ(ui_.messages().size(), 1u);
  EXPECT_EQ(std::tuple(ui_.messages()[0].text, ui_.messages()[0].icon, spectrum_.SpectrumBusy,
                       spectrum_.SpectrumReady, ui_.pointer(), host_.drawn_channels.size()),
            std::tuple("No data", ui::MessageIcon::kCritical, false, false,
                       ui::PointerShape::kDefault, 0u));
}

TEST_F(SpectrumAnalyzerTest, MinimisedOrBusyWindowComputesNothing) {
  UseRecord(64, Sine(66, 1.0, 4, 64), kModuleFft);
  host_.minimised = true;
  analyzer_.ComputeSpectrum(1, 1, settings_);
  EXPECT_TRUE(host_.drawn_channels.empty());
  host_.minimised = false;
  int nested_draws = 0;
  host_.on_draw = [&] {
    host_.on_draw = nullptr;
    analyzer_.ComputeSpectrum(1, 1, settings_);  // re-entry while drawing is a no-op
    nested_draws = static_cast<int>(host_.drawn_channels.size());
  };
  analyzer_.ComputeSpectrum(1, 1, settings_);
  EXPECT_EQ(nested_draws, 1);
  EXPECT_EQ(host_.drawn_channels.size(), 1u);
  EXPECT_FALSE(spectrum_.SpectrumBusy);
}

TEST_F(SpectrumAnalyzerTest, BadLengthForTheModuleFftShowsTheBoxAndContinues) {
  UseRecord(1000, Sine(1002, 1.0, 5, 1000), kModuleFft);
  analyzer_.ComputeSpectrum(1, 1, settings_);
  ASSERT_EQ(ui_.messages().size(), 1u);
  EXPECT_NE(ui_.messages()[0].text.find("NumSamples is 1000,"), std::string::npos);
  EXPECT_TRUE(spectrum_.SpectrumReady);
  EXPECT_EQ(host_.drawn_channels.size(), 1u);
}

TEST_F(SpectrumAnalyzerTest, SamplesOutsideTheStorageReadAsZero) {
  // A record shorter than the transform: the input past the storage stays zero, no crash.
  UseRecord(256, std::vector<double>(10, 1.0), kObjectFft);
  analyzer_.ComputeSpectrum(1, 5, settings_);
  EXPECT_TRUE(spectrum_.SpectrumReady);
  UseRecord(256, std::vector<double>(10, 1.0), kModuleFft);
  analyzer_.ComputeSpectrum(1, -300, settings_);
  EXPECT_TRUE(spectrum_.SpectrumReady);
}

TEST_F(SpectrumAnalyzerTest, ReusedWorkspaceGivesTheSameSpectrumAsAFreshOne) {
  // Pass 1 fills every input; pass 2 of the same length has samples for a few only. The
  // inputs it has no sample for must not keep pass 1's values.
  const std::int32_t n = 512;
  UseRecord(n, Sine(n + 2, 1.0, 30, n), kModuleFft);
  settings_.SpectrumUnit = kUnitVoltsRms;
  analyzer_.ComputeSpectrum(1, 1, settings_);
  store_.SetRecord(1, Sine(100, 0.5, 7, 100));
  analyzer_.ComputeSpectrum(1, 1, settings_);

  Spectrum fresh_spectrum = spectrum_;
  FourierWorkspace fresh_workspace;
  clsFourier fresh_fourier;
  SpectrumAnalyzer fresh(fresh_spectrum, fresh_workspace, fresh_fourier, store_, host_, ui_,
                         stop_requested_);
  fresh.ComputeSpectrum(1, 1, settings_);
  EXPECT_EQ(spectrum_.SpectrumLevel, fresh_spectrum.SpectrumLevel);
}

TEST_F(SpectrumAnalyzerTest, MixedDomainSpectrumOfTheShownSamples) {
  store_.SetRecord(1, Sine(5000, 1.0, 100, 1000));
  spectrum_.SpectrumChannel = 1;
  settings_.AverageCount = 1;
  analyzer_.MDISpectrum(1000, 3000, settings_);
  using Ints = std::vector<int>;
  EXPECT_EQ(std::tuple(host_.drawn_channels, host_.average_counts, host_.zoom_modes,
                       host_.pane_restores, host_.status_panel_redraws, spectrum_.MdiBusy),
            std::tuple(Ints{1}, Ints{1}, Ints{2, 0}, 1, 1, false));
  // The oscilloscope view's values are back.
  EXPECT_EQ(std::tuple(spectrum_.FirstPoint, spectrum_.LastPoint, spectrum_.TransformLength,
                       spectrum_.Algorithm),
            std::tuple(1000, 3000, 4999, kModuleFft));
  // 2000 samples in range: transformed as 1024 of them.
  EXPECT_DOUBLE_EQ(spectrum_.FrequencyResolution, host_.sample_rate / 1024 * 1000);
}

TEST_F(SpectrumAnalyzerTest, MixedDomainNeedsTheToolAndADisplayedChannelAndARange) {
  store_.SetRecord(1, Sine(500, 1.0, 10, 100));
  spectrum_.TransformLength = 77;
  host_.mdi_checked = false;
  analyzer_.MDISpectrum(0, 400, settings_);
  host_.mdi_checked = true;
  host_.displayed[1] = false;
  analyzer_.MDISpectrum(0, 400, settings_);
  EXPECT_TRUE(host_.drawn_channels.empty());
  EXPECT_EQ(spectrum_.TransformLength, 77);
  host_.displayed[1] = true;
  analyzer_.MDISpectrum(400, 400, settings_);
  EXPECT_TRUE(host_.drawn_channels.empty());
  EXPECT_EQ(spectrum_.TransformLength, 0);
  EXPECT_FALSE(spectrum_.MdiBusy);
}

TEST_F(SpectrumAnalyzerTest, MixedDomainRangeReachingTheRecordEndIsPadded) {
  store_.SetRecord(1, Sine(1000, 1.0, 10, 100));
  analyzer_.MDISpectrum(0, 999, settings_);
  EXPECT_TRUE(spectrum_.ZeroPadded);
  EXPECT_DOUBLE_EQ(spectrum_.FrequencyResolution, host_.sample_rate / 999 * 1000);
  EXPECT_EQ(store_.storage(1)[1024], 0.0);
}

// RMS volts of every point as the definition gives them through FFTW: point i holds bin i of
// the transform of inputs 0..n-1, where input i is sample offset + i times the Hanning weight
// over `span` (zero past it) and input 0 is 0.
std::vector<double> ReferenceLevels(const std::vector<double>& record, std::int32_t offset,
                                    std::int32_t n, std::int64_t span) {
  std::vector<std::complex<double>> input(n);
  for (std::int32_t i = 1; i < n; ++i) {
    const std::size_t at = static_cast<std::size_t>(offset + i);
    const double sample = at < record.size() ? record[at] : 0.0;
    input[i] = sample * (i <= span ? *WindowWeight(6, i, span, kProgramTwoPi) : 0.0);
  }
  const auto bins = ReferenceDft(input, +1);
  std::vector<double> levels(n / 2 + 2);
  for (std::int32_t i = 1; i <= n / 2; ++i) {
    levels[i] = std::abs(bins[i]) * (std::sqrt(2.0) / 2) / (n / 4.0);
  }
  return levels;
}

void ExpectLevels(const Spectrum& spectrum, const std::vector<double>& expected) {
  for (std::size_t i = 1; i < expected.size() - 1; ++i) {
    ASSERT_NEAR(spectrum.SpectrumLevel[i], expected[i], 1e-9) << "point " << i;
  }
}

std::vector<double> RandomRecord(std::size_t size, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::vector<double> record(size);
  for (double& x : record) x = value(random);
  return record;
}

// A 1000-sample record pads to 1024 with zeros, and its window spans the 999 samples only.
TEST_F(SpectrumAnalyzerTest, ZeroPaddedRecordEndToEnd) {
  const std::vector<double> record = RandomRecord(1000, 11);
  store_.SetRecord(1, record);
  ASSERT_TRUE(analyzer_.PlanTransform(1, false, settings_));
  ASSERT_TRUE(spectrum_.ZeroPadded);
  ASSERT_EQ(spectrum_.TransformLength, 1024);
  BeginAveragingPass(spectrum_, 1, 1, host_.sample_rate);
  settings_.SpectrumUnit = kUnitVoltsRms;
  analyzer_.ComputeSpectrum(1, 1, settings_);
  ExpectLevels(spectrum_, ReferenceLevels(record, 1, 1024, 999));
}

// A record shifted by one sample gives the same spectrum one offset later, in the averaging
// pass and in the mixed-domain spectrum, whose start is the offset.
TEST_F(SpectrumAnalyzerTest, ShiftedRecordMapsTheSampleOffset) {
  const std::vector<double> record = RandomRecord(3000, 12);
  settings_.SpectrumUnit = kUnitVoltsRms;
  UseRecord(1024, record, kModuleFft);
  analyzer_.ComputeSpectrum(1, 2, settings_);
  ExpectLevels(spectrum_, ReferenceLevels(record, 2, 1024, 1024));

  analyzer_.MDISpectrum(700, 1600, settings_);  // 900 samples: 512 transformed
  ASSERT_FALSE(spectrum_.ZeroPadded);
  ExpectLevels(spectrum_, ReferenceLevels(record, 700, 512, 512));
}

}  // namespace
}  // namespace quarvelo::spectrum
