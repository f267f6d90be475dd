// Shared pieces of the fault tests: the transports and moments of the matrix, the resource
// string of a simulator on loopback, the user sitting at the window (who notes how long the
// window kept its events waiting, reads and closes message boxes and answers the open-file
// dialog), copies of the waveform records, and the checks every fault ends with.
#ifndef QUARVELO_TESTS_APP_FAULT_HARNESS_H_
#define QUARVELO_TESTS_APP_FAULT_HARNESS_H_

#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QString>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "app/frmKeysight.h"
#include "tests/app/window_on_simulator.h"

namespace quarvelo::app::testing_support {

enum class Transport { kSocket, kVxi11, kHislip };
enum class Moment { kControlOn, kSweep, kFftThirdPass, kImageImport };

inline const char* TransportName(Transport transport) {
  constexpr const char* kNames[] = {"Socket", "Vxi11", "Hislip"};
  return kNames[static_cast<int>(transport)];
}
inline const char* MomentName(Moment moment) {
  constexpr const char* kNames[] = {"ControlOn", "Sweep", "FftThirdPass", "ImageImport"};
  return kNames[static_cast<int>(moment)];
}
// The tool the user presses to reach the moment.
inline const char* MomentTool(Moment moment) {
  constexpr const char* kTools[] = {"ID_Remote", "ID_DIG", "ID_FFT1", "ID_ScreenShoot"};
  return kTools[static_cast<int>(moment)];
}

// The resource reaching a simulator on 127.0.0.1 over `transport`; VXI-11 goes through the
// simulator's own portmapper.
inline std::string ResourceFor(Transport transport, int socket_port, int portmapper_port,
                               int hislip_port) {
  switch (transport) {
    case Transport::kSocket:
      return "TCPIP0::127.0.0.1::" + std::to_string(socket_port) + "::SOCKET";
    case Transport::kVxi11:
      return "TCPIP0::127.0.0.1:" + std::to_string(portmapper_port) + "::inst0::INSTR";
    case Transport::kHislip:
      break;
  }
  return "TCPIP0::127.0.0.1::hislip0," + std::to_string(hislip_port) + "::INSTR";
}

// The user at the window: a timer that runs whenever the window lets events through. A long
// gap between its ticks is the window blocked; `on_tick` lets a test act at those moments
// (arm a fault in the middle of a capture).
class UserAtWindow {
 public:
  using Clock = std::chrono::steady_clock;

  UserAtWindow() {
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, [this] { Tick(); });
    timer_.start(1);
  }

  // Starts a new measure of the longest block.
  void ResetBlock() {
    longest_ = {};
    last_tick_ = Clock::now();
  }
  // The longest time without events since ResetBlock, the time since the last tick included.
  std::chrono::milliseconds LongestBlock() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::max(longest_, Clock::now() - last_tick_));
  }

  // The texts of the boxes closed so far; a box that is not a critical "QUARVELO" box is
  // recorded with the prefix "(not a critical QUARVELO box) ".
  const std::vector<std::string>& Boxes() const { return boxes_; }

  // The file an open-file dialog is answered with.
  void SetFileToOpen(const QString& path) { file_to_open_ = path; }

  // 0 ticks at every turn of the event loop (busy while the window waits: keep it short).
  void SetTickInterval(int milliseconds) { timer_.setInterval(milliseconds); }

  std::function<void()> on_tick;

 private:
  void Tick() {
    const Clock::time_point now = Clock::now();
    longest_ = std::max(longest_, now - last_tick_);
    last_tick_ = now;
    QWidget* modal = QApplication::activeModalWidget();
    if (auto* box = qobject_cast<QMessageBox*>(modal)) {
      const bool critical =
          box->icon() == QMessageBox::Critical && box->windowTitle() == "QUARVELO";
      boxes_.push_back((critical ? "" : "(not a critical QUARVELO box) ") +
                       box->text().toStdString());
      box->close();
    } else if (auto* dialog = qobject_cast<QFileDialog*>(modal)) {
      dialog->selectFile(file_to_open_);
      static_cast<QDialog*>(dialog)->accept();  // public in QDialog
    }
    if (on_tick) on_tick();
  }

  QTimer timer_;
  Clock::time_point last_tick_ = Clock::now();
  Clock::duration longest_{};
  std::vector<std::string> boxes_;
  QString file_to_open_;
};

// What a channel's record holds: its length, time step and volts.
struct RecordCopy {
  std::int32_t bytes;
  double x_increment;
  std::vector<double> volts;
  bool operator==(const RecordCopy&) const = default;
};

