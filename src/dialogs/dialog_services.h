// What the instrument dialogs work with, lent by the main window: the link, the readback, the
// state mirror, the UI services, the toolbar and a way to ask for one sweep.
#ifndef QUARVELO_DIALOGS_DIALOG_SERVICES_H_
#define QUARVELO_DIALOGS_DIALOG_SERVICES_H_

#include <functional>

#include "acquisition/readback.h"
#include "acquisition/scope_state.h"
#include "link/instrument_link.h"
#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"

namespace quarvelo::dialogs {

struct DialogServices {
  link::InstrumentLink& Link;
  acquisition::StateReadback& Readback;
  acquisition::ScopeState& Scope;
  ui::UiServices& Ui;
  ui::ToolHost& Tools;
  // ID_Sweep: restart = true leaves a running oscilloscope running after the capture.
  std::function<void(bool restart)> RequestSweep;
};

// The oscilloscope is running unless the last status poll (or our own Stop) said otherwise.
inline bool ScopeRunning(const DialogServices& services) { return !services.Link.flags().Stopped; }

// One sweep that leaves a running oscilloscope running and a stopped one stopped.
inline void SweepIfRunning(const DialogServices& services) {
  if (services.RequestSweep) services.RequestSweep(ScopeRunning(services));
}

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_DIALOG_SERVICES_H_
