// The only road to the oscilloscope: opening and closing the VISA session, commands and
// queries with their formatted I/O, the reporting of VISA and instrument errors, and the
// status polls. Every operation is a no-op while the session's RemoteOn is false.
#ifndef QUARVELO_LINK_INSTRUMENT_LINK_H_
#define QUARVELO_LINK_INSTRUMENT_LINK_H_

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "link/instrument_session.h"
#include "link/link_hooks.h"
#include "link/reply_text.h"
#include "link/scope_fields.h"
#include "link/status_flags.h"
#include "platform/settings/settings_store.h"
#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"

namespace quarvelo::link {

inline constexpr ViUInt32 kOpenTimeoutMs = 15000;
inline constexpr std::int32_t kDefaultIoTimeoutMs = 5000;
// Our bound on draining the error queue: far above the instrument's queue depth, so a queue
// that never reports "no error" (a garbled reply) cannot keep the program in the loop.
inline constexpr int kMaxErrorEntries = 64;

class InstrumentLink {
 public:
  InstrumentLink(InstrumentSession& session, StatusFlags& flags, ScopeFields scope,
                 ui::UiServices& ui, ui::ToolHost& tools, settings::SettingsStore& settings,
                 LinkHooks& hooks);
  InstrumentLink(const InstrumentLink&) = delete;
  InstrumentLink& operator=(const InstrumentLink&) = delete;

  // Session and formatted I/O.
  void OpenInstrument();
  void CloseInstrument();
  void SendCommand(std::string_view command);
  // The reply without control characters, cut to 256 characters and trimmed.
  std::string QueryString(std::string_view query);
  // Reads up to 20 numbers into number_list(); returns how many.
  std::int32_t QueryNumberList(std::string_view query);
  // Reads a binary block into binary_block(); returns its byte count.
  std::int32_t QueryBinaryBlock(std::string_view query);
  void SetIoTimeout(bool tolerate, std::int32_t milliseconds);
  void ShowStatus(std::string_view text);

  // Errors and status.
  void ReportVisaError(ViSession session);
  void CheckInstrumentErrors();
  // Run by the auto-refresh timer with the main window's SweepMode, and by the readback.
  void PollInstrumentStatus(bool enabled);
  // Run by the single-shot timer.
  void CheckSingleDone(bool sweep_mode);

  InstrumentSession& session() { return session_; }
  const InstrumentSession& session() const { return session_; }
  StatusFlags& flags() { return flags_; }
  std::span<const double> number_list(std::int32_t count) const;
  std::span<const std::uint8_t> binary_block(std::int32_t count) const;

 private:
  // Stores the status as LastStatus and hands a non-zero one to ReportVisaError.
  void Check(ViStatus status, ViSession session);
  // Writes text + LF as one message. The text travels as an argument, not as the format, so
  // a user's macro with "%" or "\" in it goes out unchanged.
  ViStatus WriteLine(std::string_view text);
  // Reads one text reply of at most `capacity` characters; the rest of a longer reply is
  // discarded so that it cannot pass for the next reply.
  ViStatus ReadText(std::size_t capacity, std::string* text);
  void SetRemoteToolOff();
  void FatalErrorQueueFault(std::string_view description);

  InstrumentSession& session_;
  StatusFlags& flags_;
  ScopeFields scope_;
  ui::UiServices& ui_;
  ui::ToolHost& tools_;
  settings::SettingsStore& settings_;
  LinkHooks& hooks_;
  // Where text replies land: one area for the link's life, so a reply costs no allocation.
  std::array<char, kReplyTextLimit + 1> text_area_{};
};

}  // namespace quarvelo::link

#endif  // QUARVELO_LINK_INSTRUMENT_LINK_H_
