// The toolbar shows the instrument's state by checking the tool whose ID is built from the
// state's mnemonic. These helpers build those IDs; an empty result means "no tool shows this
// value" (the caller then checks nothing).
#ifndef QUARVELO_ACQUISITION_STATE_TOOL_IDS_H_
#define QUARVELO_ACQUISITION_STATE_TOOL_IDS_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace quarvelo::acquisition {

// By the first three characters of the source: "DIG", "EXT", "LIN", "WGE" name their own
// tools; anything else is a channel and names "ID_TG" + trigger_channel (1..4).
std::string TriggerSourceToolId(std::string_view trigger_source, int trigger_channel);
// "ID_TGSA" for auto (1), "ID_TGSN" for normal (0).
std::string TriggerSweepToolId(int trigger_sweep_auto);
// The prefix followed by the first letter of the mnemonic.
std::string TriggerSlopeToolId(std::string_view slope);           // "ID_TS" + N/P/E/A
std::string TriggerCouplingToolId(std::string_view coupling);     // "ID_TC" + A/D/L
std::string TriggerRejectToolId(std::string_view reject);         // "ID_TJ" + L/H/O
std::string TimebaseReferenceToolId(std::string_view reference);  // "ID_TR" + L/C/R
std::string TimebaseModeToolId(std::string_view mode);            // "ID_TM" + M/W/X/R
std::string AcquireTypeToolId(std::string_view acquire_type);     // "ID_ACQU" + NORM/AVER/...
// "ID_PERSINF", "ID_PERSMIN", otherwise "ID_PERSVAR".
std::string PersistenceToolId(std::string_view persistence_reply);
std::string ChannelToolId(int channel);  // "ID_CH" + n
// The first source (text before ","), when it is one of CHAN1..CHAN4, EXT, WMEM1, WMEM2, FUNC.
std::string MeasureSourceToolId(std::string_view measure_source);
// Only for ADD, SUBT, MULT, DIV and FFT.
std::string MathOperationToolId(std::string_view math_operation);
// "ID_MATH" + the prefix without its leading colon: ":FUNC2" -> "ID_MATHFUNC2".
std::string MathPrefixToolId(std::string_view math_prefix);
std::string DvmModeToolId(int dvm_mode);      // "ID_DVMM" + 1..4
std::string DvmSourceToolId(int dvm_source);  // "ID_DVMCH" + 1..4
// "ID_WGEN" + the prefix from its sixth character: ":WGEN1" -> "ID_WGEN1", ":WGEN" -> "ID_WGEN".
std::string WgenPrefixToolId(std::string_view wgen_prefix);
// The V/div tool of a channel scale: "ID_" + millivolts ("ID_500" for 0.5 V), or empty when
// the scale is not one of the twelve steps.
std::string VoltsPerDivToolId(double scale_volts);

}  // namespace quarvelo::acquisition

#endif  // QUARVELO_ACQUISITION_STATE_TOOL_IDS_H_
