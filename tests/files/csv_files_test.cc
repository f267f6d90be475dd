// Saving and opening CSV waveform files through the recording UI's dialogs.
#include "files/csv_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "acquisition/capture.h"
#include "display/view_state.h"
#include "platform/ui/recording_ui.h"
#include "tests/files/files_test_support.h"

namespace quarvelo::files {
namespace {

using testing_support::ReadWholeFile;
using testing_support::TempFolder;
using testing_support::WriteWholeFile;

// Keeps the view values as the main window does and counts the drawing and the sweeps.
class RecordingCsvHost : public CsvHost {
 public:
  bool SweepMode() const override { return sweep_mode; }
  void SetSweepMode() override { sweep_mode = true; }
  std::int16_t SpectrumChannel() const override { return spectrum_channel; }
  std::int16_t DisplayedChannel() const override { return displayed_channel; }
  void SetDisplayedChannel(std::int16_t channel) override { displayed_channel = channel; }
  void SetCursorChannel(std::int16_t channel) override { cursor_channel = channel; }
  void SetLastZoomMode(int mode) override { last_zoom_mode = mode; }
  void DrawEmptyFrame() override { ++frames; }
  void RunSweep() override { ++sweeps; }

  bool sweep_mode = true;
  std::int16_t spectrum_channel = 1;
  std::int16_t displayed_channel = 1;
  std::int16_t cursor_channel = 1;
  int last_zoom_mode = display::kZoomIn;
  int frames = 0;
  int sweeps = 0;
};

class CsvFilesTest : public testing::Test {
 protected:
  // A capture of `count` samples of a sine on `channel`, as the capture converts its codes.
  void Capture(int channel, std::int32_t count) {
    std::vector<std::uint8_t> codes(static_cast<std::size_t>(count));
    for (std::int32_t i = 0; i < count; ++i) {
      codes[static_cast<std::size_t>(i)] =
          static_cast<std::uint8_t>(128 + std::lround(100 * std::sin(i * 0.05)));
    }
    acquisition::WaveformRecord& record = waveforms.Records[channel];
    record.XIncrement = 4e-9;
    record.XOrigin = -2e-6;
    record.YOrigin = 0.25;
    record.YReference = 128;
    record.ByteCount = count;
    waveforms.Shared.YIncrement = 0.0123;
    waveforms.Shared.SampleRateK = 250000;
    scope.Channels[channel].Scale = 0.5;
    scope.Channels[channel].Offset = -0.125;
    scope.Channels[channel].HasData = true;
    scope.TimebaseScale = 2e-7;
    waveforms.Samples.Grow(count);
    acquisition::ConvertSamples(codes, record.XIncrement, record.XOrigin, record.YReference,
                                waveforms.Shared.YIncrement, record.YOrigin,
                                waveforms.Samples.Raw(channel), waveforms.Samples.Time(channel),
                                waveforms.Samples.Volts(channel));
    host.displayed_channel = static_cast<std::int16_t>(channel);
  }

  TempFolder folder;
  acquisition::ScopeState scope;
  acquisition::WaveformRecords waveforms;
  RecordingCsvHost host;
  ui::RecordingUi ui;
  ui::RecordingToolHost tools;
  std::string data_folder = folder.path();
  CsvFiles files{{scope, waveforms}, host, ui, tools, data_folder};
};

TEST_F(CsvFilesTest, SavedFileOpensWithTheSameRecordAndSavesAgainUnchanged) {
  Capture(2, 1000);
  const std::vector<double> volts(waveforms.Samples.Volts(2).begin(),
                                  waveforms.Samples.Volts(2).begin() + 1000);
  const std::string first = folder.File("first.csv");
  ui.QueueSaveFileAnswer(first);
  files.SaveCsvFile();
  ASSERT_EQ(ui.save_requests().size(), 1u);
  EXPECT_EQ(ui.save_requests()[0].title, "Save CSV File");
  EXPECT_EQ(ui.save_requests()[0].initial_path, folder.File("waveform2.csv"));
  const std::string text = ReadWholeFile(first);
  char first_volts[64];
  std::snprintf(first_volts, sizeof first_volts, "%.9f", volts[0]);
  EXPECT_EQ(text.substr(0, text.find("\r\n", text.find("\r\n") + 2) + 2),
            std::string("2;250000000;.5;2E-07;-.125;-2E-06;4E-09\r\n-0.000002000;") + first_volts +
                "\r\n");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1001);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\r'), 1001);

