// The main window against the simulated oscilloscope over loopback TCP, from the tool's click
// to the picture drawn:
//   - Sweep (ID_DIG) of four displayed channels at 65,536 points each, readback included, with
//     the oscilloscope stopped (the record it holds is read) and running (stop, one digitize
//     with its 250 ms settling pause, read, run again; the pause is reported apart);
//   - the same Sweep with the simulator answering each exchange 1 ms late (its --latency);
//   - FFT1 of 524,288 points with one pass (the capture's settling pause reported apart);
//   - resident memory with four 524,288-point records and a 16-pass averaging history.
//
// Times are wall-clock from the click to the repainted window, beside the processor time of
// the whole process (the simulator's threads included): on a shared machine the wall time also
// holds the waits for a free core at every exchange's hand-over.
//
// Run: quarvelo_sweep_bench [runs]   (default 7; prints the median and the spread of each)
#include <time.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/frmKeysight.h"
#include "app/qt_startup_platform.h"
#include "control/tool_dispatcher.h"
#include "platform/qt/picture_box.h"
#include "platform/qt/qsettings_store.h"
#include "sim/simulator.h"

namespace {

using quarvelo::app::frmKeysight;
using Clock = std::chrono::steady_clock;

// Bins index of 65,536 and 524,288 points in the Max Bins list (256 << index).
constexpr int kBins65536 = 8;
constexpr int kBins524288 = 11;

double CpuMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

long ResidentKilobytes(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  const std::string key = std::string(field) + ":";
  while (std::getline(status, line)) {
    if (line.rfind(key, 0) == 0) return std::atol(line.c_str() + key.size());
  }
  return -1;
}

struct Run {
  double wall_ms = 0;
  double cpu_ms = 0;
  double pause_ms = 0;  // the capture's settling pause between ":TRIGger:SWEep AUTO" and digitize
  // From a query's arrival to its reply: the simulator making the answer (the waveform block's
  // samples) on this machine's shared cores.
  double instrument_ms = 0;
  int messages = 0;
  int queries = 0;
};

// The settling pause as the simulator saw it, and the exchanges of one run.
void ReadTraffic(const quarvelo::sim::Simulator& simulator, Run* run) {
  double pause_start = -1;
  double received = -1;
  for (const quarvelo::sim::TrafficEntry& entry : simulator.Traffic()) {
    if (entry.direction == quarvelo::sim::TrafficEntry::Direction::kSent) {
      if (received >= 0) run->instrument_ms += (entry.seconds - received) * 1e3;
      received = -1;
      continue;
    }
    received = entry.seconds;
    ++run->messages;
    if (!entry.text.empty() && entry.text.find('?') != std::string::npos) ++run->queries;
    if (entry.text == ":TRIGger:SWEep AUTO") pause_start = entry.seconds;
    if (entry.text.rfind(":DIGitize", 0) == 0 && pause_start >= 0) {
      run->pause_ms += (entry.seconds - pause_start) * 1e3;
      pause_start = -1;
    }
  }
}

Run Measure(frmKeysight& window, quarvelo::sim::Simulator& simulator,
            const std::function<void()>& click) {
  simulator.ClearTraffic();
  Run run;
  const double cpu = CpuMilliseconds();
  const Clock::time_point start = Clock::now();
  click();
  window.picScreen()->repaint();  // the picture on screen, not only in the surface's image
  run.wall_ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  run.cpu_ms = CpuMilliseconds() - cpu;
  ReadTraffic(simulator, &run);
  return run;
}

void Report(const char* name, std::vector<Run> runs, bool pauses) {
  std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) {
    return a.wall_ms - a.pause_ms < b.wall_ms - b.pause_ms;
  });
  const Run& median = runs[runs.size() / 2];
  const double best = runs.front().wall_ms - runs.front().pause_ms;
  const double worst = runs.back().wall_ms - runs.back().pause_ms;
  std::printf("%-44s %8.1f ms (%.1f .. %.1f) cpu %7.1f ms", name, median.wall_ms - median.pause_ms,
              best, worst, median.cpu_ms);
  if (pauses) std::printf("  + pause %.1f ms", median.pause_ms);
  std::printf("  of which simulator %.1f ms  exchanges %d (%d queries)\n", median.instrument_ms,
              median.messages, median.queries);
}

class Bench {
 public:
  explicit Bench(double latency_ms) {
    quarvelo::sim::SimulatorOptions options;
    options.vxi11_port = -1;
    options.portmapper_port = -1;
    options.hislip_port = -1;
    options.latency_ms = latency_ms;
    std::string error;
    simulator_ = quarvelo::sim::Simulator::Start(options, &error);
    if (simulator_ == nullptr) {
      std::fprintf(stderr, "simulator: %s\n", error.c_str());
      std::exit(1);
    }
    store_ = std::make_unique<quarvelo::qt::QSettingsStore>(home_.path() + "/QUARVELO.conf");
    store_->Set("Setup", "VISA", simulator_->SocketResource());
    store_->Set("Setup", "DSO", "1");
    store_->Set("Setup", "Channels", "4");
    store_->Set("Setup", "DVM", "1");
    store_->Set("Setup", "WGEN", "1");
    window_ = std::make_unique<frmKeysight>(*store_, platform_);
    if (!window_->Form_Load()) std::exit(1);
    window_->resize(1400, 900);
    window_->show();
    window_->Link().OpenInstrument();
    if (!window_->Session().RemoteOn) {
      std::fprintf(stderr, "the link did not open\n");
      std::exit(1);
    }
    // The status poll would land in the middle of a measurement.
    window_->findChild<QTimer*>("tmrRefresh")->stop();
  }

