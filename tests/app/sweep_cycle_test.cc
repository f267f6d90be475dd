// The sweep, the FFT run and the refresh tick of the real main window against the simulated
// oscilloscope over loopback TCP. Assertions are on the lines the simulator received.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <string>
#include <vector>

#include "tests/app/fault_harness.h"
#include "tests/app/window_on_simulator.h"

namespace quarvelo::app {
namespace {

int Count(const std::vector<std::string>& lines, const std::string& line) {
  return static_cast<int>(std::count(lines.begin(), lines.end(), line));
}

// Channels in the order their transfers were set up.
std::vector<int> CaptureOrder(const std::vector<std::string>& lines) {
  const std::string prefix = ":WAVeform:SOURce CHANnel";
  std::vector<int> channels;
  for (const std::string& line : lines) {
    if (line.rfind(prefix, 0) == 0) channels.push_back(std::stoi(line.substr(prefix.size())));
  }
  return channels;
}

std::ptrdiff_t First(const std::vector<std::string>& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) - lines.begin();
}

std::ptrdiff_t Last(const std::vector<std::string>& lines, const std::string& line) {
  return lines.rend() - std::find(lines.rbegin(), lines.rend(), line) - 1;
}

class SweepCycleTest : public testing_support::WindowOnSimulator {
 protected:
  void SetUp() override {
    WindowOnSimulator::SetUp();
    if (HasFatalFailure()) return;
    Load({{"DVM", "1"}}, true);
    if (HasFatalFailure()) return;
    // The poll would read the run bit in the middle of a sweep; the tick test starts it.
    RefreshTimer()->stop();
  }

  // Channels 1..4 shown, the trigger on `trigger`, and nothing received so far.
  void ShowAllChannels(int trigger) {
    for (int n = 1; n <= 4; ++n) Execute(":CHANnel" + std::to_string(n) + ":DISPlay 1");
    Execute(":TRIGger:EDGE:SOURce CHANnel" + std::to_string(trigger));
    Execute(":TIMebase:SCALe 1E-5");
    simulator_->ClearTraffic();
  }
  void Execute(const std::string& line) { simulator_->Execute(line); }
  // The lines received, without the error-queue queries that follow every command.
  std::vector<std::string> Sent() const {
    std::vector<std::string> lines = simulator_->ReceivedMessages();
    std::erase(lines, ":SYSTem:ERRor?");
    return lines;
  }
  QTimer* RefreshTimer() const { return window_->findChild<QTimer*>("tmrRefresh"); }

