// The fault matrix: every fault the simulator's fault commands produce, over each LAN
// transport, at four moments of the real main window's work. Each cell checks what the user
// sees (the VISA error box and the link off, or "TIME OUT!" where a time-out is tolerated),
// that the window never waits longer than the time-out plus a second, that the records the
// failed exchange was not filling stay, and that the window stays usable: a CSV file opens and
// is analysed off line, and Control on reconnects once the instrument behaves again.
#include <gtest/gtest.h>

#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "platform/qt/picture_box.h"
#include "sim/simulator.h"
#include "tests/app/fault_harness.h"

namespace quarvelo::app {
namespace {

using testing_support::Moment;
using testing_support::Transport;

enum class Fault { kDelay, kDrop, kGarbage, kCut, kSilent };
constexpr const char* kFaultNames[] = {"Delay", "Drop", "Garbage", "Cut", "Silent"};

// A time-out or a lost connection is a VISA error: the box and the link off, unless the
// time-out is tolerated. Garbage is no VISA error: a block that does not begin with '#' scans
// as no data, a text reply is taken as it comes, and the link stays on.
enum class Outcome { kErrorBox, kTimeOut, kNoData, kImpossible };

// The I/O time-out of the exchanges at each moment: the readback's identification probe
// (tolerated), the capture's, and the status poll's (in force when the image is fetched).
int TimeOutMs(Moment moment) {
  constexpr int kTimeOuts[] = {500, 10000, 10000, 5000};
  return kTimeOuts[static_cast<int>(moment)];
}

// The fault command armed at the moment's point: before the tool for Control on and the image
// import, and in the capture's pause just before its transfer (":WAVeform:FORMat BYTE", the
// error query, the preamble, the error query, the block) for the sweep and the FFT run's pass.
std::string FaultCommand(Fault fault, Moment moment) {
  const bool capture = moment == Moment::kSweep || moment == Moment::kFftThirdPass;
  switch (fault) {
    case Fault::kDelay:
      return ":SIMulate:DELay " + std::to_string(TimeOutMs(moment) + 300);
    case Fault::kDrop:  // Control on: in the 5 s part of the readback, after the probe
      return capture                        ? ":SIMulate:DROP 4"
             : moment == Moment::kControlOn ? ":SIMulate:DROP 3"
                                            : ":SIMulate:DROP 2";
    case Fault::kGarbage:  // every reply up to and including the block
      return capture ? ":SIMulate:GARBage 4" : ":SIMulate:GARBage 2";
    case Fault::kCut:
      return ":SIMulate:CUT";
    case Fault::kSilent:
      return ":SIMulate:SILent";
  }
  return "";
}

Outcome Expected(Fault fault, Moment moment) {
  if (fault == Fault::kGarbage) return Outcome::kNoData;
  if (moment != Moment::kControlOn) return Outcome::kErrorBox;
  switch (fault) {
    case Fault::kDelay:
    case Fault::kSilent:
      return Outcome::kTimeOut;
    case Fault::kCut:
      return Outcome::kImpossible;
    default:
      return Outcome::kErrorBox;
  }
}

// Every text the status line showed, in order (ShowStatus repaints the line at once).
class StatusHistory : public QObject {
 public:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) {
      const std::string text = static_cast<QLabel*>(watched)->text().toStdString();
      if (lines.empty() || lines.back() != text) lines.push_back(text);
    }
    return false;
  }
  bool Saw(const std::string& text) const {
    return std::find(lines.begin(), lines.end(), text) != lines.end();
  }
  std::vector<std::string> lines;
};

using Cell = std::tuple<Fault, Transport, Moment>;

class FaultMatrix : public testing_support::FaultTest, public testing::WithParamInterface<Cell> {
 protected:
  void SetUp() override {
    const auto [fault, transport, moment] = GetParam();
    if (Expected(fault, moment) == Outcome::kImpossible) {
      GTEST_SKIP() << "the readback reads no block: a cut block cannot happen there";
    }
    FaultTest::SetUp();
    if (HasFatalFailure()) return;
    Load({}, false);
    window_->show();  // the status line paints, and so is recorded, only when shown
    window_->findChild<QLabel*>("lblScreen")->installEventFilter(&status_);
  }

  // The cell's transport only.
  sim::SimulatorOptions Options() const override {
    const Transport transport = std::get<1>(GetParam());
    sim::SimulatorOptions options;
    options.socket_port = transport == Transport::kSocket ? 0 : -1;
    options.vxi11_port = options.portmapper_port = transport == Transport::kVxi11 ? 0 : -1;
    options.hislip_port = transport == Transport::kHislip ? 0 : -1;
    return options;
  }
  std::string Resource() const override {
    return testing_support::ResourceFor(std::get<1>(GetParam()), simulator_->socket_port(),
                                        simulator_->portmapper_port(), simulator_->hislip_port());
  }

  void TearDown() override {
    if (delay_clearer_.joinable()) delay_clearer_.join();
  }

  int Count(const std::string& prefix) const {
    const std::vector<std::string> received = simulator_->ReceivedMessages();
    return static_cast<int>(std::count_if(received.begin(), received.end(),
                                          [&](const auto& m) { return m.rfind(prefix, 0) == 0; }));
  }

  // Arms the fault. A tolerated time-out lets the program go on, so there a delay holds back
  // only the reply to the next message (the identification probe).
  void Arm(const std::string& command, bool tolerated) {
    armed_ = true;
    const std::size_t before = simulator_->ReceivedMessages().size();
    simulator_->Execute(command);
    if (!tolerated || command.rfind(":SIMulate:DELay", 0) != 0) return;
    delay_clearer_ = std::thread([this, before] {
      while (simulator_->ReceivedMessages().size() <= before) std::this_thread::yield();
      simulator_->Execute(":SIMulate:DELay 0");
    });
  }

