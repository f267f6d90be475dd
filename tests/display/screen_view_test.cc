// The screen drawing read back from the persistent image at positions computed from the
// layout, and the measuring tools' behaviour.
#include "display/screen_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "display/colours.h"
#include "display/format.h"
#include "display/trace_raster.h"
#include "platform/ui/recording_ui.h"
#include "tests/link/fields.h"

namespace quarvelo::display {
namespace {

class FakeHost : public DisplayHost {
 public:
  bool SweepMode() const override { return sweep_mode; }
  bool MixedDomainOn() const override { return false; }
  int SpectrumUnit() const override { return kUnitDbv; }
  std::optional<spectrum::PlanLines> PlanTransform(int) override {
    return spectrum::PlanLines{"OSC: 1 pts", ""};
  }
  void MixedDomainSpectrum(int, int) override {}
  double ReapplyBandwidthLimit() override { return upper_limit_hz; }
  void SendFftCentreSpan(double centre, double span) override { sent = {centre, span}; }
  void ShowCursorSourceTool(int channel) override { tool_shown = channel; }
  void SurfaceChanged() override {}

  bool sweep_mode = true;
  double upper_limit_hz = 0;
  int tool_shown = 0;
  std::optional<std::pair<double, double>> sent;
};

class ScreenViewTest : public testing::Test {
 protected:
  ScreenViewTest()
      : surface_(1600, 1000, QImage::Format_RGB32),
        view_(surface_, pic_temp_, {scope_, waveforms_, spectrum_, state_, layout_}, host_, ui_) {
    surface_.fill(Qt::black);
    scope_.TimebaseScale = 1e-3;
  }

  // A displayed channel of `volts`, one sample per microsecond, 1 V/div, offset `offset`.
  void SetRecord(int channel, const std::vector<double>& volts, double offset = 0) {
    const auto count = static_cast<std::int32_t>(volts.size());
    waveforms_.Samples.Grow(count);
    waveforms_.Records[channel].ByteCount = count;
    waveforms_.Records[channel].XIncrement = 1e-6;
    for (std::int32_t i = 0; i < count; ++i) {
      waveforms_.Samples.Time(channel)[i] = i * 1e-6;
      waveforms_.Samples.Volts(channel)[i] = volts[i];
    }
    auto& settings = scope_.Channels[channel];
    settings.Displayed = true;
    settings.Scale = 1;
    settings.Offset = offset;
    settings.FirstSample = 0;
    settings.LastSample = count - 1;
  }

  // A spectrum of `levels` (dBV, -160 .. 0) at 1 kHz per point, shown whole.
  void SetSpectrum(const std::vector<double>& levels) {
    SetRecord(1, std::vector<double>(16, 0.0));
    host_.sweep_mode = false;
    const auto last = static_cast<std::int32_t>(levels.size()) - 1;
    spectrum_.SpectrumLevel = levels;
    spectrum_.SpectrumLevel.resize(2 * levels.size() - 1, -160);  // points up to N
    spectrum_.SpectrumFrequency.resize(levels.size());
    for (std::size_t p = 0; p < levels.size(); ++p) spectrum_.SpectrumFrequency[p] = p * 1000.0;
    spectrum_.FirstPoint = 0;
    spectrum_.LastPoint = last;
    spectrum_.TransformLength = 2 * last;
    spectrum_.LevelTop = 0;
    spectrum_.LevelBottom = -160;
    spectrum_.StartFrequency = 0;
    spectrum_.StopFrequency = last * 1000.0;
    spectrum_.SpectrumReady = true;
    spectrum_.SpectrumChannel = 1;
    scope_.SampleRate = 2.0 * (last + 1);  // kSa/s, so that point p is at p kHz
    view_.DrawSpectrum(1, false);
  }

  QRgb Pixel(double x, double y) const {
    return surface_.pixel(ToPixel(x), ToPixel(y)) & 0xffffffu;
  }
  double MidX() const { return (layout_.GridLeft + layout_.GridRight) / 2 + 450; }

