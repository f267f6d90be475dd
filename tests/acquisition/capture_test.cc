// Capture against the simulated oscilloscope over loopback TCP: the exact SCPI lines, the
// refusals that send nothing or leave the record alone, the volts and seconds. A link lost in
// the middle of a transfer: the fault matrix (tests/app/fault_matrix_test.cc).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/text/number_parse.h"
#include "tests/link/online_scope.h"

namespace quarvelo::acquisition {
namespace {

using testing_support::Fields;
using testing_support::OnlineScope;
using testing_support::WithErrorQuery;

struct LinesCase {
  const char* name;
  bool use_bins;
  bool stop_first;
  int digitize_mode;
};

class CaptureLinesTest : public testing::TestWithParam<LinesCase> {};

TEST_P(CaptureLinesTest, SendsTheTransferInOrder) {
  const LinesCase& c = GetParam();
  OnlineScope s;
  s.simulator->Execute(":CHANnel2:DISPlay 1;:TIMebase:SCALe 1E-5;:DIGitize");
  s.h.scope.TimebaseScale = 1e-5;
  // The Max Bins combo as the toolbar fills it, its third entry picked.
  std::vector<std::string> bins;
  for (int i = 0; i < 12; ++i) bins.push_back(std::to_string(256 << i));
  s.h.tools.SetComboItems("ID_Bins", bins);
  s.h.tools.SetComboIndex("ID_Bins", 2);
  const double srate = text::LeadingNumber(s.simulator->Execute(":ACQuire:SRATe?"));
  const int acquisition_points = text::LeadingInteger(s.simulator->Execute(":ACQuire:POINts?"));
  s.simulator->ClearTraffic();

  s.capture.CaptureChannel(2, c.use_bins, c.stop_first, static_cast<std::int16_t>(c.digitize_mode));

  // The rule itself: RequestedPointsTest.
  const int points = RequestedPoints(c.use_bins, 2, acquisition_points,
                                     static_cast<int>(std::nearbyint(1e-5 * 10 * srate)));
  std::vector<std::string> expected = {":ACQuire:TYPE NORM", ":WAVeform:SOURce CHANnel2",
                                       ":WAVeform:POINts:MODE RAW"};
  if (c.stop_first) {
    expected.insert(expected.end(), {":STOP", ":TIMEBASE:MODE MAIN", ":TRIGger:SWEep AUTO"});
    if (c.digitize_mode == -1) expected.push_back(":DIGitize");
    if (c.digitize_mode == 0) expected.push_back(":DIGitize CHANnel2");
  }
  expected.insert(expected.end(),
                  {":ACQuire:SRATe?", ":ACQuire:POINts?", ":WAVeform:POINts? MAX",
                   ":WAVEFORM:POINTS " + std::to_string(points), ":WAVeform:FORMat BYTE",
                   ":WAVeform:PREamble?", ":WAVeform:DATA?"});
  EXPECT_EQ(s.Sent(), WithErrorQuery(expected));

  const WaveformRecord& record = s.records.Records[2];
  ASSERT_GT(record.ByteCount, 0);
  const int last = record.ByteCount - 1;
  EXPECT_EQ(Fields(record.PreambleCount, record.Points, s.records.Shared.LastIndex,
                   s.h.scope.Channels[2].FirstSample, s.h.scope.Channels[2].LastSample,
                   s.h.flags.CaptureBusy),
            Fields(10, record.ByteCount, last, 0, last, false));
  EXPECT_DOUBLE_EQ(s.h.scope.SampleRate, srate / 1000);
  EXPECT_EQ(s.h.ui.pointer(), ui::PointerShape::kDefault);
  // Stopping first shows the trigger sweep as Auto and lets the instrument settle.
  EXPECT_EQ(s.h.tools.ToolState("ID_TGSA"), c.stop_first);
  EXPECT_EQ(s.h.ui.pauses(), c.stop_first ? std::vector<int>{250} : std::vector<int>{});
  EXPECT_TRUE(s.h.tools.unguarded.empty());
}

INSTANTIATE_TEST_SUITE_P(Modes, CaptureLinesTest,
                         testing::Values(LinesCase{"BinsNoStop", true, false, 0},
                                         LinesCase{"WholeRecordNoStop", false, false, 0},
                                         LinesCase{"StopDigitizeAll", true, true, -1},
                                         LinesCase{"StopDigitizeChannel", false, true, 0},
                                         LinesCase{"StopNoDigitize", true, true, 5}),
                         [](const testing::TestParamInfo<LinesCase>& info) {
                           return info.param.name;
                         });

TEST(CaptureTest, VoltsAndSecondsMatchThePreamble) {
  // Peaks within one code need an input without the front end's noise.
  OnlineScope s{{.signal_preset = "flat"}};
  // Ten periods of a 1 Vpp sine across the screen, at 0.2 V per division.
  s.simulator->Execute(
      ":SIMulate:CHANnel1:SIGNal SINusoid,10000,1;"
      ":CHANnel1:SCALe 0.2;OFFSet 0;:TIMebase:SCALe 1E-4");
  s.h.scope.TimebaseScale = 1e-4;
  s.capture.CaptureChannel(1, false, true, 0);
  const WaveformRecord& r = s.records.Records[1];
  ASSERT_GT(r.ByteCount, 1000);
  // The preamble as the instrument states it, read independently of the capture.
  double p[10];
  ASSERT_EQ(std::sscanf(s.simulator->Execute(":WAVeform:PREamble?").c_str(),
                        "%lf,%lf,%lf,%lf,%lf,%lf,%lf,%lf,%lf,%lf", &p[0], &p[1], &p[2], &p[3],
                        &p[4], &p[5], &p[6], &p[7], &p[8], &p[9]),
            10);
  EXPECT_EQ(Fields(r.XIncrement, r.XOrigin, s.records.Shared.YIncrement, r.YOrigin, r.YReference),
            Fields(p[4], p[5], p[7], p[8], static_cast<int>(p[9])));
  // The time axis from the preamble's origin across the ten divisions of the screen, and the
  // sine's peaks within one code (the conversion itself: ConvertSamplesTest).
  const auto time = s.records.Samples.Time(1);
  const auto volts = s.records.Samples.Volts(1);
  EXPECT_DOUBLE_EQ(time[0], p[5]);
  EXPECT_NEAR(time[r.ByteCount - 1] - time[0], (r.ByteCount - 1) * p[4], 1e-12);
  EXPECT_NEAR(r.ByteCount * p[4], 10 * 1e-4, 1e-4);
  const auto [low, high] = std::minmax_element(volts.begin(), volts.begin() + r.ByteCount);
  EXPECT_NEAR(*high, 0.5, p[7]);
  EXPECT_NEAR(*low, -0.5, p[7]);
}

TEST(CaptureTest, TimeBaseOf0_2IsCapturedAnd0_21Refused) {
  OnlineScope s;
  s.simulator->Execute(":TIMebase:SCALe 0.2");
  s.h.scope.TimebaseScale = 0.2;
  s.capture.CaptureChannel(1, true, false, 0);
  EXPECT_FALSE(s.Sent().empty());
  const std::int32_t bytes = s.records.Records[1].ByteCount;
  EXPECT_GT(bytes, 0);

  s.simulator->ClearTraffic();
  s.h.scope.TimebaseScale = 0.21;
  s.capture.CaptureChannel(1, true, false, 0);
  EXPECT_TRUE(s.Sent().empty());
  EXPECT_EQ(s.h.ui.status(), "Time Base Scale too long!");
  EXPECT_EQ(s.records.Records[1].ByteCount, bytes);
  EXPECT_FALSE(s.h.flags.CaptureBusy);
}

TEST(CaptureTest, ChannelsTheInstrumentLacksAndABusyCaptureSendNothing) {
  OnlineScope s({.channels = 2});
  s.h.scope.TimebaseScale = 1e-3;
  for (std::int16_t channel : {3, 4, 0, -1}) s.capture.CaptureChannel(channel, true, true, -1);
  EXPECT_FALSE(s.h.flags.CaptureBusy);
  s.h.flags.CaptureBusy = true;
  s.capture.CaptureChannel(1, true, true, -1);
  EXPECT_TRUE(s.Sent().empty());
  EXPECT_TRUE(s.h.flags.CaptureBusy) << "the running capture keeps its flag";
}

TEST(CaptureTest, NoPointsLeavesTheRecordUnchanged) {
  OnlineScope s;
  s.h.scope.TimebaseScale = 1e-3;
  s.capture.CaptureChannel(1, false, true, 0);
  const WaveformRecord before = s.records.Records[1];
  ASSERT_GT(before.ByteCount, 0);
  const double first_volts = s.records.Samples.Volts(1)[0];

  // A channel that is off has no points to offer.
  s.simulator->Execute(":CHANnel1:DISPlay 0");
  s.simulator->ClearTraffic();
  s.capture.CaptureChannel(1, false, false, 0);
  EXPECT_EQ(s.h.ui.status(), "No data on Channel 1");
  const WaveformRecord& after = s.records.Records[1];
  EXPECT_EQ(
      Fields(after.ByteCount, after.Points, after.PreambleCount, s.records.Samples.Volts(1)[0]),
      Fields(before.ByteCount, before.Points, before.PreambleCount, first_volts));
  const auto sent = s.Sent();
  for (const char* query : {":WAVeform:DATA?", ":WAVeform:PREamble?"}) {
    EXPECT_EQ(std::count(sent.begin(), sent.end(), query), 0) << query;
  }
}

}  // namespace
}  // namespace quarvelo::acquisition
