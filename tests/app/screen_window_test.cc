// The screen drawing inside the real main window against the simulated oscilloscope over
// loopback TCP: start-up frame, a sweep's traces, the mouse on picScreen and the zoom tool.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QTest>
#include <algorithm>

#include "display/colours.h"
#include "display/trace_raster.h"
#include "platform/qt/picture_box.h"
#include "tests/app/window_on_simulator.h"

namespace quarvelo::app {
namespace {

class ScreenWindowTest : public testing_support::WindowOnSimulator {
 protected:
  void SetUp() override {
    WindowOnSimulator::SetUp();
    if (HasFatalFailure()) return;
    window_->resize(1400, 900);
    window_->show();
    QApplication::processEvents();
    Load({}, false);
  }

  QRgb Pixel(double x_units, double y_units) const {
    return window_->picScreen()->Image().pixel(display::ToPixel(x_units),
                                               display::ToPixel(y_units)) &
           0xffffffu;
  }
  QString Status() const { return window_->findChild<QLabel*>("lblScreen")->text(); }
};

TEST_F(ScreenWindowTest, SweepDrawsTracesTheMouseMeasuresAndTheZoomToolNarrowsTheView) {
  const display::ScreenLayout& layout = window_->Screen().Layout();
  // Start-up: the empty frame, the last zoom a reset.
  EXPECT_EQ(window_->Screen().State().LastZoomMode, display::kZoomReset);
  EXPECT_EQ(Pixel((layout.GridLeft + layout.GridRight) / 2 + 300, layout.GridTop), 0xffffffu);

  window_->Link().OpenInstrument();
  ASSERT_TRUE(window_->Session().RemoteOn);
  simulator_->Execute(":CHANnel1:DISPlay 1;:CHANnel2:DISPlay 1;:TRIGger:EDGE:SOURce CHANnel2");
  window_->Sweep().ID_Sweep(true);

  // The trigger channel lies on top along its drawn points.
  const std::int32_t first = layout.PointsFirst[2];
  const std::int32_t last = layout.PointsLast[2];
  ASSERT_GT(last, first);
  const std::int32_t middle = (first + last) / 2;
  EXPECT_EQ(Pixel(layout.PointX[2][middle], layout.PointY[2][middle]),
            display::ChannelColour(2).rgb() & 0xffffffu);

  // The left button on the trace: the cursor takes the sample under the pointer.
  qt::PictureBox* screen = window_->picScreen();
  const QPoint at(display::ToPixel(layout.PointX[2][middle]),
                  display::ToPixel((layout.GridTop + layout.GridBottom) / 2));
  QTest::mousePress(screen, Qt::LeftButton, {}, at);
  EXPECT_TRUE(Status().startsWith("[L: ")) << Status().toStdString();
  QTest::mouseRelease(screen, Qt::LeftButton, {}, at);
  const display::Cursor& cursor = window_->Screen().State().Cursors[1];
  EXPECT_TRUE(cursor.shown);
  EXPECT_NEAR(cursor.index, middle, (last - first) / 200.0 + 1);

  // Zoom in around the cursor: half the samples, every channel's range with it.
  window_->findChild<QAction*>("ID_ZoomP")->trigger();
  const spectrum::Spectrum& spectrum = window_->SpectrumRecord();
  EXPECT_EQ(spectrum.LastPoint - spectrum.FirstPoint, (last - first) / 2);
  EXPECT_LE(spectrum.FirstPoint, cursor.index);
  EXPECT_GE(spectrum.LastPoint, cursor.index);
  EXPECT_EQ(window_->Scope().Channels[1].FirstSample, spectrum.FirstPoint);
  EXPECT_EQ(window_->Screen().State().LastZoomMode, display::kZoomIn);
}

TEST_F(ScreenWindowTest, FftRunDrawsTheSpectrumWhichTheMouseAndZoomToolMeasure) {
  window_->Settings().AverageCount = 1;
  window_->Link().OpenInstrument();
  ASSERT_TRUE(window_->Session().RemoteOn);
  // Ten divisions of 1 ms hold more samples than a transfer brings: the record is decimated.
  window_->Link().SendCommand(":TIMebase:SCALe 1E-3");
  window_->Sweep().FftRun(1);
  const spectrum::Spectrum& spectrum = window_->SpectrumRecord();
  ASSERT_TRUE(spectrum.SpectrumReady);
  // The probe's 1 kHz square peaks at 1 kHz although the instrument decimated the record.
  const auto level = spectrum.SpectrumLevel.begin();
  const auto peak =
      std::max_element(level + spectrum.FirstPoint, level + spectrum.LastPoint) - level;
  EXPECT_NEAR(spectrum.SpectrumFrequency[peak], 1000, spectrum.FrequencyResolution);

  // The spectrum pane below the traces holds the spectrum's colour.
  const display::ScreenLayout& layout = window_->Screen().Layout();
  EXPECT_GT(layout.GridTop, layout.ScopeBottom);
  const QImage& image = window_->picScreen()->Image();
  int coloured = 0;
  for (int y = display::ToPixel(layout.GridTop); y <= display::ToPixel(layout.GridBottom); ++y)
    for (int x = display::ToPixel(layout.GridLeft); x <= display::ToPixel(layout.GridRight); ++x)
      coloured += (image.pixel(x, y) & 0xffffffu) == (display::kSpectrumColour.rgb() & 0xffffffu);
  EXPECT_GT(coloured, display::ToPixel(layout.GridRight - layout.GridLeft));

  // Dragging the left button reads frequency and level; zoom in halves the span about it.
  qt::PictureBox* screen = window_->picScreen();
  const QPoint at(display::ToPixel(layout.GridLeft + (layout.GridRight - layout.GridLeft) / 3),
                  display::ToPixel((layout.GridTop + layout.GridBottom) / 2));
  QTest::mousePress(screen, Qt::LeftButton, {}, at);
  QTest::mouseMove(screen, at + QPoint(5, 0));
  EXPECT_TRUE(Status().startsWith("[L: ")) << Status().toStdString();
  EXPECT_TRUE(Status().contains("dBV")) << Status().toStdString();
  QTest::mouseRelease(screen, Qt::LeftButton, {}, at + QPoint(5, 0));
  const std::int32_t shown = spectrum.LastPoint - spectrum.FirstPoint;
  window_->findChild<QAction*>("ID_ZoomP")->trigger();
  EXPECT_NEAR(spectrum.LastPoint - spectrum.FirstPoint, shown / 2.0, 2);
  EXPECT_EQ(window_->Screen().State().LastZoomMode, display::kZoomIn);
}

}  // namespace
}  // namespace quarvelo::app
