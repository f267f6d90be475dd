// The sweep and the FFT run against the simulated oscilloscope over loopback TCP, with the
// real link, readback, capture and spectrum computation; the recording UI makes the pauses
// free and plays the user. Assertions are on the lines the simulator received.
#include "app/sweep_cycle.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QProgressBar>
#include <QWidget>
#include <algorithm>
#include <string>
#include <vector>

#include "app/app_settings.h"
#include "app/sweep_adapters.h"
#include "app/sweep_window_view.h"
#include "platform/qt/picture_box.h"
#include "spectrum/spectrum_analyzer.h"
#include "tests/link/online_scope.h"
#include "tests/link/sim_faults.h"

namespace quarvelo::app {
namespace {

using testing_support::OnlineScope;

// The lines received, without the error-queue queries that follow every command.
std::vector<std::string> Lines(const sim::Simulator& simulator) {
  std::vector<std::string> lines;
  for (std::string& line : simulator.ReceivedMessages()) {
    if (line != ":SYSTem:ERRor?") lines.push_back(std::move(line));
  }
  return lines;
}

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

std::ptrdiff_t Position(const std::vector<std::string>& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) - lines.begin();
}

class SweepCycleTest : public testing::Test {
 protected:
  SweepCycleTest() {
    for (QWidget*& frame : frames_) frame = new QWidget(&window_);
    view_ = std::make_unique<SweepWindowView>(
        SweepWidgets{&window_, frames_[0], frames_[1], frames_[2], picture_, label_, progress_});
    host_ = std::make_unique<WindowSpectrumHost>(s_.h.scope, s_.h.tools, *view_);
    analyzer_ = std::make_unique<spectrum::SpectrumAnalyzer>(
        spectrum_, workspace_, fourier_, store_, *host_, s_.h.ui, state_.StopRequested);
    commands_ = std::make_unique<LinkSweepCommands>(
        s_.h.link, s_.h.scope, s_.h.tools, settings_,
        [] { return std::make_pair(false, std::string("200")); });
    cycle_ = std::make_unique<SweepCycle>(
        SweepParts{s_.h.link, s_.h.scope, s_.records, s_.readback, s_.capture, spectrum_,
                   *analyzer_, s_.h.ui, s_.h.tools},
        *view_, *commands_, state_);
  }

  // Channels 1..4 shown, the trigger on `trigger`, and nothing received so far.
  void ShowAllChannels(int trigger) {
    for (int n = 1; n <= 4; ++n) Execute(":CHANnel" + std::to_string(n) + ":DISPlay 1");
    Execute(":TRIGger:EDGE:SOURce CHANnel" + std::to_string(trigger));
    Execute(":TIMebase:SCALe 1E-5");
    s_.simulator->ClearTraffic();
  }
  void Execute(const std::string& line) { s_.simulator->Execute(line); }
  std::vector<std::string> Sent() const { return Lines(*s_.simulator); }