  // Another session with nothing captured opens it.
  waveforms = {};
  scope = {};
  scope.Channels[1].HasData = true;
  host = {};
  host.sweep_mode = false;  // after an FFT run
  ui.QueueOpenFileAnswer(first);
  files.OpenCsvFile();
  EXPECT_EQ(ui.open_requests().at(0).title, "Open CSV File");
  EXPECT_EQ(ui.open_requests().at(0).initial_path, folder.path());
  EXPECT_EQ(ui.status(), "");
  ASSERT_EQ(waveforms.Records[2].ByteCount, 1000);
  EXPECT_EQ(waveforms.Records[2].XIncrement, 4e-9);
  EXPECT_EQ(waveforms.Records[2].XOrigin, -2e-6);
  EXPECT_DOUBLE_EQ(waveforms.Shared.SampleRateK, 250000);
  EXPECT_EQ(scope.Channels[2].Scale, 0.5);
  EXPECT_EQ(scope.Channels[2].Offset, -0.125);
  EXPECT_EQ(scope.TimebaseScale, 2e-7);
  for (int i = 0; i < 1000; ++i) {
    ASSERT_NEAR(waveforms.Samples.Volts(2)[i], volts[i], 5e-10) << i;
    ASSERT_DOUBLE_EQ(waveforms.Samples.Time(2)[i], i * 4e-9 - 2e-6) << i;
  }
  // The restored state of a stopped single-channel acquisition, and its sweep.
  EXPECT_TRUE(scope.Channels[1].HasData);  // the same sample rate keeps the other channels
  EXPECT_EQ(host.displayed_channel, 2);
  EXPECT_EQ(scope.TriggerSource, "CHAN2");
  EXPECT_EQ(scope.TriggerChannel, 2);
  EXPECT_EQ(scope.TriggerSlope, "POS");
  EXPECT_EQ(scope.AcquireType, "NORM");
  EXPECT_EQ(scope.Channels[2].Coupling, "CSV");
  EXPECT_TRUE(scope.Channels[2].Displayed && scope.Channels[2].HasData);
  EXPECT_EQ(scope.Channels[4].LastSample, 999);
  EXPECT_EQ(host.cursor_channel, 2);
  EXPECT_EQ(host.last_zoom_mode, display::kZoomReset);
  EXPECT_EQ((std::vector<ui::RecordingToolHost::StateChange>(tools.state_history())),
            (std::vector<ui::RecordingToolHost::StateChange>{
                {"ID_CH2", true}, {"ID_TG2", true}, {"ID_CSR2", true}}));
  EXPECT_FALSE(scope.ToolUpdateInProgress);
  EXPECT_TRUE(host.sweep_mode);
  EXPECT_EQ(host.frames, 1);
  EXPECT_EQ(host.sweeps, 1);

