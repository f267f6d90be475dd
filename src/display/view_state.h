// The measuring state of the screen: four placed markers, the two mouse cursors and the view
// values the sweep, the spectrum computation and the zoom share. Owned by the main window and
// lent to the screen view; plain values only.
#ifndef QUARVELO_DISPLAY_VIEW_STATE_H_
#define QUARVELO_DISPLAY_VIEW_STATE_H_

#include <array>
#include <cstdint>
#include <string>

namespace quarvelo::display {

inline constexpr int kMarkerCount = 4;
inline constexpr double kMarkerHalfSize = 100;  // surface units

// `LastZoomMode` codes.
inline constexpr int kZoomIn = 0;
inline constexpr int kZoomOut = 1;
inline constexpr int kZoomReset = 2;

struct Marker {
  bool active = false;
  float x = 0;
  float y = 0;
  double level = 0;      // spectrum level (current unit) or trace voltage
  double frequency = 0;  // Hz (spectrum markers)
  double time = 0;       // seconds (trace markers)
  std::int32_t index = 0;
  std::int16_t channel = 0;  // the trace a trace marker lies on
};

// Slots 1..4; slot 0 is unused so that slot numbers read as the user sees them.
using MarkerSlots = std::array<Marker, kMarkerCount + 1>;

struct Cursor {
  double x = 0;
  double y = 0;
  double position = 0;  // seconds on the oscilloscope view, Hz on the spectrum
  double value = 0;     // volts, or the spectrum level
  std::int32_t index = 0;
  std::string x_text;
  std::string value_text;
  bool shown = false;
  std::int16_t channel = 1;  // `CursorSourceChannel`
};

struct ViewState {
  MarkerSlots Markers;
  std::array<Cursor, 3> Cursors;  // 1 = left button, 2 = right button; 0 unused
  bool MouseHeld = false;
  double ZoomCentre = 0;  // sample index the oscilloscope-view zoom centres on
  int LastZoomMode = kZoomReset;
  std::int16_t DisplayedChannel = 1;  // the reference channel of the screen
  double LastPointerFrequency = 0;    // Hz, where the spectrum zoom centres
  bool ZoomBusy = false;              // re-entry guard of the oscilloscope-view zoom
  // Set by every redraw and by the sweep; the status panel uses it to know a fresh screen.
  bool FirstTrace = true;

  std::int16_t CursorSourceChannel() const { return Cursors[1].channel; }
};

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_VIEW_STATE_H_
