#include "spectrum/instrument_fft.h"

#include "platform/text/number_parse.h"
#include "platform/text/number_text.h"

namespace quarvelo::spectrum {

InstrumentFftReadings ConfigureInstrumentFft(const InstrumentCommands& link,
                                             std::string_view math_prefix, int channel,
                                             bool remote_on) {
  const auto send = [&](const std::string& command) {
    if (link.send_command) link.send_command(command);
  };
  const auto query = [&](std::string_view text) {
    return link.query_string ? text::LeadingNumber(link.query_string(text)) : 0.0;
  };
  InstrumentFftReadings readings;
  readings.TimebaseScale = query(":TIMebase:SCALe?");
  readings.SampleRate = query(":ACQuire:SRATe?") / 1000;
  const std::string prefix(math_prefix);
  send(prefix + ":DISPlay 1");
  send(prefix + ":SOURce1 CHAN" + std::to_string(channel));
  send(prefix + ":OPERation FFT");
  const double center = readings.SampleRate / 2000 / 2 * 1000000;
  const double span = readings.SampleRate / 2000 * 1000000;
  if (remote_on) {
    send(prefix + ":FFT:CENTer " + text::WholeNumberText(center));
    if (span != 0) send(prefix + ":FFT:SPAN " + text::WholeNumberText(span));
  }
  return readings;
}

}  // namespace quarvelo::spectrum
