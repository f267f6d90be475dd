#include "acquisition/capture.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "link/tool_update_guard.h"
#include "platform/text/number_parse.h"

namespace quarvelo::acquisition {
namespace {

constexpr int kMaxBinsIndex = 11;  // "524288", the last entry of the Max Bins combo
constexpr int kDigitizePauseMs = 250;

// To the nearest integer, halves to even (the default rounding mode), clamped to int32.
std::int32_t RoundToInt32(double value) {
  if (!std::isfinite(value)) return 0;
  const double rounded = std::nearbyint(value);
  constexpr double kLow = std::numeric_limits<std::int32_t>::min();
  constexpr double kHigh = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(rounded, kLow, kHigh));
}

// Clears CaptureBusy and restores the pointer on every way out of a capture.
class CaptureScope {
 public:
  CaptureScope(bool& busy, ui::UiServices& ui) : busy_(busy), ui_(ui) {
    busy_ = true;
    ui_.SetPointer(ui::PointerShape::kHourglass);
  }
  ~CaptureScope() {
    busy_ = false;
    ui_.SetPointer(ui::PointerShape::kDefault);
  }
  CaptureScope(const CaptureScope&) = delete;
  CaptureScope& operator=(const CaptureScope&) = delete;

 private:
  bool& busy_;
  ui::UiServices& ui_;
};

}  // namespace

std::int32_t RequestedPoints(bool use_bins, int bins_index, std::int32_t acquisition_points,
                             std::int32_t screen_points) {
  std::int32_t p = 0;
  if (use_bins) p = 256 << std::clamp(bins_index, 0, kMaxBinsIndex);
  if (p > acquisition_points) p = acquisition_points;
  if (!use_bins) p = acquisition_points;
  if (p < screen_points) p = screen_points;
  if (p > kMaxCapturePoints) p = kMaxCapturePoints;
  return p;
}

void ConvertSamples(std::span<const std::uint8_t> codes, double x_increment, double x_origin,
                    std::int32_t y_reference, double y_increment, double y_origin,
                    std::span<double> raw, std::span<double> time, std::span<double> volts) {
  const std::size_t n = std::min({codes.size(), raw.size(), time.size(), volts.size()});
  // Codes are whole numbers already, so the rounding of the raw value is the identity.
  std::array<double, 256> volts_of_code;
  for (int c = 0; c < 256; ++c) volts_of_code[c] = (c - y_reference) * y_increment + y_origin;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint8_t code = codes[i];
    raw[i] = code;
    time[i] = static_cast<double>(i) * x_increment + x_origin;
    volts[i] = volts_of_code[code];
  }
}

WaveformCapture::WaveformCapture(link::InstrumentLink& link, ScopeState& scope,
                                 WaveformRecords& records, ui::UiServices& ui, ui::ToolHost& tools)
    : link_(link), scope_(scope), records_(records), ui_(ui), tools_(tools) {}

void WaveformCapture::CaptureChannel(std::int16_t channel, bool useBins, bool stopFirst,
                                     std::int16_t digitizeMode) {
  link::StatusFlags& flags = link_.flags();
  if (flags.CaptureBusy) return;
  CaptureScope busy(flags.CaptureBusy, ui_);
  if (channel < 1 || channel > scope_.ChannelCount || channel >= kWaveformSlots ||
      !link_.session().RemoteOn) {
    return;
  }
  if (scope_.TimebaseScale > kLongestCaptureTimebase) {
    link_.ShowStatus("Time Base Scale too long!");
    return;
  }
  Transfer(channel, useBins, stopFirst, digitizeMode);
}