  StatusHistory status_;
  std::atomic<bool> armed_ = false;
  std::thread delay_clearer_;
};

TEST_P(FaultMatrix, ReportsKeepsRecordsAndStaysUsable) {
  const auto [fault, transport, moment] = GetParam();
  const std::string command = FaultCommand(fault, moment);
  // A session with data: four channels captured, the oscilloscope's screen imported.
  ASSERT_NO_FATAL_FAILURE(OpenWithFourChannelsCaptured());
  Trigger("ID_ScreenShoot");
  window_->Settings().AverageCount = 3;        // the third pass is the last
  window_->Link().PollInstrumentStatus(true);  // as the refresh timer would: 5 s time-out
  if (moment == Moment::kControlOn) Trigger("ID_Remote");  // off, to switch it on again
  const std::vector<testing_support::RecordCopy> records = testing_support::CopyRecords(*window_);
  ASSERT_GT(records[3].bytes, 0);
  const QImage picture = window_->picKeysight()->Image();
  ASSERT_TRUE(user_.Boxes().empty()) << user_.Boxes().front();
  simulator_->ClearTraffic();
  status_.lines.clear();

  // The fault, at its moment.
  const int capture = moment == Moment::kSweep ? 1 : moment == Moment::kFftThirdPass ? 3 : 0;
  const Outcome outcome = Expected(fault, moment);
  if (capture == 0) Arm(command, outcome == Outcome::kTimeOut);
  user_.on_tick = [&] {
    if (armed_ || !window_->Link().flags().CaptureBusy) return;
    // In the pause after the capture's ":STOP" the timer starts ticking at every turn of the
    // event loop, so that it also runs when the capture lets events run just before its
    // transfer; the fault is armed there.
    if (Count(":STOP") == capture && Count(":WAVEFORM:POINTS ") == capture - 1) {
      user_.SetTickInterval(0);
    } else if (Count(":WAVEFORM:POINTS ") == capture &&
               Count(":WAVeform:FORMat BYTE") == capture - 1) {
      Arm(command, false);
      user_.SetTickInterval(1);
    }
  };
  user_.ResetBlock();
  Trigger(testing_support::MomentTool(moment));
  const std::chrono::milliseconds blocked = user_.LongestBlock();
  user_.on_tick = nullptr;
  ASSERT_TRUE(armed_) << "the moment was never reached";

  // What the user sees, how long the window waited at most, and what it kept: the link down,
  // only the channel whose capture failed (the sweep reads the channels other than the
  // trigger's first, the FFT run channel 1) may have lost its record; the picture stays.
  const int involved = capture == 0 ? 0 : moment == Moment::kSweep ? 2 : 1;
  if (outcome == Outcome::kErrorBox) {
    ASSERT_NO_FATAL_FAILURE(ExpectLinkLost(records, involved));
  } else {
    // The link stays on and the work goes on (the sweep of Control on reads the records anew).
    EXPECT_TRUE(user_.Boxes().empty()) << user_.Boxes().front();
    EXPECT_TRUE(window_->Session().RemoteOn);
    EXPECT_EQ(status_.Saw("TIME OUT!"), outcome == Outcome::kTimeOut);
    if (involved != 0) {
      EXPECT_TRUE(status_.Saw("DATA ERROR CH" + std::to_string(involved)));
    }
    if (moment == Moment::kImageImport) {
      EXPECT_TRUE(status_.Saw("No screen image received: the previous picture is kept"));
    }
  }
  // Junk, a cut or a lost transfer is not data.
  if (involved != 0) {
    EXPECT_EQ(window_->Records().Records[involved].ByteCount, 0);
  }
  EXPECT_EQ(window_->picKeysight()->Image(), picture);
  ExpectFreeAgain(blocked, TimeOutMs(moment));
  RecordProperty("box", user_.Boxes().empty() ? "" : user_.Boxes()[0]);
  RecordProperty("blocked_ms", static_cast<int>(blocked.count()));

  // Usable again: off line a CSV file opens and is analysed, then Control on reconnects.
  simulator_->Execute(":SIMulate:CLEar");
  if (window_->Session().RemoteOn) Trigger("ID_Remote");
  ExpectCsvAnalysedOffline();
  const std::size_t boxes = user_.Boxes().size();
  simulator_->ClearTraffic();
  Trigger("ID_Remote");
  EXPECT_TRUE(window_->Session().RemoteOn);
  EXPECT_EQ(user_.Boxes().size(), boxes);
  EXPECT_GT(Count(":WAVeform:DATA?"), 0);  // the sweep of Control on
}

INSTANTIATE_TEST_SUITE_P(
    Cells, FaultMatrix,
    testing::Combine(testing::Values(Fault::kDelay, Fault::kDrop, Fault::kGarbage, Fault::kCut,
                                     Fault::kSilent),
                     testing::Values(Transport::kSocket, Transport::kVxi11, Transport::kHislip),
                     testing::Values(Moment::kControlOn, Moment::kSweep, Moment::kFftThirdPass,
                                     Moment::kImageImport)),
    [](const auto& info) {
      return std::string(kFaultNames[static_cast<int>(std::get<0>(info.param))]) +
             testing_support::TransportName(std::get<1>(info.param)) +
             testing_support::MomentName(std::get<2>(info.param));
    });

}  // namespace
}  // namespace quarvelo::app