  OnlineScope s_;
  QWidget window_;
  std::array<QWidget*, 3> frames_{};
  qt::PictureBox* picture_ = new qt::PictureBox(true, Qt::black, &window_);
  QLabel* label_ = new QLabel(&window_);
  QProgressBar* progress_ = new QProgressBar(&window_);
  spectrum::Spectrum spectrum_;
  spectrum::FourierWorkspace workspace_;
  spectrum::clsFourier fourier_;
  RecordSampleStore store_{s_.records};
  AppSettings settings_;
  SweepState state_;
  std::unique_ptr<SweepWindowView> view_;
  std::unique_ptr<WindowSpectrumHost> host_;
  std::unique_ptr<spectrum::SpectrumAnalyzer> analyzer_;
  std::unique_ptr<LinkSweepCommands> commands_;
  std::unique_ptr<SweepCycle> cycle_;
};

struct SweepCase {
  const char* name;
  bool restart;
  bool running;  // the oscilloscope runs before the sweep, so the poll reads RunBit 1
};

class SweepTraffic : public SweepCycleTest, public testing::WithParamInterface<SweepCase> {};

TEST_P(SweepTraffic, TriggerChannelLastOneDigitizeAndRunAsPolled) {
  const SweepCase& c = GetParam();
  Execute(c.running ? ":RUN" : ":STOP");
  ShowAllChannels(2);

  cycle_->ID_Sweep(c.restart);

  const std::vector<std::string> sent = Sent();
  EXPECT_EQ(CaptureOrder(sent), (std::vector<int>{1, 3, 4, 2}));
  EXPECT_EQ(Count(sent, ":STOP"), c.restart ? 1 : 0);
  EXPECT_EQ(Count(sent, ":DIGitize"), c.restart ? 1 : 0);
  EXPECT_EQ(Count(sent, ":DIGitize CHANnel1") + Count(sent, ":DIGitize CHANnel2"), 0);
  if (c.restart) {
    EXPECT_GT(Position(sent, ":DIGitize"), Position(sent, ":WAVeform:SOURce CHANnel1"));
    EXPECT_LT(Position(sent, ":DIGitize"), Position(sent, ":WAVeform:SOURce CHANnel3"));
  }
  EXPECT_EQ(Count(sent, ":RUN"), c.running ? 1 : 0);
  if (c.running) EXPECT_EQ(sent.back(), ":RUN");
  EXPECT_EQ(view_->DisplayedChannel(), 2);
  EXPECT_EQ(spectrum_.LastPoint, s_.records.Records[2].ByteCount - 1);
  EXPECT_GT(spectrum_.LastPoint, 0);
  EXPECT_FALSE(state_.SweepBusy);
  EXPECT_TRUE(state_.SweepMode);
  EXPECT_EQ(s_.h.ui.pointer(), ui::PointerShape::kDefault);
}

INSTANTIATE_TEST_SUITE_P(Cases, SweepTraffic,
                         testing::Values(SweepCase{"RestartWhileRunning", true, true},
                                         SweepCase{"RestartWhileStopped", true, false},
                                         SweepCase{"ReadOnlyStopped", false, false}),
                         [](const auto& info) { return std::string(info.param.name); });

struct DvmCase {
  const char* name;
  int dvm_source;
  bool switched;
};

class SweepDvm : public SweepCycleTest, public testing::WithParamInterface<DvmCase> {};

TEST_P(SweepDvm, VoltmeterPausedOnlyOffTheTriggerChannel) {
  const DvmCase& c = GetParam();
  s_.h.scope.HasDvm = true;
  Execute(":DVM:ENABle 1");
  Execute(":DVM:SOURce CHANnel" + std::to_string(c.dvm_source));
  ShowAllChannels(1);

  cycle_->ID_Sweep(true);

  const std::vector<std::string> sent = Sent();
  EXPECT_EQ(Count(sent, ":DVM:ENABle 0"), c.switched ? 1 : 0);
  EXPECT_EQ(Count(sent, ":DVM:ENABle 1"), c.switched ? 1 : 0);
  if (c.switched) {
    EXPECT_LT(Position(sent, ":DVM:ENABle 0"), Position(sent, ":WAVeform:SOURce CHANnel2"));
    EXPECT_GT(Position(sent, ":DVM:ENABle 1"), Position(sent, ":WAVeform:SOURce CHANnel1"));
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, SweepDvm,
                         testing::Values(DvmCase{"OnAnotherChannel", 3, true},
                                         DvmCase{"OnTheTriggerChannel", 1, false}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(SweepCycleTest, StopDuringThirdPassStillConfiguresTheMathFft) {
  settings_.AverageCount = 8;
  ShowAllChannels(1);
  s_.h.ui.SetEventHook([this] {
    if (state_.AvgIndex == 3) cycle_->cmdStop_Click();
  });

  cycle_->FftRun(1);

  const std::vector<std::string> sent = Sent();
  EXPECT_EQ(state_.AvgIndex, 3);
  EXPECT_EQ(Count(sent, ":DIGitize CHANnel1"), 3);
  EXPECT_EQ(label_->text(), QStringLiteral("3"));
  const std::string prefix = s_.h.scope.MathPrefix;
  const std::ptrdiff_t fft = Position(sent, prefix + ":OPERation FFT");
  ASSERT_LT(fft, static_cast<std::ptrdiff_t>(sent.size()));
  EXPECT_LT(Position(sent, prefix + ":SOURce1 CHAN1"), fft);
  EXPECT_GT(fft, std::find(sent.rbegin(), sent.rend(), ":DIGitize CHANnel1").base() - sent.begin());
  EXPECT_TRUE(spectrum_.SpectrumReady);
  EXPECT_FALSE(state_.SweepMode);
  EXPECT_FALSE(state_.FftBusy);
}

TEST_F(SweepCycleTest, FftRunMakesItsChannelShownAndTheTrigger) {
  Execute(":CHANnel3:DISPlay 0");
  Execute(":TRIGger:EDGE:SOURce CHANnel1");
  s_.simulator->ClearTraffic();

  cycle_->FftRun(3);

  const std::vector<std::string> sent = Sent();
  EXPECT_LT(Position(sent, ":CHANnel3:DISPlay 1"), Position(sent, ":DIGitize CHANnel3"));
  EXPECT_LT(Position(sent, ":TRIGger:EDGE:SOURce CHAN3"), Position(sent, ":DIGitize CHANnel3"));
  EXPECT_EQ(state_.AvgIndex, 1);
  EXPECT_GT(spectrum_.LastPoint, spectrum_.FirstPoint);
}

TEST_F(SweepCycleTest, TimeOutDuringCaptureEndsTheSweepWithTheCursorRestored) {
  ShowAllChannels(2);
  bool silenced = false;
  // The capture pauses after ":STOP"; the next query then goes unanswered.
  s_.h.ui.SetEventHook([&] {
    if (!silenced && Count(Sent(), ":STOP") == 1) {
      Execute(testing_support::kNeverAnswerNextQuery);
      silenced = true;
    }
  });

  cycle_->ID_Sweep(true);

  ASSERT_TRUE(silenced);
  // The capture does not tolerate time-outs: the link reports the error and closes.
  EXPECT_FALSE(s_.h.session.RemoteOn);
  ASSERT_EQ(s_.h.ui.messages().size(), 1u);
  EXPECT_EQ(CaptureOrder(Sent()), std::vector<int>{1});
  const std::vector<ui::Rgb>& activity = s_.h.ui.activity_history();
  EXPECT_EQ(std::count(activity.begin(), activity.end(), ui::MakeRgb(0, 255, 0)), 0);
  EXPECT_FALSE(state_.SweepBusy);
  EXPECT_EQ(s_.h.ui.pointer(), ui::PointerShape::kDefault);
}

}  // namespace
}  // namespace quarvelo::app
