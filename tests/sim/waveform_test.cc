// Acquisition figures, the waveform transfer, what the channel path does to a signal and the
// signals a new simulator's inputs carry.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "sim/model/channel_data.h"
#include "sim/model/instrument.h"
#include "sim/signal/acquisition_geometry.h"

namespace quarvelo::sim {
namespace {

// Most tests compare samples with the noiseless signal: the inputs start silent.
InstrumentConfig Silent() {
  InstrumentConfig config;
  config.signal_preset = SignalPreset::kFlat;
  return config;
}

struct Preamble {
  double format, type, points, count, x_increment, x_origin, x_reference, y_increment, y_origin,
      y_reference;
};

Preamble ParsePreamble(const std::string& text) {
  Preamble p{};
  EXPECT_EQ(std::sscanf(text.c_str(), "%lf,%lf,%lf,%lf,%lf,%lf,%lf,%lf,%lf,%lf", &p.format, &p.type,
                        &p.points, &p.count, &p.x_increment, &p.x_origin, &p.x_reference,
                        &p.y_increment, &p.y_origin, &p.y_reference),
            10)
      << text;
  return p;
}

// The data bytes of a "#8nnnnnnnn..." block, checking the announced length.
std::string BlockData(const std::string& reply) {
  EXPECT_EQ(reply.substr(0, 2), "#8");
  EXPECT_EQ(reply.size(), 10 + std::stoul(reply.substr(2, 8)));
  return reply.substr(10);
}

unsigned Code(const std::string& codes, size_t i) { return static_cast<unsigned char>(codes[i]); }

// One BYTE transfer: its preamble, its codes and the volts they stand for.
struct Record {
  Preamble preamble;
  std::string codes;
  double Volts(size_t i) const {
    return (Code(codes, i) - preamble.y_reference) * preamble.y_increment + preamble.y_origin;
  }
};

Record Transfer(Instrument& instrument) {
  return {ParsePreamble(instrument.Execute(":WAVeform:PREamble?")),
          BlockData(instrument.Execute(":WAVeform:DATA?"))};
}

double MeanVolts(Instrument& instrument) {
  Record record = Transfer(instrument);
  double sum = 0;
  for (size_t i = 0; i < record.codes.size(); ++i) sum += record.Volts(i);
  return sum / record.codes.size();
}

struct GeometryCase {
  double max_rate, memory, scale;
  bool stopped;
  AcquisitionInputs::PointsMode mode;
  long requested;
  double rate;
  long record, available, delivered;
};

class GeometryTest : public testing::TestWithParam<GeometryCase> {};

TEST_P(GeometryTest, RateRecordAndTransferFollowTheTimeBase) {
  const GeometryCase& c = GetParam();
  AcquisitionInputs inputs;
  inputs.max_sample_rate = c.max_rate;
  inputs.memory_points = c.memory;
  inputs.timebase_scale = c.scale;
  inputs.stopped = c.stopped;
  inputs.points_mode = c.mode;
  inputs.requested_points = c.requested;
  AcquisitionGeometry geometry = ComputeGeometry(inputs);
  EXPECT_DOUBLE_EQ(geometry.sample_rate, c.rate);
  EXPECT_EQ(geometry.record_points, c.record);
  EXPECT_EQ(geometry.available_points, c.available);
  EXPECT_EQ(geometry.delivered_points, c.delivered);
  // What is delivered spans the ten divisions on screen, as on the instrument.
  EXPECT_NEAR(geometry.x_increment * geometry.delivered_points, 10 * c.scale, 1e-9 * c.scale);
  EXPECT_NEAR(geometry.x_origin, geometry.screen_left, 1e-9 * c.scale);
}

using Mode = AcquisitionInputs::PointsMode;
INSTANTIATE_TEST_SUITE_P(
    Table, GeometryTest,
    testing::Values(
        // 2000X: 100 kpts over ten divisions of 100 us: 100 MSa/s.
        GeometryCase{2e9, 100e3, 100e-6, false, Mode::kNormal, 1000, 1e8, 100000, 62500, 1000},
        GeometryCase{2e9, 100e3, 100e-6, true, Mode::kRaw, 524288, 1e8, 100000, 100000, 100000},
        GeometryCase{2e9, 100e3, 100e-6, false, Mode::kRaw, 524288, 1e8, 100000, 62500, 50000},
        // Fast time base: the rate tops out; points between samples are interpolated.
        GeometryCase{2e9, 100e3, 10e-9, true, Mode::kRaw, 524288, 2e9, 1000, 1000, 1000},
        // 3000X at 1 ms/div: 2 Mpts give 200 MSa/s; 524288 asked gives every fourth sample.
        GeometryCase{4e9, 2e6, 1e-3, true, Mode::kMaximum, 524288, 2e8, 2000000, 2000000, 500000},
        GeometryCase{4e9, 2e6, 1e-3, true, Mode::kNormal, 100, 2e8, 2000000, 62500, 100}));

class WaveformTest : public testing::Test {
 protected:
  void SetUp() override {
    instrument_.Execute(":SIMulate:CHANnel1:SIGNal SIN,1kHz,1.6,0.2");
    instrument_.Execute(":CHANnel1:SCALe 0.2;:CHANnel1:OFFSet 0.1;:TIMebase:SCALe 200us");
    instrument_.Execute(":WAVeform:SOURce CHANnel1;:WAVeform:FORMat BYTE");
    instrument_.Execute(":STOP;:WAVeform:POINts:MODE RAW;:WAVeform:POINts 10000");
  }
  Instrument instrument_{Silent()};
};

TEST_F(WaveformTest, VoltsFromCodesAndPreambleReproduceTheSignalWithinOneCode) {
  Record record = Transfer(instrument_);
  const Preamble& preamble = record.preamble;
  ASSERT_EQ(record.codes.size(), static_cast<size_t>(preamble.points));
  EXPECT_EQ(preamble.format, 0);
  EXPECT_EQ(preamble.y_reference, 128);
  EXPECT_NEAR(preamble.y_origin, 0.1, 1e-12);
  EXPECT_NEAR(preamble.y_increment, 10 * 0.2 / 255, 1e-9);
  EXPECT_EQ(instrument_.Execute(":WAVeform:POINts?"), "+" + std::to_string(record.codes.size()));
  // The signal itself, sampled at the preamble's times, from the trigger instant on.
  std::vector<double> expected = instrument_.WithState([&](InstrumentState& state) {
    Signal signal = ChannelInput(state, 1);
    double trigger = TriggerInstant(state);
    std::vector<double> values(record.codes.size());
    for (size_t i = 0; i < values.size(); ++i) {
      values[i] = signal.ValueAt(trigger + preamble.x_origin + i * preamble.x_increment);
    }
    return values;
  });
  for (size_t i = 0; i < expected.size(); ++i) {
    ASSERT_NEAR(record.Volts(i), expected[i], preamble.y_increment) << "sample " << i;
  }
}

TEST_F(WaveformTest, TriggerHoldsTheSignalStill) {
  // Sample at the trigger instant crosses the 0 V level rising: the data around x = 0.
  instrument_.Execute(":TRIGger:EDGE:LEVel 0.2;:TRIGger:EDGE:SLOPe POSitive");
  Record first = Transfer(instrument_);
  instrument_.Execute(":RUN");
  EXPECT_EQ(first.codes, Transfer(instrument_).codes);  // a noiseless repetitive signal
  size_t at_trigger =
      static_cast<size_t>(std::lround(-first.preamble.x_origin / first.preamble.x_increment));
  EXPECT_LT(first.Volts(at_trigger - 50), 0.2);
  EXPECT_GT(first.Volts(at_trigger + 50), 0.2);
}

TEST_F(WaveformTest, ClippingFollowsScaleAndOffset) {
  // 1.6 Vpp around 0.2 V at 20 mV/div: far beyond the five divisions either side.
  instrument_.Execute(":CHANnel1:SCALe 20mV;:CHANnel1:OFFSet 0");
  std::string data = BlockData(instrument_.Execute(":WAVeform:DATA?"));
  EXPECT_GT(std::count(data.begin(), data.end(), '\x01'), data.size() / 5);
  EXPECT_GT(std::count(data.begin(), data.end(), '\xff'), data.size() / 5);
  EXPECT_EQ(data.find('\0'), std::string::npos);  // no holes
}

TEST_F(WaveformTest, CouplingInvertAndProbeShapeWhatTheChannelShows) {
  // 0.2 V of DC content on a whole number of periods (2 ms record, 1 kHz).
  EXPECT_NEAR(MeanVolts(instrument_), 0.2, 0.01);
  instrument_.Execute(":CHANnel1:COUPling AC");
  EXPECT_NEAR(MeanVolts(instrument_), 0.0, 0.01);
  instrument_.Execute(":CHANnel1:COUPling DC;:CHANnel1:INVert 1;:CHANnel1:OFFSet 0");
  EXPECT_NEAR(MeanVolts(instrument_), -0.2, 0.01);
  instrument_.Execute(":CHANnel1:INVert 0;:CHANnel1:PROBe 10");
  EXPECT_NEAR(MeanVolts(instrument_), 2.0, 0.1);
}

TEST_F(WaveformTest, ChannelWithoutDataAnswersEmpty) {
  // Choosing a source turns that channel on, as the instrument does; off, it has no data.
  instrument_.Execute("*CLS;:WAVeform:SOURce CHANnel3");
  EXPECT_EQ(instrument_.Execute(":CHANnel3:DISPlay?"), "1");
  instrument_.Execute(":CHANnel3:DISPlay 0");
  EXPECT_EQ(instrument_.Execute(":WAVeform:POINts? MAX"), "+0");
  EXPECT_EQ(instrument_.Execute(":WAVeform:DATA?"), "#800000000");
  EXPECT_EQ(instrument_.Execute(":SYSTem:ERRor?"), "-222,\"Data out of range\"");
}

TEST_F(WaveformTest, GeneratorOutputReachesChannelOneThroughItsLoad) {
  instrument_.Execute(":SIMulate:CHANnel1:SIGNal WGEN1;:CHANnel1:SCALe 0.5;:CHANnel1:OFFSet 0");
  instrument_.Execute(
      ":WGEN1:FUNCtion SQUare;:WGEN1:FREQuency 1kHz;:WGEN1:VOLTage 1;"
      ":WGEN1:VOLTage:OFFSet 0.5");
  EXPECT_NEAR(MeanVolts(instrument_), 0.0, 0.01);  // output still off
  instrument_.Execute(":WGEN1:OUTPut 1");
  EXPECT_NEAR(MeanVolts(instrument_), 0.5, 0.02);
  instrument_.Execute(":WGEN1:OUTPut:LOAD FIFTy");  // a 1 MOhm input sees twice the level
  EXPECT_NEAR(MeanVolts(instrument_), 1.0, 0.04);
}

// The same acquisition in WORD and ASCii format gives the volts the BYTE codes give.
TEST_F(WaveformTest, WordAndAsciiFormatsAgreeWithByteCodes) {
  instrument_.Execute(":WAVeform:POINts 1000");
  Record bytes = Transfer(instrument_);
  instrument_.Execute(":WAVeform:FORMat WORD");
  Record words = Transfer(instrument_);
  EXPECT_EQ(words.preamble.format, 1);
  EXPECT_EQ(words.preamble.y_reference, 32768);
  instrument_.Execute(":WAVeform:FORMat ASCii");
  std::stringstream ascii(BlockData(instrument_.Execute(":WAVeform:DATA?")));
  ASSERT_EQ(words.codes.size(), 2 * bytes.codes.size());
  for (size_t i = 0; i < bytes.codes.size(); ++i) {
    int code = Code(words.codes, 2 * i) * 256 + Code(words.codes, 2 * i + 1);
    double from_word =
        (code - words.preamble.y_reference) * words.preamble.y_increment + words.preamble.y_origin;
    std::string field;
    ASSERT_TRUE(std::getline(ascii, field, ','));
    ASSERT_NEAR(from_word, bytes.Volts(i), 1e-9) << i;
    ASSERT_NEAR(std::stod(field), bytes.Volts(i), 1e-6) << i;
  }
}

// Signed codes are the unsigned ones less 128, with a y reference of 0; peak acquisitions
// pair each point's low with its high, so a narrow pulse between points still shows.
TEST(WaveformCodesTest, SignedCodesAndPeakPairs) {
  Instrument instrument{Silent()};
  instrument.Execute(
      ":SIMulate:CHANnel1:SIGNal PULSe,1kHz,2,0,1e-7;:CHANnel1:SCALe 0.5;:STOP;"
      ":WAVeform:POINts 1000");
  std::string unsigned_codes = BlockData(instrument.Execute(":WAVeform:DATA?"));
  instrument.Execute(":WAVeform:UNSigned 0");
  EXPECT_EQ(instrument.Execute(":WAVeform:YREFerence?"), "+0");
  std::string signed_codes = BlockData(instrument.Execute(":WAVeform:DATA?"));
  ASSERT_EQ(signed_codes.size(), unsigned_codes.size());
  for (size_t i = 0; i < signed_codes.size(); ++i) {
    ASSERT_EQ(static_cast<signed char>(signed_codes[i]), int(Code(unsigned_codes, i)) - 128);
  }
  // 100 ns pulses from -1 to +1 V every millisecond, points 1 us apart: the normal record
  // holds only the base (code 77).
  auto highest = [](const std::string& codes) {
    return static_cast<unsigned char>(*std::max_element(
        codes.begin(), codes.end(), [](unsigned char a, unsigned char b) { return a < b; }));
  };
  instrument.Execute(":WAVeform:UNSigned 1;:TIMebase:SCALe 100us;:TIMebase:POSition 5E-7");
  EXPECT_LT(highest(BlockData(instrument.Execute(":WAVeform:DATA?"))), 128);
  instrument.Execute(":ACQuire:TYPE PEAK");
  std::string peak = BlockData(instrument.Execute(":WAVeform:DATA?"));
  EXPECT_GT(highest(peak), 170);  // +1 V at 0.5 V/div: code 179
  for (size_t i = 0; i + 1 < peak.size(); i += 2) ASSERT_LE(Code(peak, i), Code(peak, i + 1));
}

TEST(MeasurementTest, VoltmeterReadsTheChannelsSignal) {
  Instrument instrument{InstrumentConfig{}};
  instrument.Execute(":SIMulate:CHANnel2:SIGNal SIN,2kHz,2,0.5");
  EXPECT_EQ(instrument.Execute(":DVM:CURRent?"), "+9.9E+37");  // voltmeter off
  instrument.Execute(":DVM:ENABle 1;:DVM:SOURce CHANnel2;:DVM:MODE DC");
  EXPECT_NEAR(std::stod(instrument.Execute(":DVM:CURRent?")), 0.5, 0.01);
  instrument.Execute(":DVM:MODE ACRMs");
  EXPECT_NEAR(std::stod(instrument.Execute(":DVM:CURRent?")), 1 / std::sqrt(2.0), 0.01);
  EXPECT_NEAR(std::stod(instrument.Execute(":DVM:FREQuency?")), 2000, 1e-6);
  instrument.Execute(":SIMulate:CHANnel2:SIGNal DC,0.3");
  EXPECT_EQ(instrument.Execute(":DVM:FREQuency?"), "+9.9E+37");
}

TEST(MeasurementTest, AutoscaleFindsTheSignals) {
  Instrument instrument{InstrumentConfig{}};
  instrument.Execute(":SIMulate:CHANnel1:SIGNal NONE;:SIMulate:CHANnel2:SIGNal SIN,5kHz,3");
  instrument.Execute(":SIMulate:CHANnel3:SIGNal NONE;:SIMulate:CHANnel4:SIGNal NONE;:STOP");
  instrument.Execute(":AUToscale");
  EXPECT_EQ(instrument.Execute(":CHANnel1:DISPlay?;:CHANnel2:DISPlay?"), "0;1");
  EXPECT_EQ(instrument.Execute(":CHANnel2:SCALe?"), "+5.00000E-01");
  EXPECT_EQ(instrument.Execute(":TIMebase:SCALe?"), "+5.00000000E-05");
  EXPECT_EQ(instrument.Execute(":TRIGger:EDGE:SOURce?;:OPERegister:CONDition?"), "CHAN2;+8");
  EXPECT_NEAR(std::stod(instrument.Execute(":MEASure:VPP? CHAN2")), 3.0, 0.05);
  EXPECT_NEAR(std::stod(instrument.Execute(":MEASure:FREQuency? CHAN2")), 5000, 1e-6);
}

TEST(ChannelPathTest, BandwidthLimitAttenuatesFastSignals) {
  Instrument instrument{Silent()};
  instrument.Execute(":SIMulate:CHANnel1:SIGNal SIN,100MHz,1;:TIMebase:SCALe 5ns;:STOP");
  double open = std::stod(instrument.Execute(":MEASure:VPP? CHAN1"));
  instrument.Execute(":CHANnel1:BWLimit 1");
  double limited = std::stod(instrument.Execute(":MEASure:VPP? CHAN1"));
  EXPECT_NEAR(open, 1.0, 0.02);
  EXPECT_LT(limited, 0.4 * open);
  // A slow signal passes untouched.
  instrument.Execute(":SIMulate:CHANnel1:SIGNal SIN,1MHz,1;:TIMebase:SCALe 200ns");
  EXPECT_NEAR(std::stod(instrument.Execute(":MEASure:VPP? CHAN1")), 1.0, 0.02);
}

TEST(ChannelPathTest, NoiseHasTheRequestedRms) {
  Instrument instrument{Silent()};
  instrument.Execute(":SIMulate:CHANnel1:SIGNal NOISe,0.1;:CHANnel1:SCALe 0.2;:STOP");
  instrument.Execute(":MEASure:SOURce CHAN1");
  EXPECT_NEAR(std::stod(instrument.Execute(":MEASure:VRMS? DISP,AC")), 0.1, 0.005);
  EXPECT_NEAR(std::stod(instrument.Execute(":MEASure:VAVerage?")), 0.0, 0.005);
}

TEST(ChannelPathTest, AmplitudeModulationShapesTheEnvelope) {
  Instrument instrument{Silent()};
  instrument.Execute(
      ":SIMulate:CHANnel1:SIGNal WGEN1;"
      ":WGEN1:FREQuency 100kHz;:WGEN1:VOLTage 2;:WGEN1:OUTPut 1;"
      ":WGEN1:MODulation:TYPE AM;:WGEN1:MODulation:AM:FREQuency 1kHz;"
      ":WGEN1:MODulation:AM:DEPTh 50;:WGEN1:MODulation:STATe 1");
  // One modulation period on screen: the peaks reach the set amplitude, the quietest part
  // of the envelope a third of it (depth 50 %: (1 - 0.5) / (1 + 0.5)).
  instrument.Execute(":TIMebase:SCALe 100us;:STOP");
  EXPECT_NEAR(std::stod(instrument.Execute(":MEASure:VMAX? CHAN1")), 1.0, 0.02);
  std::vector<double> envelope = instrument.WithState(
      [](InstrumentState& state) { return ChannelVolts(state, 1, 0, 1e-7, 10000); });
  double quietest = 10;
  for (size_t start = 0; start + 100 <= envelope.size(); start += 100) {
    double peak = 0;
    for (size_t i = start; i < start + 100; ++i) peak = std::max(peak, std::abs(envelope[i]));
    quietest = std::min(quietest, peak);
  }
  EXPECT_NEAR(quietest, 1.0 / 3.0, 0.02);
}

// The RMS level of the line at `frequency` in a channel's 20 ms record: a whole number of
// periods of every default signal, so the line falls on a bin and needs no window.
double LineLevel(Instrument& instrument, int channel, double frequency) {
  std::string source = "CHANnel" + std::to_string(channel);
  instrument.Execute(":" + source + ":DISPlay 1;:TIMebase:SCALe 2ms;:STOP;:WAVeform:SOURce " +
                     source + ";:WAVeform:POINts:MODE RAW;:WAVeform:POINts 100000");
  Record record = Transfer(instrument);
  std::complex<double> sum = 0;
  for (size_t i = 0; i < record.codes.size(); ++i) {
    sum +=
        record.Volts(i) * std::polar(1.0, -2 * M_PI * frequency * i * record.preamble.x_increment);
  }
  return std::abs(sum) * 2 / record.codes.size() / M_SQRT2;
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
  EXPECT_NEAR(20 * std::log10(LineLevel(instrument, c.channel, c.frequency) / c.volts_rms), 0.0,
              0.5);
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
  Instrument instrument{Silent()};
  instrument.Execute(":CHANnel2:DISPlay 1;:WAVeform:SOURce CHANnel2;:WGEN1:OUTPut 1");
  std::string block = instrument.Execute(":WAVeform:DATA?");
  EXPECT_EQ(block.find_first_not_of('\x80', 10), std::string::npos);
}

}  // namespace
}  // namespace quarvelo::sim
