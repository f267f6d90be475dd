// CSV waveform files as a user may open them: any bytes, read in pieces of any size, through
// the line reader (also with a small buffer, so that over-long lines are met), the header
// parser, the number reader and the whole load into the records. A load that succeeds must
// leave a record the drawing can use.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "acquisition/scope_state.h"
#include "acquisition/waveform_record.h"
#include "files/csv_files.h"
#include "files/csv_text.h"
#include "files/line_reader.h"
#include "fuzz/fuzz_input.h"
#include "platform/ui/recording_ui.h"

namespace quarvelo::files {
namespace {

class PieceSource : public ByteSource {
 public:
  PieceSource(std::string_view data, std::size_t piece) : data_(data), piece_(piece) {}
  std::int64_t Read(char* out, std::size_t size) override {
    const std::size_t n = std::min({size, piece_, data_.size()});
    if (n > 0) std::memcpy(out, data_.data(), n);
    data_.remove_prefix(n);
    return static_cast<std::int64_t>(n);
  }

 private:
  std::string_view data_;
  std::size_t piece_;
};

class NullCsvHost : public CsvHost {
 public:
  bool SweepMode() const override { return true; }
  void SetSweepMode() override {}
  std::int16_t SpectrumChannel() const override { return 1; }
  std::int16_t DisplayedChannel() const override { return displayed; }
  void SetDisplayedChannel(std::int16_t channel) override { displayed = channel; }
  void SetCursorChannel(std::int16_t) override {}
  void SetLastZoomMode(int) override {}
  void DrawEmptyFrame() override {}
  void RunSweep() override { ++sweeps; }

  std::int16_t displayed = 1;
  int sweeps = 0;
};

}  // namespace
}  // namespace quarvelo::files

// Input: the read size, then the file's bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quarvelo;
  using namespace quarvelo::files;
  fuzz::FuzzInput input(data, size);
  const std::size_t piece = 1 + input.Byte() % 97;
  const std::string_view text = input.RestText();

  {
    PieceSource source(text, piece);
    LineReader reader(source, 16 + piece);
    std::string_view line;
    bool first = true;
    while (reader.Next(&line) == LineReader::Result::kLine) {
      QUARVELO_FUZZ_CHECK(line.find_first_of("\r\n") == std::string_view::npos);
      if (first) ParseCsvHeader(line);
      CsvNumber(line);
      first = false;
    }
  }

  acquisition::ScopeState scope;
  acquisition::WaveformRecords waveforms;
  NullCsvHost host;
  ui::RecordingUi ui;
  ui::RecordingToolHost tools;
  const std::string data_folder = "/nonexistent";
  CsvFiles files({scope, waveforms}, host, ui, tools, data_folder);
  PieceSource source(text, piece);
  // A few kilobytes hold every line of an input (at most 4096 bytes), and spare the run the
  // default megabyte cleared for every input.
  files.LoadCsv(source, 8192);
  if (host.sweeps > 0) {
    const std::int16_t channel = host.displayed;
    QUARVELO_FUZZ_CHECK(channel >= 1 && channel <= acquisition::kMaxChannels);
    const std::int32_t count = waveforms.Records[channel].ByteCount;
    QUARVELO_FUZZ_CHECK(count >= kMinCsvSamples && count <= kMaxCsvSamples);
    QUARVELO_FUZZ_CHECK(waveforms.Samples.Volts(channel).size() >= static_cast<std::size_t>(count));
  }
  return 0;
}