// Channels 1..4, at index channel - 1.
inline std::vector<RecordCopy> CopyRecords(frmKeysight& window) {
  std::vector<RecordCopy> copies;
  for (int channel = 1; channel <= 4; ++channel) {
    const acquisition::WaveformRecord& record = window.Records().Records[channel];
    const auto volts = window.Records().Samples.Volts(channel);
    const auto count = static_cast<std::size_t>(std::max(record.ByteCount, 0));
    copies.push_back({record.ByteCount, record.XIncrement,
                      std::vector<double>(volts.begin(), volts.begin() + count)});
  }
  return copies;
}

// A CSV file of channel 2: a 10 kHz sine of 1 V amplitude, 2000 samples at 1 MSa/s.
inline bool WriteSineCsv(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return false;
  file.write("2;1000000;0.5;0.0002;0;-0.001;1E-06\r\n");
  for (int i = 0; i < 2000; ++i) {
    const double t = -0.001 + i * 1e-6;
    file.write(QString::asprintf("%.9f;%.9f\r\n", t, std::sin(2 * M_PI * 1e4 * t)).toUtf8());
  }
  return true;
}

// The frequency of the highest line of the window's spectrum, DC left out; -1 when there is no
// spectrum.
inline double SpectrumPeakHz(frmKeysight& window) {
  const spectrum::Spectrum& spectrum = window.SpectrumRecord();
  const int half = spectrum.TransformLength / 2;
  if (!spectrum.SpectrumReady || half < 2 ||
      spectrum.SpectrumLevel.size() <= static_cast<std::size_t>(half)) {
    return -1;
  }
  const auto first = spectrum.SpectrumLevel.begin() + 1;
  const auto peak = std::max_element(first, spectrum.SpectrumLevel.begin() + half);
  return spectrum
      .SpectrumFrequency[static_cast<std::size_t>(peak - spectrum.SpectrumLevel.begin())];
}

// The window on a simulator with the user at it, and the checks every fault ends with.
class FaultTest : public WindowOnSimulator {
 protected:
  // A session with data: Control on, channels 1 to 4 shown and captured, and the refresh timer
  // stopped (a test polls by hand where it needs to).
  void OpenWithFourChannelsCaptured() {
    Trigger("ID_Remote");
    ASSERT_TRUE(window_->Session().RemoteOn);
    window_->findChild<QTimer*>("tmrRefresh")->stop();
    for (int n = 2; n <= 4; ++n) {
      window_->Link().SendCommand(":CHANnel" + std::to_string(n) + ":DISPlay 1");
    }
    Trigger("ID_DIG");
  }

  // The lost link as the user sees it (one critical box with VISA's error, the link and its
  // tool off, two channels stored), and every record but the `involved` channel's as it was.
  void ExpectLinkLost(const std::vector<RecordCopy>& before, int involved) {
    ASSERT_EQ(user_.Boxes().size(), 1u);
    EXPECT_EQ(user_.Boxes()[0].rfind("*** VISA Error : ", 0), 0u) << user_.Boxes()[0];
    EXPECT_GT(user_.Boxes()[0].size(), 17u);
    EXPECT_FALSE(window_->Session().RemoteOn);
    EXPECT_FALSE(window_->Tools().ToolState("ID_Remote"));
    EXPECT_EQ(store_->Get("Setup", "Channels", ""), "2");
    const std::vector<RecordCopy> after = CopyRecords(*window_);
    for (int channel = 1; channel <= 4; ++channel) {
      if (channel != involved) {
        EXPECT_EQ(after[channel - 1], before[channel - 1]) << channel;
      }
    }
  }

  // The window free again: it waited at most the time-out and a second, nothing is busy and
  // the cursor is back.
  void ExpectFreeAgain(std::chrono::milliseconds blocked, int time_out_ms) {
    EXPECT_LT(blocked.count(), time_out_ms + 1000);
    EXPECT_FALSE(window_->SweepFlags().SweepBusy || window_->SweepFlags().FftBusy ||
                 window_->Link().flags().CaptureBusy);
    EXPECT_FALSE(QApplication::overrideCursor());
  }

  // Off line, the CSV file of WriteSineCsv opens through the open-file dialog and its spectrum
  // peaks at 10 kHz.
  void ExpectCsvAnalysedOffline() {
    const QString path = dir_.path() + "/sine.csv";
    ASSERT_TRUE(WriteSineCsv(path));
    user_.SetFileToOpen(path);
    Trigger("ID_Open");
    Trigger("ID_FFT2");
    EXPECT_NEAR(SpectrumPeakHz(*window_), 1e4, 2 * window_->SpectrumRecord().FrequencyResolution);
  }

  UserAtWindow user_;
};

}  // namespace quarvelo::app::testing_support

#endif  // QUARVELO_TESTS_APP_FAULT_HARNESS_H_
