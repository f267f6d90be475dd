// Which instrument the simulator is: family, channel count and installed options.
#ifndef QUARVELO_SIM_MODEL_INSTRUMENT_CONFIG_H_
#define QUARVELO_SIM_MODEL_INSTRUMENT_CONFIG_H_

#include <string>

#include "sim/scpi/header_pattern.h"

namespace quarvelo::sim {

// The signals on the inputs at start-up: those of a scope with its probes connected, or none.
enum class SignalPreset { kProbes, kFlat };

struct InstrumentConfig {
  bool is_3000x = true;
  int channels = 4;
  bool has_wgen = true;
  bool has_dvm = true;
  SignalPreset signal_preset = SignalPreset::kProbes;
  double latency_ms = 0;            // per exchange; 0 answers at once (see pace.h)
  bool has_memory_upgrade = false;  // 3000X: 4 Mpts instead of 2
  std::string identity;             // "*IDN?" reply; empty: the family's own
  double dvm_settle_ms = 0;         // the voltmeter answers no value this long after enabling

  SuffixLimits suffix_limits() const {
    SuffixLimits limits;
    limits.channels = channels;
    limits.functions = is_3000x ? 2 : 1;
    limits.generators = is_3000x ? 2 : 1;
    return limits;
  }
  double max_sample_rate() const { return is_3000x ? 4e9 : 2e9; }
  double memory_points() const {
    if (!is_3000x) return 100e3;
    return has_memory_upgrade ? 4e6 : 2e6;
  }
  double min_timebase_scale() const { return is_3000x ? 5e-10 : 2e-9; }
  // "KEYSIGHT TECHNOLOGIES,DSO-X 3034T,..." for the family and channel count.
  std::string Identity() const {
    if (!identity.empty()) return identity;
    std::string model = is_3000x ? (channels == 4 ? "DSO-X 3034T" : "DSO-X 3032T")
                                 : (channels == 4 ? "DSO-X 2024A" : "DSO-X 2022A");
    std::string firmware = is_3000x ? "07.50.2021102830" : "02.65.2021012900";
    return "KEYSIGHT TECHNOLOGIES," + model + ",QVSIM00001," + firmware;
  }
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_INSTRUMENT_CONFIG_H_
