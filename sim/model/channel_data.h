// What a channel shows: its input signal (a generator's output or a simulated signal) through
// the probe factor, coupling, inversion and bandwidth limit, sampled on the acquisition's time
// axis with the trigger holding a repetitive signal still.
#ifndef QUARVELO_SIM_MODEL_CHANNEL_DATA_H_
#define QUARVELO_SIM_MODEL_CHANNEL_DATA_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sim/model/instrument_state.h"
#include "sim/signal/acquisition_geometry.h"

namespace quarvelo::sim {

// The generator's output as set up (zero when its output is off or the option is absent).
Signal GeneratorSignal(const InstrumentState& state, int generator);

// The channel's input in volts at the instrument (probe factor applied), before coupling.
Signal ChannelInput(const InstrumentState& state, int channel);

AcquisitionGeometry CurrentGeometry(const InstrumentState& state);

// The trigger instant of the current acquisition: where the trigger source crosses its level,
// or, when it never does, a time that changes with every acquisition (the trace rolls).
double TriggerInstant(const InstrumentState& state);
// True when the trigger source crosses the level at all.
bool TriggerFinds(const InstrumentState& state);

// Channel volts as displayed (coupling, inversion and bandwidth limit applied) at
// t0 + i * dt relative to the trigger.
std::vector<double> ChannelVolts(const InstrumentState& state, int channel, double t0, double dt,
                                 size_t count);

struct ByteRecord {
  AcquisitionGeometry geometry;
  double y_increment = 0;
  double y_origin = 0;
  int y_reference = 128;
  std::string codes;  // one unsigned byte per point
};

// ":ACQuire:TYPE PEAK": `count` points as pairs of the lowest and highest level over each
// pair's time.
std::vector<double> PeakPairs(const InstrumentState& state, int channel, double t0, double dt,
                              size_t count);

// Volts per code: the 255 codes span ten divisions.
double YIncrement(double scale);
// The waveform source channel's record as BYTE codes.
ByteRecord ChannelBytes(const InstrumentState& state, int channel);

// The channel number of a source mnemonic ("CHAN3" -> 3), 0 when it is not a channel.
int ChannelOf(const std::string& source);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_CHANNEL_DATA_H_
