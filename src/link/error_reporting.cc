// ReportVisaError and CheckInstrumentErrors: VISA failures become a message and a closed link
// (or a tolerated time-out); the instrument's error queue is drained onto the status line.
#include <array>
#include <exception>
#include <string>

#include "link/instrument_link.h"
#include "link/reply_text.h"
#include "link/tool_update_guard.h"
#include "platform/text/number_parse.h"

namespace quarvelo::link {
namespace {

constexpr std::size_t kErrorReplyLimit = 200;

}  // namespace

void InstrumentLink::ReportVisaError(ViSession session) {
  if (!session_.RemoteOn) return;
  const ViStatus status = session_.LastStatus;
  std::array<ViChar, 256> description{};
  // The description's own status is not stored: LastStatus must stay the failure reported.
  viStatusDesc(session, status, description.data());
  description.back() = '\0';
  if (status >= VI_SUCCESS) return;

  if (session_.TolerateTimeout) {
    session_.TimedOut = true;
    ShowStatus("TIME OUT!");
    return;
  }
  const std::string message = std::string("*** VISA Error : ") + description.data();
  if (session != VI_NULL) viClose(session);
  // The resource manager would otherwise outlive the closed link; closing it closes nothing
  // else the program still holds.
  if (session != session_.ResourceManager && session_.ResourceManager != VI_NULL) {
    viClose(session_.ResourceManager);
  }
  session_.Instrument = VI_NULL;
  session_.ResourceManager = VI_NULL;
  // The link is down before the box shows: the box lets events run, and a timer tick that
  // found RemoteOn still set would use the closed session and report a second error.
  session_.RemoteOn = false;
  ui_.ShowMessage(message, ui::MessageIcon::kCritical, ui::MessageButtons::kOk);
  SetRemoteToolOff();
  scope_.ChannelCount = 2;
  settings_.Set("Setup", "Channels", "2");
  hooks_.RebuildToolbar();
}

void InstrumentLink::CheckInstrumentErrors() {
  // After a tolerated time-out the instrument is not answering: asking its error queue would
  // cost one more time-out per query, which is what tolerating time-outs is meant to avoid.
  if (!session_.RemoteOn || session_.TimedOut) return;
  try {
    std::string accumulated;
    // One entry of the queue; false when the exchange failed, so the loop cannot spin on a
    // stale reply after the link went down or the read timed out.
    auto next_entry = [this](std::string* entry) {
      entry->clear();
      Check(WriteLine(":SYSTem:ERRor?"), session_.Instrument);
      if (!session_.RemoteOn || session_.LastStatus < VI_SUCCESS) return false;
      std::string raw;
      const ViStatus status = ReadText(kErrorReplyLimit, &raw);
      Check(status, session_.Instrument);
      if (!session_.RemoteOn || status < VI_SUCCESS) return false;
      *entry = CleanReply(raw);
      return true;
    };
    std::string entry;
    bool ok = next_entry(&entry);
    for (int n = 0; ok && n < kMaxErrorEntries && text::LeadingNumber(entry) != 0; ++n) {
      accumulated += "INST Error: " + entry;
      ok = next_entry(&entry);
    }
    if (!accumulated.empty()) {
      ShowStatus(accumulated);
      if (session_.RemoteOn) Check(viFlush(session_.Instrument, VI_READ_BUF), session_.Instrument);
      if (session_.RemoteOn) {
        Check(viFlush(session_.Instrument, VI_WRITE_BUF), session_.Instrument);
      }
    }
  } catch (const std::exception& fault) {
    FatalErrorQueueFault(fault.what());
  }
}

void InstrumentLink::FatalErrorQueueFault(std::string_view description) {
  ShowStatus(std::string("*** Error : ") + std::string(description));
  scope_.ChannelCount = 2;
  scope_.HasDvm = false;
  scope_.HasWgen = false;
  settings_.Set("Setup", "Channels", "2");
  settings_.Set("Setup", "DVM", "0");
  hooks_.EndProgram();
}

}  // namespace quarvelo::link
