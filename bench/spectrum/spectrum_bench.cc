// The FFT engines against FFTW at the same lengths, and one pass of the spectrum computation
// on the largest record, with the heap allocations each pass makes.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <atomic>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "platform/ui/ui_services.h"
#include "spectrum/averaging.h"
#include "spectrum/cls_fourier.h"
#include "spectrum/fft_orlen.h"
#include "spectrum/spectrum_analyzer.h"

namespace {

std::atomic<long long> allocation_count{0};

}  // namespace

// Counts every heap allocation of the process, so that a pass can show it makes none.
void* operator new(std::size_t size) {
  allocation_count.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace quarvelo::spectrum {
namespace {

std::vector<double> RandomSamples(std::size_t n) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::vector<double> samples(n);
  for (double& x : samples) x = value(random);
  return samples;
}

class NullUi : public ui::UiServices {
 public:
  void ShowStatus(std::string_view) override {}
  ui::MessageResult ShowMessage(std::string_view, ui::MessageIcon, ui::MessageButtons) override {
    return ui::MessageResult::kOk;
  }
  std::optional<std::string> AskOpenFile(const ui::FileDialogRequest&) override { return {}; }
  std::optional<std::string> AskSaveFile(const ui::FileDialogRequest&) override { return {}; }
  void SetPointer(ui::PointerShape) override {}
  void ProcessPendingEvents() override {}
  void Pause(int) override {}
  void SetActivityColour(ui::Rgb) override {}
  void SetRefreshTimerEnabled(bool) override {}
  void SetSingleTimerEnabled(bool) override {}
};

void BM_ModuleFft(benchmark::State& state) {
  const auto n = static_cast<std::int32_t>(state.range(0));
  NullUi ui;
  FourierWorkspace workspace;
  workspace.AllocateAll(n);
  const std::vector<double> samples = RandomSamples(n);
  std::copy(samples.begin(), samples.end(), workspace.RealInput.begin());
  PrepareTwiddles(workspace, n, false);
  for (auto _ : state) {
    Fourier(workspace, n, false, ui);
    benchmark::DoNotOptimize(workspace.RealOutput.data());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void BM_PrepareTwiddlesFirstTime(benchmark::State& state) {
  const auto n = static_cast<std::int32_t>(state.range(0));
  FourierWorkspace workspace;
  workspace.AllocateAll(n);
  for (auto _ : state) {
    workspace.prepared_length = -1;  // forget the tables, as a new length would
    PrepareTwiddles(workspace, n, false);
    benchmark::DoNotOptimize(workspace.TwiddleAlpha.data());
  }
}

void BM_ObjectFft(benchmark::State& state) {
  const auto n = static_cast<std::int32_t>(state.range(0));
  clsFourier fourier;
  fourier.SetNumberOfSamples(n);
  const std::vector<double> samples = RandomSamples(n);
  for (std::int32_t i = 1; i <= n; ++i) fourier.SetRealIn(i, samples[i - 1]);
  std::complex<double> bin;
  for (auto _ : state) {
    fourier.SetImagIn(1, 0.0);  // marks the output stale: the next read recomputes
    fourier.ComplexOut(1, &bin);
    benchmark::DoNotOptimize(bin);
  }
  state.SetItemsProcessed(state.iterations() * n);
}

// FFTW on the same samples: complex or real input, planned with FFTW_ESTIMATE or FFTW_MEASURE.
void BM_Fftw(benchmark::State& state, bool real_input, unsigned flags) {
  const auto n = static_cast<int>(state.range(0));
  double* real_in = fftw_alloc_real(n);
  fftw_complex* in = fftw_alloc_complex(n);
  fftw_complex* out = fftw_alloc_complex(n);
  // Planning with FFTW_MEASURE overwrites the arrays: the samples are written afterwards.
  fftw_plan plan = real_input ? fftw_plan_dft_r2c_1d(n, real_in, out, flags)
                              : fftw_plan_dft_1d(n, in, out, FFTW_BACKWARD, flags);
  const std::vector<double> samples = RandomSamples(n);
  for (int i = 0; i < n; ++i) {
    real_in[i] = samples[i];
    in[i][0] = samples[i];
    in[i][1] = 0;
  }
  for (auto _ : state) {
    fftw_execute(plan);
    benchmark::DoNotOptimize(out);
  }
  fftw_destroy_plan(plan);
  fftw_free(real_in);
  fftw_free(in);
  fftw_free(out);
  state.SetItemsProcessed(state.iterations() * n);
}

// The numpy script's pass (window, real FFT, dBV levels) on the 524 288 samples of the
// ComputeSpectrum benchmarks, run by the system's Python; the counters are its own medians
// over 50 passes (wall and processor milliseconds) and fastest passes.
void BM_NumpyScriptPass(benchmark::State& state) {
  constexpr std::int32_t kRecord = 524288;
  std::vector<double> record = RandomSamples(kRecord);
  for (std::int32_t i = 0; i < kRecord; ++i) record[i] += std::sin(i * 0.01);
  const std::string path = "/tmp/quarvelo_spectrum_bench_samples.bin";
  if (std::FILE* file = std::fopen(path.c_str(), "wb")) {
    std::fwrite(record.data(), sizeof(double), record.size(), file);
    std::fclose(file);
  }
  const std::string command =
      std::string("/usr/bin/python3 ") + QUARVELO_NUMPY_PASS_SCRIPT + " " + path + " 50";
  double wall = 0, cpu = 0, fastest_wall = 0, fastest_cpu = 0;
  for (auto _ : state) {
    std::FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr ||
        std::fscanf(pipe, "%lf %lf %lf %lf", &wall, &cpu, &fastest_wall, &fastest_cpu) != 4) {
      state.SkipWithError("the numpy script did not run");
    }
    if (pipe != nullptr) pclose(pipe);
  }
  std::remove(path.c_str());
  state.counters["median_wall_ms"] = wall;
  state.counters["median_cpu_ms"] = cpu;
  state.counters["fastest_wall_ms"] = fastest_wall;
  state.counters["fastest_cpu_ms"] = fastest_cpu;
}

class BenchStore : public SampleStore {
 public:
  explicit BenchStore(std::vector<double> volts)
      : count_(static_cast<std::int32_t>(volts.size())), volts_(std::move(volts)) {}
  std::int32_t SampleCount(int) const override { return count_; }
  std::span<const double> Volts(int) const override { return volts_; }
  std::span<double> GrowVolts(int, std::int32_t size) override {
    if (std::ssize(volts_) < size) volts_.resize(size);
    return volts_;
  }

 private:
  std::int32_t count_;
  std::vector<double> volts_;
};

class BenchHost : public SpectrumHost {
 public:
  void SetProgressRange(int, int) override {}
  void SetProgressValue(double) override {}
  bool WindowMinimised() const override { return false; }
  double SampleRate() const override { return 1e6; }
  double ChannelScale(int) const override { return 0.5; }
  bool ChannelDisplayed(int) const override { return true; }
  void DrawSpectrum(int) override {}
  bool MdiChecked() const override { return false; }
  int ReferenceChannel() const override { return 1; }
  void RedrawStatusPanel() override {}
  void ShowAverageCount(int) override {}
  void SetLastZoomMode(int) override {}
  void RestoreOscilloscopePane() override {}
};

// One pass of an averaging run on a 524 288-sample record (transformed as 2^19 points with
// the module FFT, dBV, Hanning). range(0) = 1 measures the first pass of a run (window,
// history and twiddle tables built), 2 a later pass.
void BM_ComputeSpectrumPass(benchmark::State& state) {
  const bool first_pass = state.range(0) == 1;
  constexpr std::int32_t kRecord = 524288;
  std::vector<double> record = RandomSamples(kRecord);
  for (std::int32_t i = 0; i < kRecord; ++i) record[i] += std::sin(i * 0.01);
  BenchStore store(std::move(record));
  BenchHost host;
  NullUi ui;
  Spectrum spectrum;
  FourierWorkspace workspace;
  clsFourier fourier;
  bool stop = false;
  SpectrumAnalyzer analyzer(spectrum, workspace, fourier, store, host, ui, stop);
  FftSettings settings;
  settings.AverageCount = 16;
  analyzer.PlanTransform(1, false, settings);
  BeginAveragingPass(spectrum, 1, 1, host.SampleRate());
  analyzer.ComputeSpectrum(1, 1, settings);  // the run's first pass
  long long allocations = 0;
  std::int32_t pass = 1;
  for (auto _ : state) {
    if (first_pass) {
      workspace.prepared_length = -1;  // as after a change of length
      BeginAveragingPass(spectrum, 1, 1, host.SampleRate());
    } else {
      pass = pass < 16 ? pass + 1 : 2;  // passes 2..16 in order, as a run makes them
      BeginAveragingPass(spectrum, pass, 1, host.SampleRate());
    }
    const long long before = allocation_count.load();
    analyzer.ComputeSpectrum(1, 1, settings);
    allocations += allocation_count.load() - before;
    benchmark::DoNotOptimize(spectrum.SpectrumLevel.data());
  }
  state.counters["allocations_per_pass"] =
      benchmark::Counter(static_cast<double>(allocations), benchmark::Counter::kAvgIterations);
  state.counters["transform_length"] = spectrum.TransformLength;
}

// The first pass of the very first run (or of a run at a new length): every array of the
// spectrum and of the workspace is allocated during the pass, fresh from the system.
void BM_ComputeSpectrumColdFirstPass(benchmark::State& state) {
  constexpr std::int32_t kRecord = 524288;
  std::vector<double> record = RandomSamples(kRecord);
  for (std::int32_t i = 0; i < kRecord; ++i) record[i] += std::sin(i * 0.01);
  BenchStore store(std::move(record));
  BenchHost host;
  NullUi ui;
  clsFourier fourier;
  bool stop = false;
  FftSettings settings;
  settings.AverageCount = 16;
  for (auto _ : state) {
    state.PauseTiming();
    auto spectrum = std::make_unique<Spectrum>();
    auto workspace = std::make_unique<FourierWorkspace>();
    SpectrumAnalyzer analyzer(*spectrum, *workspace, fourier, store, host, ui, stop);
    analyzer.PlanTransform(1, false, settings);
    BeginAveragingPass(*spectrum, 1, 1, host.SampleRate());
    state.ResumeTiming();
    analyzer.ComputeSpectrum(1, 1, settings);
    benchmark::DoNotOptimize(spectrum->SpectrumLevel.data());
    state.PauseTiming();
    spectrum.reset();  // giving the memory back is not part of the pass
    workspace.reset();
    state.ResumeTiming();
  }
}

BENCHMARK(BM_ModuleFft)->RangeMultiplier(2)->Range(1 << 10, 1 << 19)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ObjectFft)->RangeMultiplier(2)->Range(1 << 10, 1 << 19)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Fftw, ComplexEstimate, false, FFTW_ESTIMATE)
    ->RangeMultiplier(2)
    ->Range(1 << 10, 1 << 19)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Fftw, ComplexMeasure, false, FFTW_MEASURE)
    ->RangeMultiplier(2)
    ->Range(1 << 10, 1 << 19)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Fftw, RealEstimate, true, FFTW_ESTIMATE)
    ->RangeMultiplier(2)
    ->Range(1 << 10, 1 << 19)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Fftw, RealMeasure, true, FFTW_MEASURE)
    ->RangeMultiplier(2)
    ->Range(1 << 10, 1 << 19)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PrepareTwiddlesFirstTime)->Arg(1 << 19)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ComputeSpectrumPass)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ComputeSpectrumColdFirstPass)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NumpyScriptPass)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quarvelo::spectrum

BENCHMARK_MAIN();
