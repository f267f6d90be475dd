// "Auto Config FFT": the oscilloscope's own FFT math function on the spectrum's channel,
// centred on a quarter of the sample rate with a span of half of it.
#ifndef QUARVELO_SPECTRUM_INSTRUMENT_FFT_H_
#define QUARVELO_SPECTRUM_INSTRUMENT_FFT_H_

#include <functional>
#include <string>
#include <string_view>

namespace quarvelo::spectrum {

// The instrument link's `SendCommand` and `QueryString` (both no-ops while remote is off).
struct InstrumentCommands {
  std::function<void(std::string_view command)> send_command;
  std::function<std::string(std::string_view query)> query_string;
};

// The oscilloscope's settings read on the way; the caller stores them in its state.
struct InstrumentFftReadings {
  double TimebaseScale = 0;  // seconds per division
  double SampleRate = 0;     // kSa/s
};

// `math_prefix` is ":FUNC", ":FUNC1" or ":FUNC2"; `channel` the spectrum's channel.
InstrumentFftReadings ConfigureInstrumentFft(const InstrumentCommands& link,
                                             std::string_view math_prefix, int channel,
                                             bool remote_on);

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_INSTRUMENT_FFT_H_
