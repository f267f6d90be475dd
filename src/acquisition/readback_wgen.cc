// The waveform generator's readback: which settings exist depends on the function and the
// modulation, so only those are asked.
#include <string>

#include "acquisition/readback.h"
#include "acquisition/reply_fields.h"
#include "acquisition/state_tool_ids.h"
#include "link/tool_update_guard.h"

namespace quarvelo::acquisition {

void StateReadback::ReadBackWgen() {
  if (!link_.session().RemoteOn || !scope_.HasWgen) return;
  const std::string p = scope_.WgenPrefix;
  WgenSettings& wgen = scope_.Wgen;
  wgen.OutputOn = IsOne(p + ":OUTPut?");
  wgen.Function = Query(p + ":FUNCtion?");
  ReadWgenShape(p);
  wgen.ModulationState = Whole16(p + ":MODulation:STATe?");
  wgen.ModulationNoise = Whole16(p + ":MODulation:NOISe?");
  if (wgen.ModulationState == 1) ReadWgenModulation(p);
  wgen.OutputLoad = Query(p + ":OUTPut:LOAD?");

  link::ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
  tools_.SetToolState("ID_WG", wgen.OutputOn);
  Check(WgenPrefixToolId(p));
}

void StateReadback::ReadWgenShape(const std::string& p) {
  WgenSettings& wgen = scope_.Wgen;
  const std::string& function = wgen.Function;
  auto levels = [&] {
    wgen.Amplitude = Number(p + ":VOLTage?");
    wgen.Offset = Number(p + ":VOLTage:OFFSet?");
    wgen.High = Number(p + ":VOLTage:HIGH?");
    wgen.Low = Number(p + ":VOLTage:LOW?");
  };
  auto timing = [&] {
    wgen.Frequency = Number(p + ":FREQuency?");
    wgen.Period = Number(p + ":PERiod?");
  };
  if (IsOneOf(function, {"SIN", "SQU", "RAMP", "PULS"})) {
    timing();
    levels();
    if (function == "SQU") wgen.SquareDutyCycle = Whole16(p + ":FUNCtion:SQUare:DCYCle?");
    if (function == "RAMP") wgen.RampSymmetry = Whole16(p + ":FUNCtion:RAMP:SYMMetry?");
    if (function == "PULS") wgen.PulseWidth = Number(p + ":FUNCtion:PULSe:WIDTh?");
  } else if (function == "NOIS") {
    levels();
  } else if (function == "DC") {
    wgen.Offset = Number(p + ":VOLTage:OFFSet?");
  } else {
    timing();
    wgen.Amplitude = Number(p + ":VOLTage?");
    wgen.Offset = Number(p + ":VOLTage:OFFSet?");
  }
}

void StateReadback::ReadWgenModulation(const std::string& p) {
  WgenSettings& wgen = scope_.Wgen;
  wgen.ModulationType = Query(p + ":MODulation:TYPE?");
  if (wgen.ModulationType == "AM") {
    wgen.ModulationFunction = Query(p + ":MODulation:FUNCtion?");
    wgen.AmDepth = Whole16(p + ":MODulation:AM:DEPTh?");
    wgen.AmFrequency = Number(p + ":MODulation:AM:FREQuency?");
    wgen.ModulationRampSymmetry = Whole16(p + ":MODulation:FUNCtion:RAMP:SYMMetry?");
  } else if (wgen.ModulationType == "FM") {
    wgen.ModulationFunction = Query(p + ":MODulation:FUNCtion?");
    wgen.FmDeviation = Number(p + ":MODulation:FM:DEViation?");
    wgen.FmFrequency = Number(p + ":MODulation:FM:FREQuency?");
    wgen.ModulationRampSymmetry = Whole16(p + ":MODulation:FUNCtion:RAMP:SYMMetry?");
  } else if (wgen.ModulationType == "FSK") {
    wgen.FskFrequency = Number(p + ":MODulation:FSKey:FREQuency?");
    wgen.FskRate = Number(p + ":MODulation:FSKey:RATE?");
  }
}

}  // namespace quarvelo::acquisition
