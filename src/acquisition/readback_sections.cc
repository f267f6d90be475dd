// The sub-readbacks of the annotation, the voltmeter and the math function, which also run
// alone after the commands and dialogs that touch their settings.
#include <algorithm>
#include <cctype>
#include <string>

#include "acquisition/readback.h"
#include "acquisition/reply_fields.h"
#include "acquisition/state_tool_ids.h"
#include "link/tool_update_guard.h"
#include "platform/text/number_parse.h"

namespace quarvelo::acquisition {

// Off line the fields keep their last values, as for every readback.
void StateReadback::ReadBackAnnotation(bool all) {
  if (!link_.session().RemoteOn) return;
  scope_.AnnotationOn = IsOne(":DISPlay:ANNotation?");
  if (!all && !scope_.AnnotationOn) return;
  scope_.AnnotationText = WithoutQuotes(Query(":DISPlay:ANNotation:TEXT?"));
  scope_.AnnotationColor = Query(":DISPlay:ANNotation:COLor?");
  scope_.AnnotationBackground = Query(":DISPlay:ANNotation:BACKground?");
}

void StateReadback::ReadBackDvm() {
  if (!scope_.HasDvm || !link_.session().RemoteOn) return;
  scope_.DvmEnabled = IsOne(":DVM:ENABle?");
  if (scope_.DvmEnabled) {
    scope_.DvmMode = 1;
    std::string mode = Query(":DVM:MODE?");
    std::transform(mode.begin(), mode.end(), mode.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (mode == "DC") {
      scope_.DvmMode = 2;
    } else if (mode == "DCRM") {
      scope_.DvmMode = 3;
    } else if (mode == "FREQ") {
      scope_.DvmMode = 4;
    }
    scope_.DvmAutoRange = Whole16(":DVM:ARANge?");
    const int source = DigitAt(Query(":DVM:SOURce?"), 4);
    if (source >= 1 && source <= kMaxChannels) scope_.DvmSource = static_cast<std::int16_t>(source);
    scope_.DvmReading = DvmReadingFromReply(Number(":DVM:CURRent?"));
    scope_.DvmFrequency = DvmFrequencyFromReply(Number(":DVM:FREQuency?"));
  }
  link::ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
  tools_.SetToolState("ID_DVM", scope_.DvmEnabled);
  tools_.SetToolState("ID_ADVM", scope_.DvmAutoRange == 1);
  Check(DvmModeToolId(scope_.DvmMode));
  Check(DvmSourceToolId(scope_.DvmSource));
}

void StateReadback::ReadBackMath(bool all) {
  if (!link_.session().RemoteOn) return;
  const std::string& p = scope_.MathPrefix;
  scope_.MathDisplay = IsOne(p + ":DISPlay?");
  scope_.MathOperation = Query(p + ":OPERation?");
  if (all) {
    scope_.FftCenter = Number(p + ":FFT:CENTer?");
    scope_.FftSpan = Number(p + ":FFT:SPAN?");
    const std::string vertical = Query(p + ":FFT:VTYPe?");
    if (vertical == "DEC") {
      scope_.FftVerticalType = 0;
    } else if (vertical == "VRMS") {
      scope_.FftVerticalType = 1;
    }
    const std::string window = Query(p + ":FFT:WINDow?");
    static constexpr std::string_view kWindows[] = {"RECT", "HANN", "FLAT", "BHAR"};
    for (std::int16_t i = 0; i < 4; ++i) {
      if (window == kWindows[i]) scope_.FftWindow = i;
    }
    scope_.MathOffset = Number(p + ":OFFSet?");
    scope_.MathRange = Number(p + ":RANGe?");
    scope_.MathReference = Number(p + ":REFerence?");
    scope_.MathScale = Whole16(p + ":SCALe?");
    scope_.MathSource1 = Query(p + ":SOURce1?");
    scope_.MathSource2 = Query(p + ":SOURce2?");
    if (scope_.Model == 0) {
      scope_.GoftOperation = Query(p + ":GOFT:OPERation?");
      scope_.GoftSource1 = Query(p + ":GOFT:SOURce1?");
      scope_.GoftSource2 = Query(p + ":GOFT:SOURce2?");
    }
  }
  link::ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
  Check(MathOperationToolId(scope_.MathOperation));
  tools_.SetToolState("ID_MATHDISP", scope_.MathDisplay);
  Check(MathPrefixToolId(p));
}

}  // namespace quarvelo::acquisition
