// The status polls of the two timers: the Run bit drives the run/stop tool, the User Request
// bit (a front-panel key) the activity indicator and the automatic refresh.
#include "link/instrument_link.h"
#include "link/register_bits.h"
#include "link/tool_update_guard.h"
#include "platform/text/number_parse.h"

namespace quarvelo::link {
namespace {

constexpr ui::Rgb kActivityKeyPressed = ui::MakeRgb(255, 0, 0);

}  // namespace

void InstrumentLink::PollInstrumentStatus(bool enabled) {
  if (!session_.RemoteOn || session_.TimedOut || !enabled || flags_.CaptureBusy ||
      flags_.PollBusy) {
    return;
  }
  flags_.PollBusy = true;
  SetIoTimeout(false, kDefaultIoTimeoutMs);
  QueryString(":AER?");  // reading clears the register; its value is not used
  const double esr = text::LeadingNumber(QueryString("*ESR?"));
  const double oper = text::LeadingNumber(QueryString(":OPERegister:CONDition?"));
  const std::vector<int> esr_bits = SplitRegisterBits(esr, kEsrWidth);
  const std::vector<int> oper_bits = SplitRegisterBits(oper, kOperWidth);
  {
    ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
    tools_.SetToolState("ID_Run", oper_bits[kRunElement] == 1);
  }
  flags_.RunBit = oper_bits[kRunElement];
  if (esr_bits[kUserRequestElement] == 1) {
    ui_.SetActivityColour(kActivityKeyPressed);
    if (flags_.AutoRefresh) hooks_.RequestSweep(flags_.RunBit == 1);
  }
  flags_.Stopped = flags_.RunBit == 0;
  flags_.PollBusy = false;
}

void InstrumentLink::CheckSingleDone(bool sweep_mode) {
  if (!session_.RemoteOn || !sweep_mode || flags_.CaptureBusy || flags_.PollBusy) return;
  flags_.PollBusy = true;
  const double oper = text::LeadingNumber(QueryString(":OPERegister:CONDition?"));
  const int run = SplitRegisterBits(oper, kOperWidth)[kRunElement];
  {
    ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
    tools_.SetToolState("ID_Run", run == 1);
  }
  if (run == 0) {
    hooks_.RequestSweep(false);
    {
      ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
      tools_.SetToolState("ID_Single", false);
    }
    ui_.SetSingleTimerEnabled(false);
    ui_.SetRefreshTimerEnabled(true);
  }
  flags_.PollBusy = false;
}

}  // namespace quarvelo::link
