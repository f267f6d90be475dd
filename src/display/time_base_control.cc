#include "display/time_base_control.h"

#include <string>

#include "display/time_base_ladder.h"
#include "platform/text/number_text.h"

namespace quarvelo::display {

void SetTimeBaseFromText(std::string_view text, bool running, const TimeBaseActions& actions,
                         ui::UiServices& ui) {
  const double seconds = TimeBaseTextSeconds(text);
  if (actions.send_command) {
    actions.send_command(":TIMebase:SCALe " + text::NumberText(seconds));
  }
  // The oscilloscope needs a moment to apply the new time base before it is captured.
  ui.Pause(100);
  ui.ProcessPendingEvents();
  if (actions.sweep) actions.sweep(running);
}

void SetComboTimeBase(double seconds, bool remote_on, ui::ToolHost& tools) {
  if (seconds == 0 || !remote_on) return;
  const int index = TimeBaseLadderIndex(seconds);
  if (index >= 0) tools.SetComboIndex(kTimeBaseComboId, index);
}

}  // namespace quarvelo::display