  void Execute(const std::string& line) { simulator_->Execute(line); }
  // Only the channels in `shown` displayed, the trigger on the first of them.
  void ShowChannels(const std::vector<int>& shown) {
    for (int n = 1; n <= 4; ++n) {
      const bool on = std::find(shown.begin(), shown.end(), n) != shown.end();
      Execute(":CHANnel" + std::to_string(n) + (on ? ":DISPlay 1" : ":DISPlay 0"));
    }
    Execute(":TRIGger:EDGE:SOURce CHANnel" + std::to_string(shown.front()));
  }
  void SetBins(int index) {
    window_->Settings().BinsIndex = index;
    window_->Tools().SetComboIndex("ID_Bins", index);
  }
  Run Click(const std::string& tool) {
    return Measure(*window_, *simulator_, [&] { window_->Dispatcher().ToolClick(tool); });
  }
  std::vector<Run> Repeat(int runs, const std::string& tool) {
    Click(tool);  // warm-up: storage grown, connection and caches warm
    std::vector<Run> out;
    for (int i = 0; i < runs; ++i) out.push_back(Click(tool));
    return out;
  }
  frmKeysight& window() { return *window_; }

 private:
  QTemporaryDir home_;
  std::unique_ptr<quarvelo::sim::Simulator> simulator_;
  std::unique_ptr<quarvelo::qt::QSettingsStore> store_;
  quarvelo::app::QtStartupPlatform platform_;
  std::unique_ptr<frmKeysight> window_;
};

void SweepRuns(Bench& bench, int runs, const char* label) {
  // The simulator's record is what the screen spans: at 2 GSa/s with four channels on,
  // 3.2768 us/div spans 65,536 samples.
  bench.ShowChannels({1, 2, 3, 4});
  bench.Execute(":TIMebase:SCALe 3.2768E-6");
  bench.SetBins(kBins65536);
  bench.Execute(":STOP");
  bench.Execute(":DIGitize");
  const std::vector<Run> stopped = bench.Repeat(runs, "ID_DIG");
  std::printf("points per channel: %d\n", bench.window().Records().Records[1].ByteCount);
  Report((std::string(label) + " Sweep, stopped").c_str(), stopped, false);
  bench.Execute(":RUN");
  // The poll that tells the Sweep tool the oscilloscope runs.
  bench.window().Link().PollInstrumentStatus(true);
  std::vector<Run> running;
  for (int i = 0; i < runs; ++i) {
    bench.window().Link().PollInstrumentStatus(true);
    running.push_back(bench.Click("ID_DIG"));
  }
  Report((std::string(label) + " Sweep, running (restart)").c_str(), running, true);
}

}  // namespace

int main(int argc, char* argv[]) {
  const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
  QTemporaryDir home;
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toUtf8());
  qputenv("XDG_DATA_HOME", (home.path() + "/data").toUtf8());
  QApplication application(argc, argv);

  {
    Bench bench(0);
    SweepRuns(bench, runs, "4 x 65,536");

    // FFT1 of the whole record: channel 1 alone, 524,288 samples at 500 MSa/s span
    // 104.8576 us/div.
    bench.ShowChannels({1});
    bench.Execute(":TIMebase:SCALe 1.048576E-4");
    bench.window().Settings().AverageCount = 1;
    const std::vector<Run> fft = bench.Repeat(runs, "ID_FFT1");
    std::printf("FFT points: %d, transform length %d\n",
                bench.window().Records().Records[1].ByteCount,
                bench.window().SpectrumRecord().TransformLength);
    Report("FFT1, one pass", fft, true);

    // Memory: four records of 524,288 points and a run of 16 passes.
    // The simulator keeps 524,288 samples only for one or two channels on: one Sweep each.
    bench.SetBins(kBins524288);
    bench.Execute(":STOP");
    for (int n = 4; n >= 1; --n) {
      bench.ShowChannels({n});
      bench.Execute(":DIGitize");
      bench.Click("ID_DIG");
    }
    std::printf("records: %d %d %d %d points\n", bench.window().Records().Records[1].ByteCount,
                bench.window().Records().Records[2].ByteCount,
                bench.window().Records().Records[3].ByteCount,
                bench.window().Records().Records[4].ByteCount);
    bench.window().Settings().AverageCount = 16;
    const Run sixteen = bench.Click("ID_FFT1");
    std::printf("FFT1, 16 passes: %.0f ms wall (with 15 pauses of 1000 ms), history %d x %d\n",
                sixteen.wall_ms, bench.window().SpectrumRecord().History.points(),
                bench.window().SpectrumRecord().History.passes() - 1);
    std::printf("resident memory: %.1f MB now, %.1f MB peak\n", ResidentKilobytes("VmRSS") / 1024.0,
                ResidentKilobytes("VmHWM") / 1024.0);
  }
  {
    Bench bench(1);
    SweepRuns(bench, runs, "4 x 65,536, 1 ms per exchange");
  }
  return 0;
}
