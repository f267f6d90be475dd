// The screen image in each transfer format opens as a picture of the traces.
#include <gtest/gtest.h>

#include <QByteArray>
#include <QImage>
#include <string>

#include "sim/image/screen_drawing.h"
#include "sim/model/instrument.h"
#include "tests/link/fields.h"

namespace quarvelo::sim {
namespace {

struct ImageCase {
  const char* query;
  const char* codec;
  size_t size;  // 0: not fixed (compressed)
  bool gray;
};

class ScreenImageTest : public testing::TestWithParam<ImageCase> {};

TEST_P(ScreenImageTest, OpensAndShowsTheTraceAtItsLevel) {
  const ImageCase& c = GetParam();
  Instrument instrument{InstrumentConfig{}};
  instrument.Execute(":HARDcopy:INKSaver OFF");
  // Channel 1 at a steady +1 division, channel 2 at -2 divisions.
  instrument.Execute(":SIMulate:CHANnel1:SIGNal DC,0.5;:CHANnel1:SCALe 0.5;:CHANnel1:OFFSet 0");
  instrument.Execute(":SIMulate:CHANnel2:SIGNal DC,-2;:CHANnel2:SCALe 1;:CHANnel2:DISPlay 1");
  std::string reply = instrument.Execute(c.query);
  ASSERT_GT(reply.size(), 10u);
  ASSERT_EQ(reply.substr(0, 2), "#8");
  size_t length = std::stoul(reply.substr(2, 8));
  ASSERT_EQ(reply.size(), 10 + length);
  EXPECT_TRUE(c.size == 0 || length == c.size) << length;
  QImage image;
  ASSERT_TRUE(
      image.loadFromData(QByteArray(reply.data() + 10, static_cast<qsizetype>(length)), c.codec));
  EXPECT_EQ(image.width(), kScreenWidth);
  EXPECT_EQ(image.height(), kScreenHeight);
  const int x = Graticule::kLeft + 3 * Graticule::kDivisionPixels + 7;
  QRgb channel1 = image.pixel(x, Graticule::RowOf(1.0));
  QRgb channel2 = image.pixel(x, Graticule::RowOf(-2.0));
  QRgb background = image.pixel(x, Graticule::RowOf(2.7));
  EXPECT_EQ(background, qRgb(0, 0, 0));  // the ink saver is off
  EXPECT_NE(channel1, background);
  EXPECT_NE(channel2, background);
  EXPECT_NE(channel1, channel2);
  if (c.gray) {
    EXPECT_TRUE(qIsGray(channel1));
  } else {
    EXPECT_EQ(channel1, qRgb(255, 255, 0));  // channel 1 is yellow
  }
}

INSTANTIATE_TEST_SUITE_P(
    Table, ScreenImageTest,
    testing::Values(ImageCase{":DISPlay:DATA? BMP8bit, COLor", "BMP", 385078, false},
                    ImageCase{":DISPlay:DATA? BMP8BIT,GRAYscale", "BMP", 385078, true},
                    ImageCase{":DISPlay:DATA? BMP, COLor", "BMP", 1152054, false},
                    ImageCase{":DISPlay:DATA?", "BMP", 1152054, false},
                    ImageCase{":DISPlay:DATA? PNG,GRAY", "PNG", 0, true},
                    ImageCase{":DISP:DATA? png", "PNG", 0, false}));

TEST(ScreenImageTest, InkSaverDrawsOnWhite) {
  const std::string reply = Instrument{InstrumentConfig{}}.Execute(":DISPlay:DATA? BMP8bit,COLor");
  QImage image;
  ASSERT_TRUE(
      image.loadFromData(QByteArray(reply.data() + 10, static_cast<qsizetype>(reply.size() - 10))));
  EXPECT_EQ(image.pixel(Graticule::kLeft + 3, Graticule::RowOf(3.3)), qRgb(255, 255, 255));
}

TEST(ScreenImageTest, ReadoutsUseEngineeringUnits) {
  EXPECT_EQ(testing_support::Fields(EngineeringText(0.5, "V/"), EngineeringText(1.0, "V/"),
                                    EngineeringText(100e-6, "s/"), EngineeringText(2.5e-9, "s/"),
                                    EngineeringText(-1.2, "V"), EngineeringText(0, "V"),
                                    EngineeringText(50, "s/")),
            "500mV/|1V/|100us/|2.5ns/|-1.2V|0V|50s/|");
}

TEST(ScreenImageTest, UnknownFormatIsRefused) {
  Instrument instrument{InstrumentConfig{}};
  EXPECT_EQ(instrument.Execute(":DISPlay:DATA? JPEG"), "");
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), "-224,\"Illegal parameter value\"");
}

}  // namespace
}  // namespace quarvelo::sim
