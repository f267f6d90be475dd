// Everything an InstrumentLink needs, in memory: the recording UI and tool host, an in-memory
// settings store, hooks that record the sweeps and rebuilds asked for, and a ScopeState.
#ifndef QUARVELO_TESTS_LINK_LINK_HARNESS_H_
#define QUARVELO_TESTS_LINK_LINK_HARNESS_H_

#include <string>
#include <string_view>
#include <vector>

#include "acquisition/scope_state.h"
#include "link/instrument_link.h"
#include "platform/settings/memory_settings_store.h"
#include "platform/ui/recording_ui.h"
#include "tests/link/fields.h"

namespace quarvelo::testing_support {

class RecordingLinkHooks : public link::LinkHooks {
 public:
  void RequestSweep(bool restart) override { sweeps.push_back(restart); }
  void RebuildToolbar() override { ++rebuilds; }
  void CloseWgenDialog() override { ++wgen_closes; }
  void EndProgram() override { ++program_ends; }

  std::vector<bool> sweeps;
  int rebuilds = 0;
  int wgen_closes = 0;
  int program_ends = 0;
};

// Records, with every tool state change, whether ToolUpdateInProgress was set at that moment.
class GuardWatchingToolHost : public ui::RecordingToolHost {
 public:
  explicit GuardWatchingToolHost(const bool& guard) : guard_(guard) {}
  void SetToolState(std::string_view id, bool down) override {
    if (!guard_) unguarded.emplace_back(id);
    ui::RecordingToolHost::SetToolState(id, down);
  }
  std::vector<std::string> unguarded;  // tools changed while the guard was clear

 private:
  const bool& guard_;
};

struct LinkHarness {
  link::InstrumentSession session;
  link::StatusFlags flags;
  acquisition::ScopeState scope;
  ui::RecordingUi ui;
  GuardWatchingToolHost tools{scope.ToolUpdateInProgress};
  settings::MemorySettingsStore settings;
  RecordingLinkHooks hooks;
  link::InstrumentLink link{
      session, flags, {scope.ChannelCount, scope.HasDvm, scope.HasWgen, scope.ToolUpdateInProgress},
      ui,      tools, settings,
      hooks};
};

}  // namespace quarvelo::testing_support

#endif  // QUARVELO_TESTS_LINK_LINK_HARNESS_H_
