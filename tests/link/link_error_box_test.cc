// A VISA error while the timers run: the error box lets events run, as a modal box does, and
// a status-poll tick inside it must find the link already down.
#include <gtest/gtest.h>

#include <functional>

#include "tests/link/online_scope.h"

namespace quarvelo::link {
namespace {

using testing_support::OnlineScope;

class TickingUi : public ui::RecordingUi {
 public:
  ui::MessageResult ShowTitledMessage(std::string_view title, std::string_view text,
                                      ui::MessageIcon icon, ui::MessageButtons buttons) override {
    if (during_box) during_box();
    return RecordingUi::ShowTitledMessage(title, text, icon, buttons);
  }
  std::function<void()> during_box;
};

TEST(LinkErrorBoxTest, TimerTickInsideTheErrorBoxReportsNothingMore) {
  OnlineScope s;
  TickingUi ui;
  InstrumentLink link(
      s.h.session, s.h.flags,
      {s.h.scope.ChannelCount, s.h.scope.HasDvm, s.h.scope.HasWgen, s.h.scope.ToolUpdateInProgress},
      ui, s.h.tools, s.h.settings, s.h.hooks);
  int ticks = 0;
  ui.during_box = [&] {
    ++ticks;
    link.PollInstrumentStatus(true);
  };
  s.simulator->Stop();
  link.SendCommand(":RUN");
  EXPECT_EQ(ticks, 1);
  EXPECT_EQ(ui.messages().size(), 1u);
  EXPECT_EQ(s.h.hooks.rebuilds, 1);
  EXPECT_FALSE(s.h.session.RemoteOn);
}

}  // namespace
}  // namespace quarvelo::link