void WaveformCapture::Transfer(int n, bool use_bins, bool stop_first, int digitize_mode) {
  const std::string ch = std::to_string(n);
  link_.SetIoTimeout(false, kCaptureIoTimeoutMs);
  link_.SendCommand(":ACQuire:TYPE NORM");
  link_.SendCommand(":WAVeform:SOURce CHANnel" + ch);
  link_.SendCommand(":WAVeform:POINts:MODE RAW");
  if (stop_first) {
    link_.SendCommand(":STOP");
    link_.SendCommand(":TIMEBASE:MODE MAIN");
    link_.SendCommand(":TRIGger:SWEep AUTO");
    {
      link::ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
      tools_.SetToolState("ID_TGSA", true);
    }
    ui_.Pause(kDigitizePauseMs);
    if (digitize_mode == kDigitizeAll) {
      link_.SendCommand(":DIGitize");
    } else if (digitize_mode == kDigitizeChannel) {
      link_.SendCommand(":DIGitize CHANnel" + ch);
    }
  }

  WaveformShared& shared = records_.Shared;
  shared.SampleRateK = text::LeadingNumber(link_.QueryString(":ACQuire:SRATe?")) / 1000;
  scope_.SampleRate = shared.SampleRateK;
  const std::int32_t acquisition_points =
      text::LeadingInteger(link_.QueryString(":ACQuire:POINts?"));
  const std::int32_t max_points = text::LeadingInteger(link_.QueryString(":WAVeform:POINts? MAX"));
  if (max_points == 0) {
    link_.ShowStatus("No data on Channel " + ch);
    return;
  }
  WaveformRecord& record = records_.Records[n];
  record.Points = max_points;

  const std::int32_t screen_points =
      RoundToInt32(scope_.TimebaseScale * 10 * shared.SampleRateK * 1000);
  const int bins_index = tools_.ComboIndex("ID_Bins");
  const std::int32_t points =
      RequestedPoints(use_bins, bins_index, acquisition_points, screen_points);
  link_.SendCommand(":WAVEFORM:POINTS " + std::to_string(points));
  ui_.ProcessPendingEvents();

  record.ByteCount = 0;
  link_.SendCommand(":WAVeform:FORMat BYTE");
  record.PreambleCount = link_.QueryNumberList(":WAVeform:PREamble?");
  const std::span<const double> preamble = link_.number_list(record.PreambleCount);
  // Values the instrument did not send read as 0 rather than as a previous query's leftovers.
  auto value = [&preamble](std::size_t k) { return k <= preamble.size() ? preamble[k - 1] : 0; };
  shared.Format = static_cast<std::int16_t>(RoundToInt32(value(1)));
  shared.Type = static_cast<std::int16_t>(RoundToInt32(value(2)));
  record.Points = RoundToInt32(value(3));
  shared.Count = RoundToInt32(value(4));
  record.XIncrement = value(5);
  record.XOrigin = value(6);
  shared.XReference = RoundToInt32(value(7));
  shared.YIncrement = value(8);
  record.YOrigin = value(9);
  record.YReference = RoundToInt32(value(10));

  const std::int32_t bytes = link_.QueryBinaryBlock(":WAVeform:DATA?");
  record.ByteCount = bytes;
  shared.LastIndex = bytes - 1;
  records_.Samples.Grow(bytes);
  ChannelSettings& settings = scope_.Channels[n];
  settings.FirstSample = 0;
  settings.LastSample = bytes - 1;
  settings.HasData = bytes > 0;
  SampleStorage& samples = records_.Samples;
  ConvertSamples(link_.binary_block(bytes), record.XIncrement, record.XOrigin, record.YReference,
                 shared.YIncrement, record.YOrigin, samples.Raw(n), samples.Time(n),
                 samples.Volts(n));
  // Asked for fewer points than its record holds, the instrument sends every k-th sample, so the
  // record's own spacing, not the acquisition's rate, places the spectrum's frequencies (as for
  // a record read from a file).
  if (bytes > 0 && record.XIncrement > 0) {
    shared.SampleRateK = 1 / record.XIncrement / 1000;
    scope_.SampleRate = shared.SampleRateK;
  }
}

}  // namespace quarvelo::acquisition
