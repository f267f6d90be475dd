// Start-up cost of the toolbar: building all 203 tools with their menus and toolbars, and one
// SetToolbar on the real widgets. Runs without a display (offscreen platform).
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QMainWindow>
#include <QtGlobal>

#include "acquisition/scope_state.h"
#include "control/qt/qt_tool_host.h"
#include "control/set_toolbar.h"
#include "platform/settings/memory_settings_store.h"

namespace quarvelo::control {
namespace {

void BM_BuildToolbarTree(benchmark::State& state) {
  for (auto _ : state) {
    QMainWindow window;
    QtToolHost host(&window);
    benchmark::DoNotOptimize(host.Action("ID_Run"));
  }
}
BENCHMARK(BM_BuildToolbarTree)->Unit(benchmark::kMillisecond);

void BM_SetToolbar(benchmark::State& state) {
  QMainWindow window;
  QtToolHost host(&window);
  window.show();
  settings::MemorySettingsStore settings;
  acquisition::ScopeState scope;
  bool four = false;
  for (auto _ : state) {
    // Alternate so that every run really changes visibility and refills the time-base combo.
    settings.Set("Setup", "Channels", four ? "4" : "2");
    four = !four;
    SetToolbar(host, settings, /*remote_on=*/true, SpectrumChoices{}, scope);
    QApplication::processEvents();
  }
}
BENCHMARK(BM_SetToolbar)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quarvelo::control

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
