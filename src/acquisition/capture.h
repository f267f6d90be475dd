// Capture of one analog channel into its WaveformRecord: transfer set-up, optional stop and
// digitize, the number of points, preamble and BYTE samples, and their conversion to seconds
// and volts.
#ifndef QUARVELO_ACQUISITION_CAPTURE_H_
#define QUARVELO_ACQUISITION_CAPTURE_H_

#include <cstdint>
#include <span>

#include "acquisition/scope_state.h"
#include "acquisition/waveform_record.h"
#include "link/instrument_link.h"
#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"

namespace quarvelo::acquisition {

inline constexpr double kLongestCaptureTimebase = 0.2;  // seconds per division
inline constexpr std::int32_t kMaxCapturePoints = 524288;
inline constexpr std::int32_t kCaptureIoTimeoutMs = 10000;
inline constexpr int kDigitizeAll = -1;
inline constexpr int kDigitizeChannel = 0;

// The number of points to request: the Max Bins choice (256 << bins_index) or the whole
// acquisition record, never fewer than the screen shows, never more than 524288.
std::int32_t RequestedPoints(bool use_bins, int bins_index, std::int32_t acquisition_points,
                             std::int32_t screen_points);

// Codes to volts and sample indexes to seconds, for the samples of one block.
void ConvertSamples(std::span<const std::uint8_t> codes, double x_increment, double x_origin,
                    std::int32_t y_reference, double y_increment, double y_origin,
                    std::span<double> raw, std::span<double> time, std::span<double> volts);

class WaveformCapture {
 public:
  WaveformCapture(link::InstrumentLink& link, ScopeState& scope, WaveformRecords& records,
                  ui::UiServices& ui, ui::ToolHost& tools);

  // digitizeMode (with stopFirst): kDigitizeAll, kDigitizeChannel, anything else none. The
  // caller learns from the channel's ByteCount and the session's TimedOut whether data came.
  void CaptureChannel(std::int16_t channel, bool useBins, bool stopFirst,
                      std::int16_t digitizeMode);

 private:
  void Transfer(int channel, bool use_bins, bool stop_first, int digitize_mode);

  link::InstrumentLink& link_;
  ScopeState& scope_;
  WaveformRecords& records_;
  ui::UiServices& ui_;
  ui::ToolHost& tools_;
};

}  // namespace quarvelo::acquisition

#endif  // QUARVELO_ACQUISITION_CAPTURE_H_
