// The signals a new simulator's inputs carry: each one's spectrum, computed from the
// instrument's own waveform transfer, has its fundamental where theory puts it.
#include <fftw3.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "sim/model/instrument.h"

namespace quarvelo::sim {
namespace {

struct Line {
  double frequency = 0;
  double volts_rms = 0;
};

// The strongest line of a channel's record over 20 ms (50 Hz bins), found with a flat-top
// window so that its level holds wherever it falls between bins.
Line StrongestLine(Instrument& instrument, int channel) {
  std::string source = "CHANnel" + std::to_string(channel);
  instrument.Execute(":" + source + ":DISPlay 1;:TIMebase:SCALe 2ms;:STOP;:WAVeform:SOURce " +
                     source + ";:WAVeform:POINts:MODE RAW;:WAVeform:POINts 100000");
  std::vector<double> preamble;
  std::stringstream fields(instrument.Execute(":WAVeform:PREamble?"));
  for (std::string field; std::getline(fields, field, ',');) preamble.push_back(std::stod(field));
  std::string block = instrument.Execute(":WAVeform:DATA?");
  std::string codes = block.substr(2 + (block[1] - '0'));
  const size_t n = codes.size();
  EXPECT_EQ(n, static_cast<size_t>(preamble.at(2)));
  std::vector<double> samples(n);
  double mean = 0;
  for (size_t i = 0; i < n; ++i) {
    samples[i] = (static_cast<unsigned char>(codes[i]) - preamble[9]) * preamble[7] + preamble[8];
    mean += samples[i] / n;
  }
  // Without its DC content, whose window skirt would hide the lowest lines.
  double window_sum = 0;
  for (size_t i = 0; i < n; ++i) {
    double x = 2 * M_PI * i / n;
    double weight = 0.21557895 - 0.41663158 * std::cos(x) + 0.277263158 * std::cos(2 * x) -
                    0.083578947 * std::cos(3 * x) + 0.006947368 * std::cos(4 * x);
    window_sum += weight;
    samples[i] = (samples[i] - mean) * weight;
  }
  std::vector<fftw_complex> spectrum(n / 2 + 1);
  fftw_plan plan =
      fftw_plan_dft_r2c_1d(static_cast<int>(n), samples.data(), spectrum.data(), FFTW_ESTIMATE);
  fftw_execute(plan);
  fftw_destroy_plan(plan);
  size_t peak = 2;
  auto magnitude = [&](size_t k) { return std::hypot(spectrum[k][0], spectrum[k][1]); };
  for (size_t k = 2; k <= n / 2; ++k) {
    if (magnitude(k) > magnitude(peak)) peak = k;
  }
  double bin_hz = 1.0 / (n * preamble[4]);
  return {peak * bin_hz, 2 * magnitude(peak) / window_sum / std::sqrt(2.0)};
}

struct SignalCase {
  const char* name;
  int channel;
  const char* setup;
  double frequency;
  double volts_rms;  // the fundamental's level in theory
};

class DefaultSignalTest : public testing::TestWithParam<SignalCase> {};

TEST_P(DefaultSignalTest, FundamentalAtItsFrequencyAndLevel) {
  const SignalCase& c = GetParam();
  Instrument instrument{InstrumentConfig{}};
  instrument.Execute(c.setup);
  Line line = StrongestLine(instrument, c.channel);
  EXPECT_NEAR(line.frequency, c.frequency, 50.0);
  EXPECT_NEAR(20 * std::log10(line.volts_rms / c.volts_rms), 0.0, 0.5);
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, DefaultSignalTest,
    testing::Values(
        // A 0 to 2.5 V square: the fundamental's peak is 4 / pi of half its swing.
        SignalCase{"ProbeCompensation", 1, "", 1e3, 4 / M_PI * 1.25 / M_SQRT2},
        SignalCase{"SineWithHarmonics", 2, "", 10e3, 1 / M_SQRT2},
        // AM at depth m with the envelope's peak at 1 V: the carrier is 1 / (1 + m).
        SignalCase{"ModulatedCarrier", 3, "", 20e3, 1 / 1.5 / M_SQRT2},
        // The generator's preset output, 500 mVpp at 1 kHz, once it is switched on.
        SignalCase{"GeneratorOutput", 4, ":WGEN1:OUTPut 1;:CHANnel4:SCALe 0.1", 1e3,
                   0.25 / M_SQRT2}),
    [](const testing::TestParamInfo<SignalCase>& info) { return info.param.name; });

TEST(DefaultSignalTest, FlatPresetIsSilent) {
  InstrumentConfig config;
  config.signal_preset = SignalPreset::kFlat;
  Instrument instrument{config};
  instrument.Execute(":CHANnel2:DISPlay 1;:WAVeform:SOURce CHANnel2;:WGEN1:OUTPut 1");
  std::string block = instrument.Execute(":WAVeform:DATA?");
  EXPECT_EQ(block.find_first_not_of('\x80', 10), std::string::npos);
}

}  // namespace
}  // namespace quarvelo::sim
