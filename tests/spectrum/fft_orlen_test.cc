#include "spectrum/fft_orlen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/ui/recording_ui.h"
#include "spectrum_fakes.h"

namespace quarvelo::spectrum {
namespace {

TEST(FourierTest, BadLengthShowsTheErrorBoxAndLeavesTheOutputs) {
  ui::RecordingUi ui;
  FourierWorkspace workspace;
  workspace.AllocateAll(1024);
  workspace.RealInput[3] = 1;
  workspace.RealOutput[5] = 42;
  PrepareTwiddles(workspace, 1024, false);
  for (const std::int32_t n : {1000, 1, 0, -8}) {
    EXPECT_EQ(Fourier(workspace, n, false, ui), FourierStatus::kBadLength) << n;
  }
  ASSERT_EQ(ui.messages().size(), 4u);
  EXPECT_EQ(ui.messages()[3].text,
            "Error in procedure Fourier:\r\n NumSamples is -8, which is not a positive "
            "integer power of two.");
  EXPECT_EQ(ui.messages()[3].buttons, ui::MessageButtons::kOk);
  EXPECT_EQ(workspace.RealOutput[5], 42);
}

TEST(FourierTest, WorkspaceShorterThanTheLengthIsRefusedWithoutTouchingIt) {
  ui::RecordingUi ui;
  FourierWorkspace workspace;
  workspace.AllocateAll(8);
  PrepareTwiddles(workspace, 8, false);
  workspace.RealOutput[1] = 3;
  EXPECT_EQ(Fourier(workspace, 16, false, ui), FourierStatus::kIndexOutOfRange);
  EXPECT_EQ(workspace.RealOutput[1], 3);
  EXPECT_TRUE(ui.messages().empty());
}

class DiscreteFourierTest : public testing::Test {
 protected:
  // The DFT of n + 1 ones, with progress, events and the stop flag.
  std::int32_t Run(std::int32_t n) {
    workspace_.AllocateTransformArrays(n);
    std::fill(workspace_.RealInput.begin(), workspace_.RealInput.end(), 1.0);
    return DiscreteFourier(workspace_, n, DftContext{kProgramTwoPi, &stop_, &host_, &ui_});
  }
  FourierWorkspace workspace_;
  FakeSpectrumHost host_;
  ui::RecordingUi ui_;
  bool stop_ = false;
};

TEST_F(DiscreteFourierTest, ReportsProgressPerBinAndEndsAtZero) {
  EXPECT_EQ(Run(8), 5);
  EXPECT_EQ(host_.progress_range, std::pair(0, 32767));
  const double step = 65532.0 / 8;
  EXPECT_EQ(host_.progress_values,
            (std::vector<double>{0, 0, step, 2 * step, 3 * step, 4 * step, 0}));
  EXPECT_EQ(ui_.event_runs(), 5);
}

TEST_F(DiscreteFourierTest, StopRequestLeavesLaterBinsZeroAndTheProgressWhereItWas) {
  int bins_seen = 0;
  ui_.SetEventHook([&] {
    if (++bins_seen == 3) stop_ = true;  // the user clicks "Stop averaging" during bin 2
  });
  constexpr std::int32_t kN = 64;
  EXPECT_EQ(Run(kN), 3);
  EXPECT_NE(workspace_.RealOutput[0], 0.0);
  for (std::int32_t k = 3; k <= kN; ++k) {
    EXPECT_EQ(workspace_.RealOutput[k], 0.0) << k;
    EXPECT_EQ(workspace_.ImagOutput[k], 0.0) << k;
  }
  EXPECT_EQ(host_.progress_values.back(), 2 * (65532.0 / kN));
}

TEST_F(DiscreteFourierTest, AddsIntoTheOutputsAndSkipsMissingInput) {
  workspace_.AllocateTransformArrays(4);
  workspace_.RealInput.resize(2);  // only samples 0 and 1 exist
  workspace_.RealInput[0] = 1;
  workspace_.RealOutput[0] = 10;
  DiscreteFourier(workspace_, 4, DftContext{});
  EXPECT_EQ(workspace_.RealOutput[0], 11);
  EXPECT_EQ(workspace_.RealOutput[2], 1);
}

}  // namespace
}  // namespace quarvelo::spectrum
