// The screen drawing on a 1600 x 1000-pixel surface: a redraw of four 524,288-sample records,
// a spectrum of 262,145 points and one cursor move while dragging over it, each beside the
// same drawing made segment by segment. `--save_images=DIR` also writes the pictures.
#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <QImage>
#include <cmath>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "display/screen_view.h"
#include "platform/ui/recording_ui.h"

namespace quarvelo::display {
namespace {

constexpr std::int32_t kRecord = 524288;
constexpr std::int32_t kSpectrumPoints = 262145;

class BenchHost : public DisplayHost {
 public:
  bool SweepMode() const override { return sweep_mode; }
  bool MixedDomainOn() const override { return false; }
  int SpectrumUnit() const override { return 0; }
  std::optional<spectrum::PlanLines> PlanTransform(int) override {
    return spectrum::PlanLines{"OSC: 524288 pts", ""};
  }
  void MixedDomainSpectrum(int, int) override {}
  double ReapplyBandwidthLimit() override { return 0; }
  void SendFftCentreSpan(double, double) override {}
  void ShowCursorSourceTool(int) override {}
  void SurfaceChanged() override {}
  bool sweep_mode = true;
};

// Records, spectrum and view as a capture and an FFT run leave them.
struct Screen {
  Screen() : surface(1600, 1000, QImage::Format_RGB32) {
    surface.fill(Qt::black);
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0, 0.2);
    waveforms.Samples.Grow(kRecord);
    for (int c = 1; c <= 4; ++c) {
      waveforms.Records[c].ByteCount = kRecord;
      waveforms.Records[c].XIncrement = 1e-9;
      for (std::int32_t i = 0; i < kRecord; ++i) {
        waveforms.Samples.Time(c)[i] = i * 1e-9;
        waveforms.Samples.Volts(c)[i] =
            c * 0.5 * std::sin(i * 6.2831853 / (5000.0 * c)) + noise(random);
      }
      auto& channel = scope.Channels[c];
      channel.Displayed = true;
      channel.Scale = 1;
      channel.Offset = 0;
      channel.FirstSample = 0;
      channel.LastSample = kRecord - 1;
    }
    scope.TimebaseScale = kRecord * 1e-9 / 10;
    scope.SampleRate = 1e6;
    spectrum.SpectrumLevel.resize(2 * kSpectrumPoints - 1, -160);
    spectrum.SpectrumFrequency.resize(spectrum.SpectrumLevel.size());
    for (std::int32_t p = 0; p < kSpectrumPoints; ++p) {
      spectrum.SpectrumLevel[p] = -100 + 15 * noise(random) * 5 + (p % 5000 == 0 ? 60 : 0);
      spectrum.SpectrumFrequency[p] = p * 1907.35;
    }
    spectrum.TransformLength = 2 * (kSpectrumPoints - 1);
    spectrum.FirstPoint = 0;
    spectrum.LastPoint = kSpectrumPoints - 1;
    spectrum.LevelTop = 0;
    spectrum.LevelBottom = -160;
    spectrum.StartFrequency = 0;
    spectrum.StopFrequency = (kSpectrumPoints - 1) * 1907.35;
    spectrum.SpectrumReady = true;
    spectrum.SpectrumChannel = 1;
  }

  acquisition::ScopeState scope;
  acquisition::WaveformRecords waveforms;
  spectrum::Spectrum spectrum;
  ViewState state;
  ScreenLayout layout;
  BenchHost host;
  ui::RecordingUi ui;
  QImage surface;
  QImage pic_temp;
  ScreenView view{surface, pic_temp, {scope, waveforms, spectrum, state, layout}, host, ui};
};

Screen& Shared() {
  static Screen screen;
  return screen;
}

void BM_RedrawScreen(benchmark::State& state) {
  Screen& screen = Shared();
  screen.host.sweep_mode = true;
  screen.view.SetEverySegment(state.range(0) == 1);
  for (auto _ : state) screen.view.RedrawScreen();
  state.SetLabel(state.range(0) == 1 ? "every segment" : "pixel columns");
}
BENCHMARK(BM_RedrawScreen)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_DrawSpectrum(benchmark::State& state) {
  Screen& screen = Shared();
  screen.host.sweep_mode = false;
  screen.view.SetEverySegment(state.range(0) == 1);
  for (auto _ : state) screen.view.DrawSpectrum(1, false);
  state.SetLabel(state.range(0) == 1 ? "every segment" : "pixel columns");
}
BENCHMARK(BM_DrawSpectrum)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Erase, snap and readout; the naive way erases by drawing the spectrum again.
void BM_CursorMove(benchmark::State& state) {
  Screen& screen = Shared();
  screen.host.sweep_mode = false;
  const bool naive = state.range(0) == 1;
  screen.view.SetEverySegment(naive);
  screen.view.DrawSpectrum(1, false);
  const ScreenLayout& layout = screen.layout;
  const double y = (layout.GridTop + layout.GridBottom) / 2 / 15;
  screen.view.MouseDown(layout.GridLeft / 15 + 100, y, kLeftButton);
  int step = 0;
  for (auto _ : state) {
    const double x = layout.GridLeft / 15 + 100 + (step++ % 800);
    if (naive) {
      screen.view.DrawSpectrum(1, false);
      screen.view.CursorMouse(x * 15, y * 15, true, kLeftButton);
    } else {
      screen.view.MouseMove(x, y, kLeftButton);
    }
  }
  screen.view.MouseUp(0, 0, kLeftButton);
  state.SetLabel(naive ? "redraw, every segment" : "restore picTemp");
}
BENCHMARK(BM_CursorMove)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void SaveImages(const std::string& folder) {
  Screen& screen = Shared();
  screen.host.sweep_mode = true;
  screen.view.RedrawScreen();
  screen.surface.save(QString::fromStdString(folder + "/screen.png"));
  screen.host.sweep_mode = false;
  screen.view.RedrawScreen();
  screen.view.MouseDown(600, 800, kLeftButton);
  screen.view.MouseUp(600, 800, kLeftButton);
  screen.view.CursorMouse(900 * 15, 820 * 15, false, kRightButton);
  screen.surface.save(QString::fromStdString(folder + "/spectrum.png"));
}

}  // namespace
}  // namespace quarvelo::display

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication application(argc, argv);
  for (int i = 1; i < argc; ++i) {
    constexpr const char* kSave = "--save_images=";
    if (std::strncmp(argv[i], kSave, std::strlen(kSave)) == 0) {
      quarvelo::display::SaveImages(argv[i] + std::strlen(kSave));
      return 0;
    }
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
