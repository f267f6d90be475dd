// Saving and opening a CSV waveform file of 524,288 samples (the longest capture), beside a
// plain std::getline + strtod loop over the same file as the yardstick. The file is in the page
// cache for every read, so the times are the program's own work, not the disk's.
//
// Run: quarvelo_files_bench [runs]   (default 7; prints each run and the median)
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "acquisition/scope_state.h"
#include "acquisition/waveform_record.h"
#include "files/csv_files.h"
#include "platform/ui/recording_ui.h"

namespace {

using quarvelo::files::CsvFiles;
using Clock = std::chrono::steady_clock;

constexpr std::int32_t kSamples = 524288;

class NoHost : public quarvelo::files::CsvHost {
 public:
  bool SweepMode() const override { return true; }
  std::int16_t SpectrumChannel() const override { return 1; }
  std::int16_t DisplayedChannel() const override { return 1; }
  void SetDisplayedChannel(std::int16_t) override {}
  void SetCursorChannel(std::int16_t) override {}
  void SetLastZoomMode(int) override {}
  void DrawEmptyFrame() override {}
  void SetSweepMode() override {}
  void RunSweep() override {}
};

double Milliseconds(Clock::duration d) {
  return std::chrono::duration<double, std::milli>(d).count();
}

// Processor time of this thread: the machine may be shared, and waiting for a core is not
// the program's cost.
double CpuMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

// The yardstick: every line read with std::getline, both columns converted with strtod.
double GetlineStrtod(const std::string& path, std::size_t* lines) {
  std::ifstream in(path);
  std::string line;
  std::getline(in, line);  // header
  double sum = 0;
  *lines = 0;
  while (std::getline(in, line)) {
    char* end = nullptr;
    sum += std::strtod(line.c_str(), &end);
    if (*end == ';') sum += std::strtod(end + 1, nullptr);
    ++*lines;
  }
  return sum;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("quarvelo-files-bench-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  const std::string path = (folder / "waveform1.csv").string();
  const std::string data_folder = folder.string();

  quarvelo::acquisition::ScopeState scope;
  quarvelo::acquisition::WaveformRecords waveforms;
  NoHost host;
  quarvelo::ui::RecordingUi ui;
  quarvelo::ui::RecordingToolHost tools;
  CsvFiles files({scope, waveforms}, host, ui, tools, data_folder);

  // A capture's record: a sine of 8-bit codes, 2 ns per sample.
  auto& record = waveforms.Records[1];
  record.XIncrement = 2e-9;
  record.XOrigin = -kSamples * 1e-9;
  record.ByteCount = kSamples;
  waveforms.Shared.SampleRateK = 500000;
  scope.Channels[1].Scale = 0.2;
  scope.TimebaseScale = 1e-4;
  waveforms.Samples.Grow(kSamples);
  for (std::int32_t i = 0; i < kSamples; ++i) {
    const double code = std::round(128 + 100 * std::sin(i * 0.001));
    waveforms.Samples.Volts(1)[i] = (code - 128) * 0.008 + 0.01;
  }

  std::printf("%d lines, %d runs; wall ms (processor ms)\n", kSamples + 1, runs);
  std::printf("%-6s %16s %16s %20s\n", "run", "save", "open", "getline+strtod");
  std::vector<double> saves, opens, plains, cpu_saves, cpu_opens, cpu_plains;
  for (int run = 1; run <= runs; ++run) {
    scope.Channels[1].Coupling.clear();
    const double c0 = CpuMilliseconds();
    const Clock::time_point t0 = Clock::now();
    if (!files.WriteCsvFile(path, 1)) return 1;
    const double c1 = CpuMilliseconds();
    const Clock::time_point t1 = Clock::now();
    files.OpenCsvPath(path);
    const double c2 = CpuMilliseconds();
    const Clock::time_point t2 = Clock::now();
    std::size_t lines = 0;
    const double sum = GetlineStrtod(path, &lines);
    const double c3 = CpuMilliseconds();
    const Clock::time_point t3 = Clock::now();
    if (record.ByteCount != kSamples || lines != static_cast<std::size_t>(kSamples) ||
        !ui.status_lines().empty()) {
      std::fprintf(stderr, "the file did not read back whole\n");
      return 1;
    }
    saves.push_back(Milliseconds(t1 - t0));
    opens.push_back(Milliseconds(t2 - t1));
    plains.push_back(Milliseconds(t3 - t2));
    cpu_saves.push_back(c1 - c0);
    cpu_opens.push_back(c2 - c1);
    cpu_plains.push_back(c3 - c2);
    std::printf("%-6d %7.1f (%6.1f) %7.1f (%6.1f) %11.1f (%6.1f)   checksum %.3f\n", run,
                saves.back(), cpu_saves.back(), opens.back(), cpu_opens.back(), plains.back(),
                cpu_plains.back(), sum);
  }
  std::printf("%-6s %7.1f (%6.1f) %7.1f (%6.1f) %11.1f (%6.1f)\n", "median", Median(saves),
              Median(cpu_saves), Median(opens), Median(cpu_opens), Median(plains),
              Median(cpu_plains));
  std::printf("file size %ju bytes\n",
              static_cast<std::uintmax_t>(std::filesystem::file_size(path)));
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  return 0;
}
