#include "sim/signal/acquisition_geometry.h"

#include <algorithm>
#include <cmath>

namespace quarvelo::sim {
namespace {

// The rates the instrument offers: 1, 2, 2.5, 4 and 5 times a power of ten, rounded down.
double SnapRateDown(double rate) {
  if (rate <= 0) return 1;
  double decade = std::pow(10.0, std::floor(std::log10(rate)));
  double best = decade;
  for (double step : {1.0, 2.0, 2.5, 4.0, 5.0}) {
    if (step * decade <= rate * (1 + 1e-9)) best = step * decade;
  }
  return best;
}

}  // namespace

AcquisitionGeometry ComputeGeometry(const AcquisitionInputs& inputs) {
  AcquisitionGeometry geometry;
  double max_rate = inputs.max_sample_rate / (inputs.interleave_broken ? 2 : 1);
  double memory = inputs.memory_points / (inputs.interleave_broken ? 2 : 1);
  double screen_time = 10.0 * inputs.timebase_scale;
  geometry.sample_rate = std::min(max_rate, SnapRateDown(memory / screen_time));
  // The instrument returns what is on screen: the record spans the ten divisions. At fast
  // time bases, where the screen holds fewer samples than a useful record, the points in
  // between are interpolated (the signal is known at any instant).
  double screen_points = std::round(geometry.sample_rate * screen_time);
  geometry.record_points = static_cast<long>(std::clamp(screen_points, 1000.0, memory));
  geometry.screen_left =
      inputs.timebase_position - inputs.reference_divisions * inputs.timebase_scale;
  double record_time = screen_time;
  double record_start = geometry.screen_left;

  long measurement = std::min(geometry.record_points, kMeasurementRecordPoints);
  long available = measurement;
  if (inputs.stopped && !inputs.peak_detect &&
      inputs.points_mode != AcquisitionInputs::PointsMode::kNormal) {
    available = geometry.record_points;
  }
  if (inputs.averaging) available = std::min(available, 1000L);
  geometry.available_points = available;

  long wanted = std::clamp(inputs.requested_points, 1L, available);
  // Fewer points than the record are taken every stride-th sample of it.
  long stride = static_cast<long>(
      std::ceil(static_cast<double>(geometry.record_points) / static_cast<double>(wanted)));
  stride = std::max(stride, 1L);
  geometry.delivered_points = std::min(wanted, geometry.record_points / stride);
  geometry.x_increment = stride * record_time / static_cast<double>(geometry.record_points);
  geometry.x_origin =
      record_start + (record_time - geometry.delivered_points * geometry.x_increment) / 2;
  return geometry;
}

}  // namespace quarvelo::sim
