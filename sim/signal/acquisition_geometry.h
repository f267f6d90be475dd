// How much the instrument records and how much it hands over: the sample rate that lets the
// record cover the screen, the record length, and the points a waveform transfer delivers in
// each points mode.
#ifndef QUARVELO_SIM_SIGNAL_ACQUISITION_GEOMETRY_H_
#define QUARVELO_SIM_SIGNAL_ACQUISITION_GEOMETRY_H_

#include <cstddef>

namespace quarvelo::sim {

struct AcquisitionInputs {
  double max_sample_rate = 2e9;
  double memory_points = 100e3;
  bool interleave_broken = false;  // both channels of a pair on: half rate, half memory
  double timebase_scale = 100e-6;  // seconds per division, ten divisions across
  double timebase_position = 0;    // seconds from the trigger to the reference point
  double reference_divisions = 5;  // reference point from the left edge: 1, 5 or 9
  enum class PointsMode { kNormal, kMaximum, kRaw };
  PointsMode points_mode = PointsMode::kNormal;
  long requested_points = 1000;
  bool stopped = false;
  bool averaging = false;    // averaging with a count above 1
  bool peak_detect = false;  // peak acquisitions hand over the measurement record at most
};

struct AcquisitionGeometry {
  double sample_rate = 0;     // samples per second of the raw record
  long record_points = 0;     // ":ACQuire:POINts?"
  long available_points = 0;  // ":WAVeform:POINts? MAX"
  long delivered_points = 0;  // ":WAVeform:POINts?" and the block length
  double x_increment = 0;     // seconds per delivered point
  double x_origin = 0;        // time of the first delivered point, from the trigger
  double screen_left = 0;     // time at the screen's left edge
};

// The record holds at most the normal-mode measurement record of this many points.
constexpr long kMeasurementRecordPoints = 62500;

AcquisitionGeometry ComputeGeometry(const AcquisitionInputs& inputs);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SIGNAL_ACQUISITION_GEOMETRY_H_
