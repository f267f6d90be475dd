#include "spectrum/fft_orlen.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "platform/ui/recording_ui.h"

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
  EXPECT_EQ(ui.messages()[0].text,
            "Error in procedure Fourier:\r\n NumSamples is 1000, which is not a positive "
            "integer power of two.");
  EXPECT_EQ(ui.messages()[0].buttons, ui::MessageButtons::kOk);
  EXPECT_EQ(ui.messages()[3].text,
            "Error in procedure Fourier:\r\n NumSamples is -8, which is not a positive "
            "integer power of two.");
  EXPECT_EQ(workspace.RealOutput[5], 42);
  EXPECT_EQ(workspace.RealOutput[0], 0);
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

class RecordingProgress : public ProgressBar {
 public:
  void SetProgressRange(int minimum, int maximum) override {
    minimum_ = minimum;
    maximum_ = maximum;
  }
  void SetProgressValue(double value) override { values_.push_back(value); }
  int minimum_ = -1;
  int maximum_ = -1;
  std::vector<double> values_;
};

TEST(DiscreteFourierTest, ReportsProgressPerBinAndEndsAtZero) {
  constexpr std::int32_t kN = 8;
  FourierWorkspace workspace;
  workspace.AllocateTransformArrays(kN);
  workspace.RealInput[1] = 1;
  RecordingProgress progress;
  ui::RecordingUi ui;
  DftContext context;
  context.progress = &progress;
  context.ui = &ui;
  EXPECT_EQ(DiscreteFourier(workspace, kN, context), 5);
  EXPECT_EQ(progress.minimum_, 0);
  EXPECT_EQ(progress.maximum_, 32767);
  const double step = 65532.0 / kN;
  EXPECT_EQ(progress.values_, (std::vector<double>{0, 0, step, 2 * step, 3 * step, 4 * step, 0}));
  EXPECT_EQ(ui.event_runs(), 5);
}

TEST(DiscreteFourierTest, StopRequestLeavesLaterBinsZeroAndTheProgressWhereItWas) {
  constexpr std::int32_t kN = 64;
  FourierWorkspace workspace;
  workspace.AllocateTransformArrays(kN);
  for (std::int32_t i = 0; i <= kN; ++i) workspace.RealInput[i] = 1;
  RecordingProgress progress;
  ui::RecordingUi ui;
  bool stop = false;
  int bins_seen = 0;
  ui.SetEventHook([&] {
    if (++bins_seen == 3) stop = true;  // the user clicks "Stop averaging" during bin 2
  });
  DftContext context;
  context.progress = &progress;
  context.ui = &ui;
  context.stop_requested = &stop;
  EXPECT_EQ(DiscreteFourier(workspace, kN, context), 3);
  EXPECT_NE(workspace.RealOutput[0], 0.0);
  for (std::int32_t k = 3; k <= kN; ++k) {
    EXPECT_EQ(workspace.RealOutput[k], 0.0) << k;
    EXPECT_EQ(workspace.ImagOutput[k], 0.0) << k;
  }
  EXPECT_EQ(progress.values_.back(), 2 * (65532.0 / kN));
}

TEST(DiscreteFourierTest, AddsIntoTheOutputsAndSkipsMissingInput) {
  FourierWorkspace workspace;
  workspace.AllocateTransformArrays(4);
  workspace.RealInput.resize(2);  // only samples 0 and 1 exist
  workspace.RealInput[0] = 1;
  workspace.RealOutput[0] = 10;
  DiscreteFourier(workspace, 4, DftContext{});
  EXPECT_EQ(workspace.RealOutput[0], 11);
  EXPECT_EQ(workspace.RealOutput[2], 1);
}

}  // namespace
}  // namespace quarvelo::spectrum
