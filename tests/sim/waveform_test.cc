// Acquisition figures, the waveform transfer and what the channel path does to a signal.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "sim/model/channel_data.h"
#include "sim/model/instrument.h"
#include "sim/signal/acquisition_geometry.h"

namespace quarvelo::sim {
namespace {

// These tests compare samples with the noiseless signal: the inputs start silent.
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
  std::vector<double> values;
  std::stringstream stream(text);
  std::string field;
  while (std::getline(stream, field, ',')) values.push_back(std::stod(field));
  EXPECT_EQ(values.size(), 10u) << text;
  values.resize(10);
  return Preamble{values[0], values[1], values[2], values[3], values[4],
                  values[5], values[6], values[7], values[8], values[9]};
}

// The data bytes of a "#8nnnnnnnn..." block, checking the announced length.
std::string BlockData(const std::string& reply) {
  EXPECT_GE(reply.size(), 10u);
  EXPECT_EQ(reply.substr(0, 2), "#8");
  size_t length = std::stoul(reply.substr(2, 8));
  EXPECT_EQ(reply.size(), 10 + length);
  return reply.substr(10);
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
  Preamble preamble = ParsePreamble(instrument_.Execute(":WAVeform:PREamble?"));
  std::string data = BlockData(instrument_.Execute(":WAVeform:DATA?"));
  ASSERT_EQ(data.size(), static_cast<size_t>(preamble.points));
  EXPECT_EQ(preamble.format, 0);
  EXPECT_EQ(preamble.y_reference, 128);
  EXPECT_NEAR(preamble.y_origin, 0.1, 1e-12);
  EXPECT_NEAR(preamble.y_increment, 10 * 0.2 / 255, 1e-9);
  EXPECT_EQ(instrument_.Execute(":WAVeform:POINts?"), "+" + std::to_string(data.size()));
  // The signal itself, sampled at the preamble's times, from the trigger instant on.
  std::vector<double> expected = instrument_.WithState([&](InstrumentState& state) {
    Signal signal = ChannelInput(state, 1);
    double trigger = TriggerInstant(state);
    std::vector<double> values(data.size());
    for (size_t i = 0; i < values.size(); ++i) {
      values[i] = signal.ValueAt(trigger + preamble.x_origin + i * preamble.x_increment);
    }
    return values;
  });
  for (size_t i = 0; i < data.size(); ++i) {
    double volts =
        (static_cast<unsigned char>(data[i]) - preamble.y_reference) * preamble.y_increment +
        preamble.y_origin;
    ASSERT_NEAR(volts, expected[i], preamble.y_increment) << "sample " << i;
  }
}

TEST_F(WaveformTest, TriggerHoldsTheSignalStill) {
  // Sample at the trigger instant crosses the 0 V level rising: the data around x = 0.
  instrument_.Execute(":TRIGger:EDGE:LEVel 0.2;:TRIGger:EDGE:SLOPe POSitive");
  Preamble preamble = ParsePreamble(instrument_.Execute(":WAVeform:PREamble?"));
  std::string first = BlockData(instrument_.Execute(":WAVeform:DATA?"));
  instrument_.Execute(":RUN");
  std::string second = BlockData(instrument_.Execute(":WAVeform:DATA?"));
  EXPECT_EQ(first, second);  // a noiseless repetitive signal stands still
  size_t at_trigger = static_cast<size_t>(std::lround(-preamble.x_origin / preamble.x_increment));
  double before =
      (static_cast<unsigned char>(first[at_trigger - 50]) - 128) * preamble.y_increment +
      preamble.y_origin;
  double after = (static_cast<unsigned char>(first[at_trigger + 50]) - 128) * preamble.y_increment +
                 preamble.y_origin;
  EXPECT_LT(before, 0.2);
  EXPECT_GT(after, 0.2);
}

TEST_F(WaveformTest, ClippingFollowsScaleAndOffset) {
  // 1.6 Vpp around 0.2 V at 20 mV/div: far beyond the five divisions either side.
  instrument_.Execute(":CHANnel1:SCALe 20mV;:CHANnel1:OFFSet 0");
  std::string data = BlockData(instrument_.Execute(":WAVeform:DATA?"));
  size_t low = 0, high = 0, zero = 0;
  for (char c : data) {
    unsigned char code = static_cast<unsigned char>(c);
    low += code == 1;
    high += code == 255;
    zero += code == 0;
  }
  EXPECT_GT(low, data.size() / 5);
  EXPECT_GT(high, data.size() / 5);
  EXPECT_EQ(zero, 0u);  // no holes
}

double MeanVolts(Instrument& instrument) {
  Preamble preamble = ParsePreamble(instrument.Execute(":WAVeform:PREamble?"));
  std::string data = BlockData(instrument.Execute(":WAVeform:DATA?"));
  double sum = 0;
  for (char c : data) {
    sum += (static_cast<unsigned char>(c) - preamble.y_reference) * preamble.y_increment +
           preamble.y_origin;
  }
  return sum / data.size();
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

}  // namespace
}  // namespace quarvelo::sim

namespace quarvelo::sim {
namespace {

// The same acquisition in WORD and ASCii format gives the volts the BYTE codes give.
TEST_F(WaveformTest, WordAndAsciiFormatsAgreeWithByteCodes) {
  instrument_.Execute(":WAVeform:POINts 1000");
  Preamble byte_preamble = ParsePreamble(instrument_.Execute(":WAVeform:PREamble?"));
  std::string bytes = BlockData(instrument_.Execute(":WAVeform:DATA?"));
  instrument_.Execute(":WAVeform:FORMat WORD");
  Preamble word_preamble = ParsePreamble(instrument_.Execute(":WAVeform:PREamble?"));
  EXPECT_EQ(word_preamble.format, 1);
  EXPECT_EQ(word_preamble.y_reference, 32768);
  std::string words = BlockData(instrument_.Execute(":WAVeform:DATA?"));
  instrument_.Execute(":WAVeform:FORMat ASCii");
  std::string text = BlockData(instrument_.Execute(":WAVeform:DATA?"));
  ASSERT_EQ(words.size(), 2 * bytes.size());
  std::stringstream ascii(text);
  for (size_t i = 0; i < bytes.size(); ++i) {
    double from_byte = (static_cast<unsigned char>(bytes[i]) - byte_preamble.y_reference) *
                           byte_preamble.y_increment +
                       byte_preamble.y_origin;
    int code = static_cast<unsigned char>(words[2 * i]) * 256 +
               static_cast<unsigned char>(words[2 * i + 1]);
    double from_word =
        (code - word_preamble.y_reference) * word_preamble.y_increment + word_preamble.y_origin;
    std::string field;
    ASSERT_TRUE(std::getline(ascii, field, ','));
    ASSERT_NEAR(from_word, from_byte, 1e-9) << i;
    ASSERT_NEAR(std::stod(field), from_byte, 1e-6) << i;
  }
}

}  // namespace
}  // namespace quarvelo::sim

namespace quarvelo::sim {
namespace {

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

}  // namespace
}  // namespace quarvelo::sim