  // Closes the boxes and plays along (on_tick) while the program lets events run.
  testing_support::UserAtWindow user_;
};

// Restart while running, restart while stopped, read the held record while stopped.
TEST_F(SweepCycleTest, TriggerChannelLastOneDigitizeAndRunAsPolled) {
  for (const auto& [restart, running] : {std::pair{true, true}, {true, false}, {false, false}}) {
    SCOPED_TRACE(testing::Message() << "restart " << restart << " running " << running);
    Execute(":RUN");
    ShowAllChannels(2);
    // A stopped oscilloscope holds the record of its last acquisition.
    if (!running) Execute(":DIGitize");
    simulator_->ClearTraffic();

    window_->Sweep().ID_Sweep(restart);

    const std::vector<std::string> sent = Sent();
    EXPECT_EQ(CaptureOrder(sent), (std::vector<int>{1, 3, 4, 2}));
    EXPECT_EQ(Count(sent, ":STOP"), restart ? 1 : 0);
    EXPECT_EQ(Count(sent, ":DIGitize"), restart ? 1 : 0);
    EXPECT_EQ(Count(sent, ":DIGitize CHANnel1") + Count(sent, ":DIGitize CHANnel2"), 0);
    if (restart) {
      EXPECT_GT(First(sent, ":DIGitize"), First(sent, ":WAVeform:SOURce CHANnel1"));
      EXPECT_LT(First(sent, ":DIGitize"), First(sent, ":WAVeform:SOURce CHANnel3"));
    }
    EXPECT_EQ(Count(sent, ":RUN"), running ? 1 : 0);
    EXPECT_EQ(sent.back() == ":RUN", running);
    const spectrum::Spectrum& spectrum = window_->SpectrumRecord();
    EXPECT_EQ(spectrum.LastPoint, window_->Records().Records[2].ByteCount - 1);
    EXPECT_GT(spectrum.LastPoint, 0);
    EXPECT_TRUE(window_->SweepFlags().SweepMode);
    EXPECT_FALSE(window_->SweepFlags().SweepBusy);
    EXPECT_FALSE(window_->Tools().ToolCaption("ID_SR").empty());
  }
}

TEST_F(SweepCycleTest, VoltmeterPausedOnlyOffTheTriggerChannel) {
  for (const int dvm_source : {3, 1}) {
    const bool switched = dvm_source != 1;
    Execute(":DVM:ENABle 1;:DVM:SOURce CHANnel" + std::to_string(dvm_source));
    ShowAllChannels(1);
    window_->Sweep().ID_Sweep(false);
    const std::vector<std::string> sent = Sent();
    EXPECT_EQ(Count(sent, ":DVM:ENABle 0"), switched ? 1 : 0) << dvm_source;
    EXPECT_EQ(Count(sent, ":DVM:ENABle 1"), switched ? 1 : 0) << dvm_source;
    if (switched) {
      EXPECT_LT(First(sent, ":DVM:ENABle 0"), First(sent, ":WAVeform:SOURce CHANnel2"));
      EXPECT_GT(First(sent, ":DVM:ENABle 1"), First(sent, ":WAVeform:SOURce CHANnel1"));
    }
  }
}

// Channel 3 hidden and not the trigger: the run shows it and triggers on it first.
TEST_F(SweepCycleTest, FftRunShowsItsChannelAndStopDuringThirdPassStillConfiguresTheMathFft) {
  window_->Settings().AverageCount = 8;
  ShowAllChannels(1);
  Execute(":CHANnel3:DISPlay 0");
  simulator_->ClearTraffic();
  auto* stop = window_->findChild<QPushButton*>("cmdStop");
  user_.on_tick = [&] {
    if (window_->SweepFlags().AvgIndex == 3) stop->click();
  };

  window_->Sweep().FftRun(3);

  const std::vector<std::string> sent = Sent();
  EXPECT_LT(First(sent, ":CHANnel3:DISPlay 1"), First(sent, ":DIGitize CHANnel3"));
  EXPECT_LT(First(sent, ":TRIGger:EDGE:SOURce CHAN3"), First(sent, ":DIGitize CHANnel3"));
  EXPECT_EQ(window_->SweepFlags().AvgIndex, 3);
  EXPECT_EQ(Count(sent, ":DIGitize CHANnel3"), 3);
  EXPECT_EQ(window_->findChild<QLabel*>("lblAVGCount")->text(), QStringLiteral("3"));
  const std::string prefix = window_->Scope().MathPrefix;
  EXPECT_LT(Last(sent, ":DIGitize CHANnel3"), First(sent, prefix + ":SOURce1 CHAN3"));
  EXPECT_LT(First(sent, prefix + ":SOURce1 CHAN3"), First(sent, prefix + ":OPERation FFT"));
  EXPECT_LT(First(sent, prefix + ":OPERation FFT"), static_cast<std::ptrdiff_t>(sent.size()));
  EXPECT_TRUE(window_->SpectrumRecord().SpectrumReady);
  EXPECT_GT(window_->SpectrumRecord().LastPoint, window_->SpectrumRecord().FirstPoint);
  EXPECT_FALSE(window_->SweepFlags().SweepMode);
  EXPECT_FALSE(window_->SweepFlags().FftBusy);
}

TEST_F(SweepCycleTest, OfflineSweepDrawsTheHeldRecordWithItsMixedDomainSpectrum) {
  ShowAllChannels(2);
  window_->Sweep().ID_Sweep(false);
  window_->Link().CloseInstrument();
  window_->Settings().MixedDomain = true;
  simulator_->ClearTraffic();

  window_->Sweep().ID_Sweep(false);

  EXPECT_TRUE(Sent().empty());
  const spectrum::Spectrum& spectrum = window_->SpectrumRecord();
  EXPECT_TRUE(spectrum.MixedDomain);
  EXPECT_TRUE(spectrum.SpectrumReady);
  EXPECT_EQ(spectrum.LastPoint, window_->Records().Records[2].ByteCount - 1);
  EXPECT_EQ(window_->Scope().TriggerSource, "CHAN2");
}

TEST_F(SweepCycleTest, FrontPanelKeyWithAutoRefreshSweepsOnTheNextTick) {
  window_->Sweep().ID_Sweep(false);
  window_->Link().flags().AutoRefresh = true;
  Execute(":SIMulate:KEY");
  simulator_->ClearTraffic();

  RefreshTimer()->start();
  ASSERT_TRUE(QTest::qWaitFor([&] { return !CaptureOrder(Sent()).empty(); }, 3000));

  const std::vector<std::string> sent = Sent();
  EXPECT_LT(First(sent, "*ESR?"), First(sent, ":WAVeform:SOURce CHANnel1"));
}

TEST_F(SweepCycleTest, TimeOutDuringCaptureEndsTheSweepWithTheCursorRestored) {
  ShowAllChannels(2);
  bool silenced = false;
  // The capture pauses after ":STOP"; the query after the pause goes unanswered.
  user_.on_tick = [&] {
    if (!silenced && Count(Sent(), ":STOP") == 1) {
      Execute(":SIMulate:SILent");
      silenced = true;
    }
  };

  window_->Sweep().ID_Sweep(true);

  ASSERT_TRUE(silenced);
  // The capture does not tolerate time-outs: the link reports the error and closes.
  EXPECT_FALSE(window_->Session().RemoteOn);
  EXPECT_EQ(CaptureOrder(Sent()), std::vector<int>{1});
  EXPECT_FALSE(window_->SweepFlags().SweepBusy);
  EXPECT_FALSE(QApplication::overrideCursor());
}

}  // namespace
}  // namespace quarvelo::app