  // The loaded record has no raw codes: its loaded volts are saved.
  const std::string second = folder.File("second.csv");
  ui.QueueSaveFileAnswer(second);
  files.SaveCsvFile();
  EXPECT_EQ(ReadWholeFile(second), text);
}

TEST_F(CsvFilesTest, SavingChoosesTheChannelAndRefusesAnEmptyOne) {
  Capture(3, 20);
  host.sweep_mode = false;  // after an FFT run the spectrum's channel is saved
  host.spectrum_channel = 4;
  files.SaveCsvFile();
  ASSERT_EQ(ui.messages().size(), 1u);
  EXPECT_EQ(ui.messages()[0].text, "No Data to save");
  EXPECT_EQ(ui.messages()[0].icon, ui::MessageIcon::kCritical);
  EXPECT_TRUE(ui.save_requests().empty());

  host.spectrum_channel = 3;
  files.SaveCsvFile();  // cancelled: nothing written
  ASSERT_EQ(ui.save_requests().size(), 1u);
  EXPECT_EQ(ui.save_requests()[0].initial_path, folder.File("waveform3.csv"));

  ui.QueueSaveFileAnswer(folder.path() + "/no-such-folder/x.csv");
  files.SaveCsvFile();
  ASSERT_EQ(ui.messages().size(), 2u);
  EXPECT_NE(ui.messages()[1].text.find("could not be written"), std::string::npos);
}

// The header's rate and the rate its x increment implies: another whole part discards the
// other channels' records.
TEST_F(CsvFilesTest, AnotherSampleRateDiscardsTheOtherChannels) {
  for (const auto& [rate, others_kept] :
       {std::pair{"250000000", true}, {"250000999", true}, {"250001000", false}}) {
    scope.Channels[1].HasData = true;
    std::string text = std::string("2;") + rate + ";1;1;0;0;4E-09\r\n";
    for (int i = 0; i < 11; ++i) text += "0;0.5\r\n";
    WriteWholeFile(folder.File("rate.csv"), text);
    files.OpenCsvPath(folder.File("rate.csv"));
    EXPECT_EQ(scope.Channels[1].HasData, others_kept) << rate;
    EXPECT_DOUBLE_EQ(waveforms.Shared.SampleRateK, 250000) << rate;
  }
}

// A head, then a body repeated, in small pieces so that line ends fall across reads;
// a read error once `fail_at` bytes have been read, when given.
class TextSource : public ByteSource {
 public:
  TextSource(std::string head, std::string body, std::int64_t repeats, std::int64_t fail_at,
             std::size_t piece = 7)
      : head_(std::move(head)),
        body_(std::move(body)),
        repeats_(repeats),
        fail_at_(fail_at),
        piece_(piece) {}
  std::int64_t Read(char* data, std::size_t size) override {
    if (fail_at_ >= 0 && offset_ >= fail_at_) return -1;
    std::size_t n = 0;
    while (n < size && n < piece_) {
      if (offset_ < static_cast<std::int64_t>(head_.size())) {
        data[n++] = head_[static_cast<std::size_t>(offset_++)];
        continue;
      }
      const auto at = static_cast<std::size_t>(offset_) - head_.size();
      if (body_.empty() || at / body_.size() >= static_cast<std::size_t>(repeats_)) break;
      data[n++] = body_[at % body_.size()];
      ++offset_;
    }
    return static_cast<std::int64_t>(n);
  }

