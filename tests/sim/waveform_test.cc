// Acquisition figures, the waveform transfer, what the channel path does to a signal and the
// signals a new simulator's inputs carry.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <sstream>
#include <string>
#include <tuple>
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

int Code(const std::string& codes, size_t i) { return static_cast<unsigned char>(codes[i]); }

// One BYTE or WORD transfer: its preamble, its codes and the volts they stand for.
struct Record {
  Preamble preamble;
  std::string codes;
  double Volts(size_t i) const {
    const double code = preamble.format == 1 ? Code(codes, 2 * i) * 256 + Code(codes, 2 * i + 1)
                        : preamble.y_reference == 0 ? static_cast<signed char>(codes[i])
                                                    : Code(codes, i);
    return (code - preamble.y_reference) * preamble.y_increment + preamble.y_origin;
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
  const AcquisitionGeometry geometry = ComputeGeometry({.max_sample_rate = c.max_rate,
                                                        .memory_points = c.memory,
                                                        .timebase_scale = c.scale,
                                                        .points_mode = c.mode,
                                                        .requested_points = c.requested,
                                                        .stopped = c.stopped});
  EXPECT_DOUBLE_EQ(geometry.sample_rate, c.rate);
  EXPECT_EQ(
      std::tuple(geometry.record_points, geometry.available_points, geometry.delivered_points),
      std::tuple(c.record, c.available, c.delivered));
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
  EXPECT_EQ(std::tuple(preamble.format, preamble.y_reference), std::tuple(0.0, 128.0));
  EXPECT_NEAR(preamble.y_origin, 0.1, 1e-12);
  EXPECT_NEAR(preamble.y_increment, 10 * 0.2 / 255, 1e-9);
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

// Codes the program never reads, one row each: they stand for the volts of the BYTE codes.
TEST_F(WaveformTest, WordAsciiAndSignedCodesGiveTheVoltsOfTheByteCodes) {
  instrument_.Execute(":WAVeform:POINts 1000");
  const Record bytes = Transfer(instrument_);
  for (const auto& [setup, y_reference, size] :
       {std::tuple{":WAVeform:FORMat WORD", 32768.0, size_t{2000}},
        std::tuple{":WAVeform:FORMat BYTE;:WAVeform:UNSigned 0", 0.0, size_t{1000}}}) {
    instrument_.Execute(setup);
    const Record other = Transfer(instrument_);
    EXPECT_EQ(other.preamble.y_reference, y_reference);
    ASSERT_EQ(other.codes.size(), size) << setup;
    for (size_t i = 0; i < 1000; ++i) ASSERT_NEAR(other.Volts(i), bytes.Volts(i), 1e-9) << setup;
  }
  instrument_.Execute(":WAVeform:FORMat ASCii");
  std::istringstream ascii(BlockData(instrument_.Execute(":WAVeform:DATA?")));
  for (size_t i = 0; i < 1000; ++i) {
    std::string field;
    ASSERT_TRUE(std::getline(ascii, field, ',')) << i;
    ASSERT_NEAR(std::stod(field), bytes.Volts(i), 1e-6) << i;
  }
}

// A peak record pairs each point's low with its high: 100 ns pulses to +1 V between points
// 1 us apart still show (code 179 at 0.5 V/div, the base is code 77).
TEST(WaveformCodesTest, PeakRecordPairsLowAndHigh) {
  Instrument instrument{Silent()};
  instrument.Execute(
      ":SIMulate:CHANnel1:SIGNal PULSe,1kHz,2,0,1e-7;:CHANnel1:SCALe 0.5;:STOP;"
      ":WAVeform:POINts 1000;:TIMebase:SCALe 100us;:TIMebase:POSition 5E-7;:ACQuire:TYPE PEAK");
  const std::string codes = BlockData(instrument.Execute(":WAVeform:DATA?"));
  int highest = 0;
  for (size_t i = 0; i + 1 < codes.size(); i += 2) {
    ASSERT_LE(Code(codes, i), Code(codes, i + 1));
    highest = std::max(highest, Code(codes, i + 1));
  }
  EXPECT_GT(highest, 170);
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
                   0.25 / M_SQRT2},
        // The generator's AM, peaks at 1 V: a sideband 1 kHz off the carrier, m / 2 of it.
        SignalCase{"GeneratorAmSideband", 1,
                   ":SIMulate:CHANnel1:SIGNal WGEN1;:WGEN1:FREQuency 20kHz;:WGEN1:VOLTage 2;"
                   ":WGEN1:OUTPut 1;:WGEN1:MODulation:TYPE AM;:WGEN1:MODulation:AM:FREQuency 1kHz;"
                   ":WGEN1:MODulation:AM:DEPTh 50;:WGEN1:MODulation:STATe 1",
                   21e3, 0.25 / 1.5 / M_SQRT2}),
    [](const testing::TestParamInfo<SignalCase>& info) { return info.param.name; });

TEST(DefaultSignalTest, FlatPresetIsSilent) {
  Instrument instrument{Silent()};
  instrument.Execute(":CHANnel2:DISPlay 1;:WAVeform:SOURce CHANnel2;:WGEN1:OUTPut 1");
  std::string block = instrument.Execute(":WAVeform:DATA?");
  EXPECT_EQ(block.find_first_not_of('\x80', 10), std::string::npos);
}

}  // namespace
}  // namespace quarvelo::sim
