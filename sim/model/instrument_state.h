// Everything the simulated instrument knows: its configuration, its settings, its status
// registers and error queue, the signals on its inputs, its acquisition state and the faults
// it has been told to commit. Owned by one Instrument and touched under its lock only.
#ifndef QUARVELO_SIM_MODEL_INSTRUMENT_STATE_H_
#define QUARVELO_SIM_MODEL_INSTRUMENT_STATE_H_

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

#include "sim/model/instrument_config.h"
#include "sim/model/setting_store.h"
#include "sim/signal/signal.h"
#include "sim/status/error_queue.h"

namespace quarvelo::sim {

// What a channel's input is connected to.
struct ChannelSource {
  int generator = 0;  // 1 or 2: that generator's output; 0: `signal`
  Signal signal;
};

struct StatusRegisters {
  int event_status = 0x80;     // *ESR?; power-on set until read
  int event_enable = 0;        // *ESE
  int service_enable = 0;      // *SRE
  bool armed_event = false;    // :AER?
  bool trigger_event = false;  // :TER?
};

enum class RunState { kRunning, kStopped, kSingle };

struct Faults {
  int reply_delay_ms = 0;     // every reply waits this long
  int drop_after = -1;        // messages still served before the connection is dropped
  int garbage_replies = 0;    // the next N replies are garbled
  long cut_block_bytes = -1;  // the next block reply stops after this many data bytes
  bool silent_next_query = false;
};

struct InstrumentState {
  explicit InstrumentState(const InstrumentConfig& instrument_config)
      : config(instrument_config), settings(instrument_config) {}

  InstrumentConfig config;
  SettingStore settings;
  ErrorQueue errors;
  StatusRegisters status;
  Faults faults;

  RunState run_state = RunState::kRunning;
  std::chrono::steady_clock::time_point single_started;
  bool single_forced = false;
  std::uint64_t acquisition_number = 1;  // seeds the noise of the current acquisition

  std::array<ChannelSource, 5> sources{};  // index 1..4
  // The channels on when the instrument last stopped: a stopped instrument has data for
  // those only (a channel turned on afterwards waits for the next acquisition).
  std::array<bool, 5> stopped_with_data{};
  bool front_end_noise = false;  // the channels add the front end's noise floor
  double charged_seconds = 0;    // slow commands' time in the current message
  std::chrono::steady_clock::time_point dvm_enabled_at;  // the voltmeter settles from here
  long requested_points = 1000;                          // :WAVeform:POINts
  std::string persistence = "MIN";                       // :DISPlay:PERSistence reply
  std::string measure_source1 = "CHAN1";
  std::string measure_source2 = "CHAN2";
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_INSTRUMENT_STATE_H_
