// A link opened to an in-process simulated oscilloscope over loopback TCP, with the capture
// and readback wired as the main window wires them.
#ifndef QUARVELO_TESTS_LINK_ONLINE_SCOPE_H_
#define QUARVELO_TESTS_LINK_ONLINE_SCOPE_H_

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "acquisition/capture.h"
#include "acquisition/readback.h"
#include "sim/simulator.h"
#include "tests/link/link_harness.h"

namespace quarvelo::testing_support {

struct ScopeModel {
  std::string model = "3000X";
  int channels = 4;
  bool has_wgen = true;
  bool has_dvm = true;
  std::string signal_preset = "probes";  // "flat" for tests that need silent inputs
};

inline std::unique_ptr<sim::Simulator> StartSimulator(const ScopeModel& model) {
  sim::SimulatorOptions options;
  options.model = model.model;
  options.channels = model.channels;
  options.has_wgen = model.has_wgen;
  options.has_dvm = model.has_dvm;
  options.signal_preset = model.signal_preset;
  options.vxi11_port = options.portmapper_port = options.hislip_port = -1;
  std::string error;
  auto simulator = sim::Simulator::Start(options, &error);
  EXPECT_NE(simulator, nullptr) << error;
  return simulator;
}

class OnlineScope {
 public:
  explicit OnlineScope(const ScopeModel& model = {}) : simulator(StartSimulator(model)) {
    acquisition::ScopeState& s = h.scope;
    s.ChannelCount = static_cast<std::int16_t>(model.channels);
    s.HasDvm = model.has_dvm;
    s.HasWgen = model.has_wgen;
    s.Model = model.model == "3000X" ? 1 : 0;
    s.MathPrefix = s.Model == 1 ? ":FUNC1" : ":FUNC";
    s.WgenPrefix = s.Model == 1 ? ":WGEN1" : ":WGEN";
    if (simulator == nullptr) return;
    h.session.Address = simulator->SocketResource();
    h.link.OpenInstrument();
    EXPECT_TRUE(h.session.RemoteOn) << (h.ui.messages().empty() ? "" : h.ui.messages()[0].text);
    simulator->ClearTraffic();
    h.ui.ClearRecords();
    h.tools.ClearHistory();
  }
  ~OnlineScope() {
    if (h.session.RemoteOn) h.link.CloseInstrument();
  }

  std::vector<std::string> Sent() const { return simulator->ReceivedMessages(); }

  std::unique_ptr<sim::Simulator> simulator;
  LinkHarness h;
  acquisition::WaveformRecords records;
  acquisition::NoReadbackHooks readback_hooks;
  acquisition::StateReadback readback{h.link, h.scope, records, h.ui, h.tools, readback_hooks};
  acquisition::WaveformCapture capture{h.link, h.scope, records, h.ui, h.tools};
};

// The simulator's own :SIMulate commands the tests steer it with.
inline constexpr const char* kPressFrontPanelKey = ":SIMulate:KEY";
inline constexpr const char* kNeverAnswerNextQuery = ":SIMulate:SILent";

// The traffic of one command or query: the message and the error-queue query that follows.
inline std::vector<std::string> WithErrorQuery(const std::vector<std::string>& messages) {
  std::vector<std::string> out;
  for (const auto& m : messages) {
    out.push_back(m);
    out.push_back(":SYSTem:ERRor?");
  }
  return out;
}

}  // namespace quarvelo::testing_support

#endif  // QUARVELO_TESTS_LINK_ONLINE_SCOPE_H_