  acquisition::ScopeState scope_;
  acquisition::WaveformRecords waveforms_;
  spectrum::Spectrum spectrum_;
  ViewState state_;
  ScreenLayout layout_;
  FakeHost host_;
  ui::RecordingUi ui_;
  QImage surface_;
  QImage pic_temp_;
  ScreenView view_;
};

TEST_F(ScreenViewTest, SamplesMapToTheGraticuleAndAreClampedToIt) {
  for (const double divisions_above_offset : {4.0, 4.6, 50.0, -4.0, -7.0}) {
    SCOPED_TRACE(divisions_above_offset);
    const bool at_top = divisions_above_offset > 0;
    SetRecord(1, std::vector<double>(400, 0.3 + divisions_above_offset), 0.3);
    view_.RedrawScreen();
    const double edge = at_top ? layout_.GridTop : layout_.GridBottom;
    EXPECT_EQ(layout_.PointY[1][200], std::lrint(edge));
    EXPECT_EQ(Pixel(MidX(), edge), ChannelColour(1).rgb() & 0xffffffu);
    // Nothing of the trace beyond the edge.
    EXPECT_NE(Pixel(MidX(), edge + (at_top ? -15 : 15)), ChannelColour(1).rgb() & 0xffffffu);
  }
}

TEST_F(ScreenViewTest, ChannelsHaveTheirColoursTheTriggerChannelOnTopAndHiddenOnesNothing) {
  // Channels 1 and 2 share a level; 4 lies lower; 3 is not displayed.
  SetRecord(1, std::vector<double>(400, 1.0));
  SetRecord(2, std::vector<double>(400, 1.0));
  SetRecord(3, std::vector<double>(400, 2.0));
  SetRecord(4, std::vector<double>(400, -2.0));
  scope_.Channels[3].Displayed = false;
  for (int trigger : {1, 2}) {
    SCOPED_TRACE(trigger);
    scope_.TriggerChannel = static_cast<std::int16_t>(trigger);
    scope_.TriggerSource = "CHAN" + std::to_string(trigger);
    state_.DisplayedChannel = static_cast<std::int16_t>(trigger);
    view_.RedrawScreen();
    const double y = layout_.PointY[1][100];
    EXPECT_EQ(Pixel(MidX(), y), ChannelColour(trigger).rgb() & 0xffffffu);
    EXPECT_EQ(Pixel(MidX(), layout_.PointY[4][100]), ChannelColour(4).rgb() & 0xffffffu);
    int cyan = 0;
    for (int py = 0; py < surface_.height(); ++py)
      for (int px = 0; px < surface_.width(); ++px)
        cyan += (surface_.pixel(px, py) & 0xffffffu) == (ChannelColour(3).rgb() & 0xffffffu);
    EXPECT_EQ(cyan, 0);
  }
}

TEST_F(ScreenViewTest, AChannelThatCannotBeDrawnReportsItselfWhileTheOthersAreDrawn) {
  SetRecord(1, std::vector<double>(400, 1.0));
  SetRecord(2, std::vector<double>(400, 1.0));
  scope_.Channels[2].LastSample = 400;  // beyond the record
  view_.RedrawScreen();
  EXPECT_EQ(ui_.status(), "DATA ERROR CH2");
  EXPECT_EQ(Pixel(MidX(), layout_.PointY[1][100]), ChannelColour(1).rgb() & 0xffffffu);
}

TEST_F(ScreenViewTest, AnnotationBackgrounds) {
  struct Case {
    const char* background;
    std::optional<QRgb> box;   // colour behind the text, none: untouched
    std::optional<QRgb> text;  // colour of the glyphs
  };
  const QRgb grey = 0x102030;
  const QRgb red = 0xff0000;
  for (const Case& c : {Case{"OPAQ", 0x000000, red}, Case{"INV", red, 0x000000},
                        Case{"TRAN", std::nullopt, red}, Case{"XYZ", std::nullopt, std::nullopt}}) {
    SCOPED_TRACE(c.background);
    view_.DrawScreenFrame(false, true);
    surface_.fill(QColor::fromRgb(grey));
    scope_.AnnotationOn = true;
    scope_.AnnotationText = "WW            ";  // glyphs, then a bare box
    scope_.AnnotationColor = "RED";
    scope_.AnnotationBackground = c.background;
    view_.DrawAnnotation();
    const double left = layout_.GridLeft + 100;
    const double top = layout_.GridTop + 100;
    EXPECT_EQ(Pixel(left + 500, top + 60), c.box.value_or(grey));
    if (c.text) {
      // Antialiased glyphs: count pixels nearer the text colour than what is behind it.
      const QColor want = QColor::fromRgb(*c.text);
      const QColor behind = QColor::fromRgb(c.box.value_or(grey));
      const auto distance = [](QColor a, QColor b) {
        return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
               std::abs(a.blue() - b.blue());
      };
      int glyph = 0;
      for (int px = ToPixel(left); px < ToPixel(left + 400); ++px)
        for (int py = ToPixel(top); py < ToPixel(top + 150); ++py) {
          const QColor pixel = surface_.pixelColor(px, py);
          glyph += distance(pixel, want) < distance(pixel, behind);
        }
      EXPECT_GT(glyph, 10);
    }
  }
}

TEST_F(ScreenViewTest, ColumnDrawingEqualsDrawingEverySegment) {
  std::mt19937 random(7);
  std::normal_distribution<double> noise(0, 0.4);
  std::vector<double> volts(524288);
  for (std::size_t i = 0; i < volts.size(); ++i)
    volts[i] = 2.5 * std::sin(i * 6.2831853 / 70000.0) + noise(random);
  std::vector<double> levels(262145);
  for (std::size_t p = 0; p < levels.size(); ++p) levels[p] = -90 + 20 * noise(random);
  for (bool spectrum : {false, true}) {
    SCOPED_TRACE(spectrum);
    if (spectrum) {
      SetSpectrum(levels);
    } else {
      SetRecord(1, volts);
      scope_.Channels[1].FirstSample = 1000;  // zoomed: the overview strip too
      state_.LastZoomMode = kZoomIn;
    }
    const auto draw = [&] {
      if (spectrum)
        view_.DrawSpectrum(1, false);
      else
        view_.RedrawScreen();
      return surface_.copy();
    };
    view_.SetEverySegment(true);
    const QImage every = draw();
    view_.SetEverySegment(false);
    EXPECT_TRUE(draw() == every);
  }
}

// Measuring tools.

TEST_F(ScreenViewTest, SpectrumCursorSnapsToTheHighestPointNearThePointer) {
  constexpr int kPointer = 500;
  struct Case {
    std::vector<std::pair<int, double>> raised;  // point offset from the pointer, level
    int expected_offset;
  };
  const std::vector<Case> cases = {
      {{{2, -20}}, 2},              // within reach
      {{{-2, -30}, {2, -30}}, -2},  // a tie goes to the lower frequency
      {{{3, -10}, {0, -50}}, 0},    // beyond reach
  };
  for (const Case& c : cases) {
    std::vector<double> levels(1041, -100.0);
    for (const auto& [offset, level] : c.raised) levels[kPointer + offset] = level;
    SetSpectrum(levels);
    const double reach = 15 * 1040 / (layout_.GridRight - layout_.GridLeft) + 1;
    ASSERT_GT(reach, 1.6);
    ASSERT_LT(reach, 2.4);
    state_.MouseHeld = true;
    view_.CursorMouse(layout_.GridLeft + kPointer / 1040.0 * (layout_.GridRight - layout_.GridLeft),
                      (layout_.GridTop + layout_.GridBottom) / 2, true, kLeftButton);
    EXPECT_EQ(state_.Cursors[1].index, kPointer + c.expected_offset);
    EXPECT_TRUE(state_.Cursors[1].shown);
  }
}

TEST_F(ScreenViewTest, BothCursorsGiveTheDifferenceReadout) {
  SetSpectrum(std::vector<double>(1001, -100.0));
  const double y = (layout_.GridTop + layout_.GridBottom) / 2;
  view_.CursorMouse(layout_.GridLeft + 3000, y, true, kLeftButton);
  view_.CursorMouse(layout_.GridLeft + 9000, y - 1000, true, kRightButton);
  const Cursor& l = state_.Cursors[1];
  const Cursor& r = state_.Cursors[2];
  EXPECT_NE(view_.LastReadout().find("[D: " + FormatFrequency(r.position - l.position, true) + " " +
                                     FormatLevel(r.value - l.value, kUnitDbv) + "]"),
            std::string::npos);

  // The oscilloscope view: 1/dt only when the times differ.
  host_.sweep_mode = true;
  std::vector<double> volts(1000);
  for (int i = 0; i < 1000; ++i) volts[i] = i / 1000.0;
  SetRecord(1, volts);
  view_.RedrawScreen();
  for (double right_x : {4000.0, 9000.0}) {
    view_.CursorMouse(layout_.GridLeft + 4000, y / 2, true, kLeftButton);
    view_.CursorMouse(layout_.GridLeft + right_x, y / 2, true, kRightButton);
    const double dt = r.position - l.position;
    std::string expected = "[D: " + FormatTime(dt);
    if (right_x != 4000.0) expected += " " + FormatFrequency(1 / dt, true);
    expected += " " + FormatVoltage(r.value - l.value) + "]";
    EXPECT_EQ(view_.LastReadout().substr(view_.LastReadout().find("[D:")), expected);
  }
}

TEST_F(ScreenViewTest, AutoPeakFillsTheFirstFreeSlotWithTheHighestPointRightOfTheCursor) {
  std::vector<double> levels(1001, -100.0);
  levels[200] = -10;  // left of the cursor
  levels[700] = -40;
  levels[1000] = -5;  // the last point is not searched
  for (int active : {3, 4}) {
    SCOPED_TRACE(active);
    SetSpectrum(levels);
    for (int m = 1; m <= kMarkerCount; ++m) state_.Markers[m] = Marker{.active = m <= active};
    view_.CursorMouse(layout_.GridLeft + 0.5 * (layout_.GridRight - layout_.GridLeft),
                      (layout_.GridTop + layout_.GridBottom) / 2, false, kLeftButton);
    view_.AutoPeak();
    const Marker& last = state_.Markers[4];
    EXPECT_EQ(testing_support::Fields(last.active, last.index, last.level),
              active == 3 ? "1|700|-40|" : "1|0|0|");
  }
}

TEST_F(ScreenViewTest, ZoomingInUntilNoPointRemainsKeepsTheRange) {
  SetSpectrum(std::vector<double>(1025, -100.0));
  state_.LastPointerFrequency = 300e3 * 1025 / 1024;  // on point 300 exactly
  std::int32_t first = 0;
  std::int32_t last = 0;
  for (int i = 0; i < 20 && ui_.status() != "Span too small!"; ++i) {
    first = spectrum_.FirstPoint;
    last = spectrum_.LastPoint;
    view_.ZoomView(kZoomIn);
  }
  ASSERT_EQ(ui_.status(), "Span too small!");
  EXPECT_EQ(testing_support::Fields(spectrum_.FirstPoint, spectrum_.LastPoint),
            testing_support::Fields(first, last));
  EXPECT_GT(last, first);
  EXPECT_NEAR((first + last) / 2.0, 300, 1);

  // The reset shows the whole spectrum again, up to the upper limit while it is on.
  host_.sweep_mode = false;
  view_.ZoomView(kZoomReset);
  EXPECT_EQ(testing_support::Fields(spectrum_.FirstPoint, spectrum_.LastPoint), "1|1025|");
  host_.upper_limit_hz = 512e3;
  view_.ZoomView(kZoomReset);
  EXPECT_EQ(testing_support::Fields(spectrum_.LastPoint, spectrum_.StopFrequency), "512|512000|");
}

TEST_F(ScreenViewTest, ZeroSpanShowsHalfTheTransform) {
  SetSpectrum(std::vector<double>(1025, -100.0));
  // A quarter of N = 2048 either side of point 513 reaches from point 1 to N/2 + 1.
  view_.SetCenterSpan(513.5, 0);
  EXPECT_EQ(spectrum_.QuarterPoint, 513);
  EXPECT_EQ(spectrum_.LastPoint - spectrum_.FirstPoint, spectrum_.TransformLength / 2);
  ASSERT_TRUE(host_.sent.has_value());
  EXPECT_EQ(host_.sent->first, 513.5e3);
}

TEST_F(ScreenViewTest, SidePanelRedrawnAtAnotherHeightKeepsNothingOfTheEarlierOne) {
  // A spectrum run redraws the panel alone, after the surface has grown with the window.
  SetSpectrum(std::vector<double>(1025, -100.0));
  view_.DrawStatusPanel();
  surface_ = surface_.copy(0, 0, 1600, 1200);
  const auto redraw = [&] {
    view_.DrawSpectrum(1, false);
    view_.DrawStatusPanel();
    const int left = ToPixel(layout_.GridRight) + 3;
    return surface_.copy(left, 0, surface_.width() - left, surface_.height());
  };
  const QImage over_the_old = redraw();
  surface_.fill(Qt::black);
  EXPECT_TRUE(redraw() == over_the_old);
}

TEST_F(ScreenViewTest, OscilloscopeZoomAroundTheCentreWithinTheRecord) {
  struct Case {
    int mode;
    std::int32_t first, last;
    double centre;
    std::int32_t want_first, want_last;
  };
  for (const Case& c : {Case{kZoomIn, 0, 999, 500, 250, 749},    // w' = 499 about 500
                        Case{kZoomOut, 250, 749, 500, 1, 999},   // w' = 998
                        Case{kZoomOut, 0, 999, 900, 0, 999},     // clipped at both ends
                        Case{kZoomIn, 500, 503, 501, 500, 503},  // w' = 1: no change
                        Case{kZoomReset, 300, 400, 350, 0, 999}}) {
    SCOPED_TRACE(c.want_first);
    SetRecord(1, std::vector<double>(1000, 0.0));
    SetRecord(2, std::vector<double>(1000, 0.0));
    for (int channel : {1, 2}) {  // as the last zoom left them
      scope_.Channels[channel].FirstSample = c.first;
      scope_.Channels[channel].LastSample = c.last;
    }
    spectrum_.FirstPoint = c.first;
    spectrum_.LastPoint = c.last;
    state_.ZoomCentre = c.centre;
    view_.ZoomView(c.mode);
    EXPECT_EQ(testing_support::Fields(spectrum_.FirstPoint, spectrum_.LastPoint,
                                      scope_.Channels[2].LastSample),
              testing_support::Fields(c.want_first, c.want_last, c.want_last));
  }
}

TEST_F(ScreenViewTest, CursorSourceMovesOnlyToADisplayedChannelWithSamples) {
  SetRecord(1, std::vector<double>(100, 0.0));
  SetRecord(3, std::vector<double>(100, 0.0));
  scope_.Channels[2].Displayed = true;  // no samples
  state_.Markers[2].active = true;
  view_.SelectCursorSource("ID_CSR4");  // not displayed: the current tool goes down again
  EXPECT_EQ(host_.tool_shown, 1);
  view_.SelectCursorSource("ID_CSR2");
  EXPECT_EQ(state_.CursorSourceChannel(), 1);
  EXPECT_TRUE(state_.Markers[2].active);
  view_.SelectCursorSource("ID_CSR3");
  EXPECT_EQ(state_.Cursors[1].channel, 3);
  EXPECT_EQ(state_.Cursors[2].channel, 3);
  EXPECT_FALSE(state_.Markers[2].active);
}

TEST_F(ScreenViewTest, HoldoffReadoutOnlyAbove40Nanoseconds) {
  SetRecord(1, std::vector<double>(400, 0.0));
  for (double holdoff : {40e-9, 4E-08, 41e-9}) {
    scope_.Holdoff = holdoff;
    view_.RedrawScreen();
    EXPECT_EQ(view_.TimeReadout().find("[Ho:") != std::string::npos, holdoff > 40.5e-9) << holdoff;
  }
}

}  // namespace
}  // namespace quarvelo::display
