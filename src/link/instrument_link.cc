// The session and its formatted I/O. Error reporting and the status polls live in
// error_reporting.cc and status_poll.cc.
#include "link/instrument_link.h"

#include <algorithm>
#include <array>
#include <string>

#include "link/reply_text.h"
#include "link/tool_update_guard.h"

namespace quarvelo::link {
namespace {

constexpr ui::Rgb kActivityOpen = ui::MakeRgb(0, 255, 0);
constexpr ui::Rgb kActivityClosed = ui::MakeRgb(192, 192, 192);

}  // namespace

InstrumentLink::InstrumentLink(InstrumentSession& session, StatusFlags& flags, ScopeFields scope,
                               ui::UiServices& ui, ui::ToolHost& tools,
                               settings::SettingsStore& settings, LinkHooks& hooks)
    : session_(session),
      flags_(flags),
      scope_(scope),
      ui_(ui),
      tools_(tools),
      settings_(settings),
      hooks_(hooks) {}

void InstrumentLink::Check(ViStatus status, ViSession session) {
  session_.LastStatus = status;
  if (status != VI_SUCCESS) ReportVisaError(session);
}

ViStatus InstrumentLink::WriteLine(std::string_view text) {
  const std::string line(text);
  return viPrintf(session_.Instrument, "%s\n", line.c_str());
}

ViStatus InstrumentLink::ReadText(std::size_t capacity, std::string* text) {
  // "%#t" takes the area's size including its NUL, stores at most that many characters less
  // one, and reads and drops the rest of the reply, so the next reply starts clean.
  capacity = std::min(capacity, text_area_.size() - 1);
  ViInt32 count = static_cast<ViInt32>(capacity + 1);
  const ViStatus status = viScanf(session_.Instrument, "%#t", &count, text_area_.data());
  text->clear();
  if (status < VI_SUCCESS) return status;
  text->assign(text_area_.data(),
               std::clamp<std::size_t>(static_cast<std::size_t>(std::max(count, 0)), 0, capacity));
  return status;
}

void InstrumentLink::SetRemoteToolOff() {
  ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
  tools_.SetToolState("ID_Remote", false);
}

void InstrumentLink::OpenInstrument() {
  session_.RemoteOn = true;
  if (TrimBlanks(session_.Address).empty()) {
    ui_.ShowMessage("VISA Address empty", ui::MessageIcon::kCritical, ui::MessageButtons::kOk);
    session_.RemoteOn = false;
    SetRemoteToolOff();
    return;
  }
  Check(viOpenDefaultRM(&session_.ResourceManager), session_.ResourceManager);
  if (session_.RemoteOn) {
    Check(viOpen(session_.ResourceManager, session_.Address.c_str(), VI_NO_LOCK, kOpenTimeoutMs,
                 &session_.Instrument),
          session_.ResourceManager);
  }
  if (session_.RemoteOn) {
    Check(viSetAttribute(session_.Instrument, VI_ATTR_TMO_VALUE, kDefaultIoTimeoutMs),
          session_.Instrument);
  }
  // A failed time-out setting has closed the link again; it must not look open.
  if (session_.RemoteOn) {
    ui_.SetActivityColour(kActivityOpen);
    ui_.SetRefreshTimerEnabled(true);
  }
}

void InstrumentLink::CloseInstrument() {
  if (session_.RemoteOn) {
    hooks_.CloseWgenDialog();
    session_.LastStatus = viClose(session_.Instrument);
    session_.LastStatus = viClose(session_.ResourceManager);
    session_.Instrument = VI_NULL;
    session_.ResourceManager = VI_NULL;
    session_.RemoteOn = false;
  }
  ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
  tools_.SetToolState("ID_Remote", false);
  for (int n = 1; n <= scope_.ChannelCount; ++n) {
    tools_.SetToolState("ID_CH" + std::to_string(n), false);
  }
  ui_.SetRefreshTimerEnabled(false);
  ui_.SetActivityColour(kActivityClosed);
}

void InstrumentLink::SendCommand(std::string_view command) {
  if (!session_.RemoteOn) return;
  Check(WriteLine(command), session_.Instrument);
  CheckInstrumentErrors();
}

std::string InstrumentLink::QueryString(std::string_view query) {
  session_.TimedOut = false;
  std::string result;
  if (!session_.RemoteOn) return result;
  Check(WriteLine(query), session_.Instrument);
  std::string raw;
  if (session_.RemoteOn) Check(ReadText(kReplyTextLimit, &raw), session_.Instrument);
  if (session_.RemoteOn) {
    result = CleanReply(raw);
    CheckInstrumentErrors();
  }
  return result;
}

std::int32_t InstrumentLink::QueryNumberList(std::string_view query) {
  if (!session_.RemoteOn || session_.TimedOut) return 0;
  session_.TimedOut = false;
  Check(WriteLine(query), session_.Instrument);
  session_.TransferCount = 0;
  if (session_.RemoteOn) {
    session_.TransferCount = kNumberListCapacity;
    const ViStatus status = viScanf(session_.Instrument, "%,#lf\n", &session_.TransferCount,
                                    session_.number_list.data());
    // A failed read delivers nothing the caller may use.
    if (status < VI_SUCCESS) session_.TransferCount = 0;
    Check(status, session_.Instrument);
  }
  const std::int32_t count = session_.TransferCount;
  CheckInstrumentErrors();
  return count;
}

std::int32_t InstrumentLink::QueryBinaryBlock(std::string_view query) {
  if (!session_.RemoteOn || session_.TimedOut) return 0;
  session_.TimedOut = false;
  Check(WriteLine(query), session_.Instrument);
  session_.TransferCount = 0;
  if (session_.RemoteOn) {
    session_.TransferCount = kBinaryBlockCapacity;
    const ViStatus status =
        viScanf(session_.Instrument, "%#b\n", &session_.TransferCount, session_.binary_block.get());
    if (status < VI_SUCCESS) session_.TransferCount = 0;
    Check(status, session_.Instrument);
  }
  // Discards the block's LF and anything else left unread.
  if (session_.RemoteOn) Check(viFlush(session_.Instrument, VI_READ_BUF), session_.Instrument);
  if (session_.RemoteOn) Check(viFlush(session_.Instrument, VI_WRITE_BUF), session_.Instrument);
  const std::int32_t count = session_.TransferCount;
  CheckInstrumentErrors();
  return count;
}

void InstrumentLink::SetIoTimeout(bool tolerate, std::int32_t milliseconds) {
  session_.TolerateTimeout = tolerate;
  Check(viSetAttribute(session_.Instrument, VI_ATTR_TMO_VALUE,
                       static_cast<ViAttrState>(static_cast<ViUInt32>(milliseconds))),
        session_.Instrument);
  session_.TimedOut = false;
}

void InstrumentLink::ShowStatus(std::string_view text) { ui_.ShowStatus(TrimBlanks(text)); }

std::span<const double> InstrumentLink::number_list(std::int32_t count) const {
  const auto n = std::clamp<std::int32_t>(count, 0, kNumberListCapacity);
  return {session_.number_list.data(), static_cast<std::size_t>(n)};
}

std::span<const std::uint8_t> InstrumentLink::binary_block(std::int32_t count) const {
  const auto n = std::clamp<std::int32_t>(count, 0, kBinaryBlockCapacity);
  return {session_.binary_block.get(), static_cast<std::size_t>(n)};
}

}  // namespace quarvelo::link
