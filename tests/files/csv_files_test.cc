// Saving and opening CSV waveform files, the dialogs answered by the recording UI.
#include "files/csv_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "acquisition/capture.h"
#include "display/view_state.h"
#include "platform/ui/recording_ui.h"
#include "tests/files/files_test_support.h"
#include "tests/link/fields.h"

namespace quarvelo::files {
namespace {

// Keeps the view values as the main window does and counts the frames and sweeps.
class RecordingCsvHost : public CsvHost {
 public:
  bool SweepMode() const override { return sweep_mode; }
  void SetSweepMode() override { sweep_mode = true; }
  std::int16_t SpectrumChannel() const override { return 1; }
  std::int16_t DisplayedChannel() const override { return displayed; }
  void SetDisplayedChannel(std::int16_t channel) override { displayed = channel; }
  void SetCursorChannel(std::int16_t channel) override { cursors = channel; }
  void SetLastZoomMode(int mode) override { zoom_mode = mode; }
  void DrawEmptyFrame() override { ++frames; }
  void RunSweep() override { ++sweeps; }

  bool sweep_mode = true;
  std::int16_t displayed = 1;
  std::int16_t cursors = 1;
  int zoom_mode = display::kZoomIn;
  int frames = 0;
  int sweeps = 0;
};

class CsvFilesTest : public testing::Test {
 protected:
  testing_support::TempFolder folder;
  acquisition::ScopeState scope;
  acquisition::WaveformRecords waveforms;
  RecordingCsvHost host;
  ui::RecordingUi ui;
  ui::RecordingToolHost tools;
  std::string data_folder = folder.path();
  CsvFiles files{{scope, waveforms}, host, ui, tools, data_folder};
};

TEST_F(CsvFilesTest, SavedRecordOpensAgainAndALoadedRecordSavesTheSameFile) {
  host.displayed = 2;
  files.SaveCsvFile();
  ASSERT_EQ(ui.messages().size(), 1u);
  EXPECT_EQ(ui.messages()[0].text, "No Data to save");
  EXPECT_TRUE(ui.save_requests().empty());

  // A capture of channel 2: a sine of 8-bit codes.
  constexpr int kCount = 1000;
  std::vector<std::uint8_t> codes(kCount);
  for (int i = 0; i < kCount; ++i) codes[i] = std::lround(128 + 100 * std::sin(i * 0.05));
  waveforms.Records[2] = {.XIncrement = 4e-9,
                          .XOrigin = -2e-6,
                          .YOrigin = 0.25,
                          .YReference = 128,
                          .ByteCount = kCount};
  waveforms.Shared.SampleRateK = 250000;
  scope.Channels[2].Scale = 0.5;
  scope.Channels[2].Offset = -0.125;
  scope.TimebaseScale = 2e-7;
  waveforms.Samples.Grow(kCount);
  acquisition::ConvertSamples(codes, 4e-9, -2e-6, 128, 0.0123, 0.25, waveforms.Samples.Raw(2),
                              waveforms.Samples.Time(2), waveforms.Samples.Volts(2));
  const std::vector<double> volts(waveforms.Samples.Volts(2).begin(),
                                  waveforms.Samples.Volts(2).begin() + kCount);
  const std::string first = folder.File("first.csv");
  ui.QueueSaveFileAnswer(first);
  files.SaveCsvFile();
  EXPECT_EQ(ui.save_requests().at(0).initial_path, folder.File("waveform2.csv"));
  const std::string text = testing_support::ReadWholeFile(first);
  char line[64];
  std::snprintf(line, sizeof line, "-0.000002000;%.9f\r\n", volts[0]);
  EXPECT_EQ(text.substr(0, text.find('\n', text.find('\n') + 1) + 1),
            "2;250000000;.5;2E-07;-.125;-2E-06;4E-09\r\n" + std::string(line));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\r'), kCount + 1);

  // A session with nothing of channel 2, after an FFT run, opens it.
  waveforms = {};
  scope = {};
  scope.Channels[1].HasData = true;
  host.sweep_mode = false;
  ui.QueueOpenFileAnswer(first);
  files.OpenCsvFile();
  EXPECT_EQ(ui.open_requests().at(0).initial_path, folder.path());
  ASSERT_EQ(waveforms.Records[2].ByteCount, kCount);
  EXPECT_DOUBLE_EQ(waveforms.Shared.SampleRateK, 250000);
  EXPECT_EQ(testing_support::Fields(waveforms.Records[2].XIncrement, waveforms.Records[2].XOrigin,
                                    scope.Channels[2].Scale, scope.Channels[2].Offset,
                                    scope.TimebaseScale),
            "4e-09|-2e-06|0.5|-0.125|2e-07|");
  for (int i = 0; i < kCount; ++i) {
    ASSERT_NEAR(waveforms.Samples.Volts(2)[i], volts[i], 5e-10) << i;
    ASSERT_DOUBLE_EQ(waveforms.Samples.Time(2)[i], i * 4e-9 - 2e-6) << i;
  }
  // A stopped single-channel acquisition of channel 2, drawn by one sweep; the same sample rate
  // keeps the other channels.
  EXPECT_EQ(
      testing_support::Fields(
          scope.Channels[1].HasData, scope.TriggerSource, scope.TriggerSlope, scope.AcquireType,
          scope.Channels[2].Coupling, scope.Channels[2].Displayed, scope.Channels[2].HasData,
          scope.Channels[4].LastSample, host.displayed, host.cursors, host.zoom_mode,
          scope.ToolUpdateInProgress, host.sweep_mode, host.frames, host.sweeps),
      testing_support::Fields(true, "CHAN2", "POS", "NORM", "CSV", true, true, kCount - 1, 2, 2,
                              display::kZoomReset, false, true, 1, 1));
  EXPECT_EQ(tools.state_history(), (std::vector<ui::RecordingToolHost::StateChange>{
                                       {"ID_CH2", true}, {"ID_TG2", true}, {"ID_CSR2", true}}));

  const std::string second = folder.File("second.csv");
  ui.QueueSaveFileAnswer(second);
  files.SaveCsvFile();
  EXPECT_EQ(testing_support::ReadWholeFile(second), text);
}

// A head, then a body repeated, in small pieces so that line ends fall across reads; a read
// error once `fail_at` bytes have been read, when given.
class TextSource : public ByteSource {
 public:
  TextSource(std::string head, std::string body, std::int64_t repeats, std::int64_t fail_at)
      : head_(std::move(head)),
        body_(std::move(body)),
        fail_at_(fail_at),
        size_(head_.size() + body_.size() * repeats),
        piece_(repeats > 1 ? 65536 : 7) {}
  std::int64_t Read(char* data, std::size_t size) override {
    if (fail_at_ >= 0 && static_cast<std::int64_t>(offset_) >= fail_at_) return -1;
    const std::size_t n = std::min({size, piece_, size_ - offset_});
    for (std::size_t i = 0; i < n; ++i, ++offset_) {
      data[i] =
          offset_ < head_.size() ? head_[offset_] : body_[(offset_ - head_.size()) % body_.size()];
    }
    return static_cast<std::int64_t>(n);
  }

