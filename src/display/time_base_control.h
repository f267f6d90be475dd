// The time-base combo `ID_TB`: setting the oscilloscope's time base from a picked ladder text,
// and showing the oscilloscope's time base in the combo.
#ifndef QUARVELO_DISPLAY_TIME_BASE_CONTROL_H_
#define QUARVELO_DISPLAY_TIME_BASE_CONTROL_H_

#include <functional>
#include <string_view>

#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"

namespace quarvelo::display {

inline constexpr std::string_view kTimeBaseComboId = "ID_TB";

// What setting the time base needs from the main window.
struct TimeBaseActions {
  // `SendCommand` of the instrument link (a no-op while remote control is off).
  std::function<void(std::string_view command)> send_command;
  // One sweep (`ID_Sweep`), told whether the oscilloscope was running.
  std::function<void(bool running)> sweep;
};

// Sends ":TIMebase:SCALe <seconds>" for a ladder text, waits 100 ms letting events run, then
// sweeps; `running` is the run bit of the last status poll.
void SetTimeBaseFromText(std::string_view text, bool running, const TimeBaseActions& actions,
                         ui::UiServices& ui);

// Selects the ladder entry equal to `seconds` in the `ID_TB` combo. Nothing happens for 0 s,
// while remote control is off, or for a time base between ladder steps.
void SetComboTimeBase(double seconds, bool remote_on, ui::ToolHost& tools);

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_TIME_BASE_CONTROL_H_