 private:
  std::string head_;
  std::string body_;
  std::int64_t repeats_;
  std::int64_t fail_at_;
  std::size_t piece_;
  std::int64_t offset_ = 0;
};

enum class Outcome { kLoaded, kFileError, kStopped };

struct BadInput {
  const char* name;
  std::string text;  // the file, or the pattern of a source
  Outcome outcome;
  std::int32_t count;     // of the displayed channel afterwards
  double last_volts = 0;  // of a loaded record
  enum { kText, kMissing, kFailing, kHuge } kind = kText;
};

std::string Lines(int count, const std::string& line, const std::string& end = "\r\n") {
  std::string text;
  for (int i = 0; i < count; ++i) text += line + end;
  return text;
}

const std::string kHeader = "1;1000000;.5;.001;0;0;1E-06";

TEST_F(CsvFilesTest, BadInputFailsStopsOrLoadsAsItShould) {
  std::string junk(4000, '\0');
  for (std::size_t i = 0; i < junk.size(); ++i) junk[i] = static_cast<char>((i * 7919) % 251);
  const BadInput cases[] = {
      {"missing file", "", Outcome::kFileError, 0, 0, BadInput::kMissing},
      {"10 data lines", kHeader + "\r\n" + Lines(10, "0;1"), Outcome::kFileError, 0},
      {"11 data lines", kHeader + "\r\n" + Lines(11, "0;1"), Outcome::kLoaded, 11, 1},
      {"a line without ;", kHeader + "\r\n" + Lines(11, "0;1") + "0 1\r\n", Outcome::kFileError, 0},
      {"binary junk", junk, Outcome::kFileError, 0},
      {"junk after the header", kHeader + "\r\n" + junk, Outcome::kFileError, 0},
      {"decimal comma", "1;1000000;0,5;0,001;0;0;0,000001\r\n" + Lines(12, "0,000001;-0,25"),
       Outcome::kLoaded, 12, -0.25},
      {"CR only", kHeader + "\r" + Lines(11, "0;2.5", "\r"), Outcome::kLoaded, 11, 2.5},
      {"LF only", kHeader + "\n" + Lines(11, "0;2.5", "\n"), Outcome::kLoaded, 11, 2.5},
      {"byte-order mark", "\xEF\xBB\xBF" + kHeader + "\r\n" + Lines(11, "0;2.5"), Outcome::kLoaded,
       11, 2.5},
      {"six header fields", "1;1000000;.5;.001;0;0\r\n" + Lines(11, "0;1"), Outcome::kFileError, 0},
      {"empty line", kHeader + "\r\n" + Lines(11, "0;1") + "  \r\n" + Lines(3, "0;1"),
       Outcome::kStopped, 50},
      {"200 MB", "0.000001000;0.250000000\r\n", Outcome::kFileError, 0, 0, BadInput::kHuge},
      {"read error", kHeader + "\r\n" + Lines(20, "0;1"), Outcome::kFileError, 0, 0,
       BadInput::kFailing},
  };
  for (const BadInput& c : cases) {
    SCOPED_TRACE(c.name);
    waveforms = {};
    scope = {};
    host = {};
    ui.ClearRecords();
    waveforms.Records[1].ByteCount = 50;  // a record from before
    waveforms.Samples.Grow(50);
    if (c.kind == BadInput::kMissing) {
      files.OpenCsvPath(folder.File("missing.csv"));
    } else {
      const bool huge = c.kind == BadInput::kHuge;  // 200 MB of data lines after the header
      TextSource source(huge ? kHeader + "\r\n" : c.text, huge ? c.text : "",
                        (std::int64_t{200} << 20) / static_cast<std::int64_t>(c.text.size()),
                        c.kind == BadInput::kFailing ? 100 : -1, huge ? 1 << 16 : 7);
      files.LoadCsv(source);
    }
    EXPECT_EQ(ui.status_lines(), c.outcome == Outcome::kFileError
                                     ? std::vector<std::string>{"FILE ERROR!"}
                                     : std::vector<std::string>{});
    EXPECT_EQ(host.sweeps, c.outcome == Outcome::kLoaded ? 1 : 0);
    EXPECT_EQ(waveforms.Records[1].ByteCount, c.count);
    if (c.outcome == Outcome::kLoaded) {
      EXPECT_DOUBLE_EQ(waveforms.Samples.Volts(1)[c.count - 1], c.last_volts);
      EXPECT_DOUBLE_EQ(waveforms.Records[1].XIncrement, 1e-6);
      EXPECT_DOUBLE_EQ(scope.Channels[1].Scale, 0.5);
    }
    if (c.outcome == Outcome::kStopped) {
      EXPECT_DOUBLE_EQ(waveforms.Records[1].XIncrement, 1e-6);
    }
  }
}

}  // namespace
}  // namespace quarvelo::files