 private:
  std::string head_, body_;
  std::int64_t fail_at_;
  std::size_t size_, piece_;
  std::size_t offset_ = 0;
};

std::string Lines(int count, const std::string& line, const std::string& end = "\r\n") {
  std::string text;
  for (int i = 0; i < count; ++i) text += line + end;
  return text;
}

enum class Outcome { kLoaded, kFileError, kStopped };

TEST_F(CsvFilesTest, BadInputFailsStopsOrLoadsAsItShould) {
  const std::string header = "1;1000000;.5;.001;0;0;1E-06";
  std::string junk(4000, '\0');
  for (std::size_t i = 0; i < junk.size(); ++i) junk[i] = static_cast<char>(i * 7919 % 251);
  struct Case {
    const char* name;
    std::string head;
    Outcome outcome;
    std::int32_t count;  // of the displayed channel 1 afterwards (50 before)
    double last = 0;     // volts of the last sample loaded
    std::string body = "";
    std::int64_t repeats = 0;
    std::int64_t fail_at = -1;
  };
  const Case cases[] = {
      {"missing file", "", Outcome::kFileError, 0},
      {"10 data lines", header + "\r\n" + Lines(10, "0;1"), Outcome::kFileError, 0},
      {"11 data lines", header + "\r\n" + Lines(11, "1.5e-6;.25"), Outcome::kLoaded, 11, 0.25},
      {"a line without ;", header + "\r\n" + Lines(11, "0;1") + "0 1\r\n", Outcome::kFileError, 0},
      {"binary junk", junk, Outcome::kFileError, 0},
      {"junk after the header", header + "\r\n" + junk, Outcome::kFileError, 0},
      {"decimal comma", "1;1000000;0,5;0,001;0;0;0,000001\r\n" + Lines(12, "0,000001;-0,25"),
       Outcome::kLoaded, 12, -0.25},
      {"CR only", header + "\r" + Lines(11, "0;2.5", "\r"), Outcome::kLoaded, 11, 2.5},
      {"LF only", header + "\n" + Lines(11, "0;2.5", "\n"), Outcome::kLoaded, 11, 2.5},
      {"byte-order mark", "\xEF\xBB\xBF" + header + "\r\n" + Lines(11, "0;2.5"), Outcome::kLoaded,
       11, 2.5},
      {"six header fields", "1;1000000;.5;.001;0;0\r\n" + Lines(11, "0;1"), Outcome::kFileError, 0},
      {"empty line", header + "\r\n" + Lines(11, "0;1") + "  \r\n" + Lines(3, "0;1"),
       Outcome::kStopped, 50},
      // Short lines: the reading stops at the limit of lines, after 25 MB.
      {"200 MB", header + "\r\n", Outcome::kFileError, 0, 0, "0;1\r\n", (200 << 20) / 5},
      {"read error", header + "\r\n" + Lines(20, "0;1"), Outcome::kFileError, 0, 0, "", 0, 100},
      // The header's rate has another whole part than the x increment's: channel 3 is discarded.
      {"another rate", "1;1001000;.5;.001;0;0;1E-06\r\n" + Lines(11, "0;1"), Outcome::kLoaded, 11,
       1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    waveforms = {};
    host = {};
    ui.ClearRecords();
    waveforms.Records[1].ByteCount = 50;  // a record from before
    waveforms.Samples.Grow(50);
    scope.Channels[3].HasData = true;
    if (c.head.empty()) {
      files.OpenCsvPath(folder.File("missing.csv"));
    } else {
      TextSource source(c.head, c.body, c.repeats, c.fail_at);
      files.LoadCsv(source);
    }
    EXPECT_EQ(ui.status_lines(), c.outcome == Outcome::kFileError
                                     ? std::vector<std::string>{"FILE ERROR!"}
                                     : std::vector<std::string>{});
    EXPECT_EQ(host.sweeps, c.outcome == Outcome::kLoaded ? 1 : 0);
    EXPECT_EQ(waveforms.Records[1].ByteCount, c.count);
    EXPECT_EQ(scope.Channels[3].HasData, std::string(c.name) != "another rate");
    if (c.outcome != Outcome::kFileError) {
      EXPECT_DOUBLE_EQ(waveforms.Records[1].XIncrement, 1e-6);  // the header took effect
    }
    if (c.outcome == Outcome::kLoaded) {
      EXPECT_DOUBLE_EQ(waveforms.Samples.Volts(1)[c.count - 1], c.last);
      EXPECT_DOUBLE_EQ(scope.Channels[1].Scale, 0.5);
    }
  }
}

}  // namespace
}  // namespace quarvelo::files
