// Run, Stop, Single, Digitize and Force: the acquisition state machine. A single acquisition
// completes once the trigger finds its level (or is forced, or the sweep is automatic) and the
// record's time has passed; completion clears the Run bit.
#ifndef QUARVELO_SIM_MODEL_RUN_CONTROL_H_
#define QUARVELO_SIM_MODEL_RUN_CONTROL_H_

#include "sim/model/instrument_state.h"

namespace quarvelo::sim {

void StartRunning(InstrumentState& state);
void StopRunning(InstrumentState& state);
void StartSingle(InstrumentState& state);
// Acquires one record now and stops.
void Digitize(InstrumentState& state);
void ForceTrigger(InstrumentState& state);
// Brings a pending single acquisition to its end when its time has come.
void UpdateRunState(InstrumentState& state);
// A running instrument has a fresh acquisition for every transfer.
void NextAcquisitionIfRunning(InstrumentState& state);
// ":AUToscale": finds the signals, sets scales, offsets, time base and trigger, and runs.
void Autoscale(InstrumentState& state);
// ":TRIGger:LEVel:ASETup": the level to the middle of the trigger source's signal.
void TriggerLevelAutoSetup(InstrumentState& state);

// True when a transfer of the channel has data: it is on, and the instrument runs or was
// stopped with it on.
bool ChannelHasData(const InstrumentState& state, int channel);

// Operation Status Condition register: bit 3 Run, bit 5 Wait Trig.
int OperationCondition(const InstrumentState& state);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_RUN_CONTROL_H_
