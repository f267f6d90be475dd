#include "files/csv_files.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

#include "display/view_state.h"
#include "files/csv_text.h"
#include "link/tool_update_guard.h"

namespace quarvelo::files {
namespace {

constexpr char kFilter[] = "CSV Files(*.csv)|*.csv";
constexpr char kFileError[] = "FILE ERROR!";
// Output is collected in pieces of this size before it is written.
constexpr std::size_t kWriteChunk = std::size_t{1} << 20;

std::string InFolder(const std::string& folder, const std::string& name) {
  if (folder.empty()) return name;
  return folder.back() == '/' ? folder + name : folder + "/" + name;
}

std::string_view Trimmed(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view WithoutByteOrderMark(std::string_view line) {
  constexpr std::string_view kBom = "\xEF\xBB\xBF";
  if (line.substr(0, kBom.size()) == kBom) line.remove_prefix(kBom.size());
  return line;
}

// The whole part of a rate in kSa/s. 1 / x increment lands a hair below a whole rate as often
// as on it (1 / 4E-09 / 1000 is 249999.99999999997): that hair is not another rate.
double WholeRate(double rate_k) { return std::trunc(rate_k + std::fabs(rate_k) * 1e-12); }

bool ValidChannel(std::int32_t channel) {
  return channel >= 1 && channel <= acquisition::kMaxChannels;
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

CsvFiles::CsvFiles(const CsvRecords& records, CsvHost& host, ui::UiServices& ui,
                   ui::ToolHost& tools, const std::string& data_folder)
    : records_(records), host_(host), ui_(ui), tools_(tools), data_folder_(data_folder) {}

void CsvFiles::SaveCsvFile() {
  const std::int16_t channel =
      host_.SweepMode() ? host_.DisplayedChannel() : host_.SpectrumChannel();
  if (!ValidChannel(channel) || records_.waveforms.Records[channel].ByteCount <= 0) {
    ui_.ShowMessage("No Data to save", ui::MessageIcon::kCritical, ui::MessageButtons::kOk);
    return;
  }
  const std::optional<std::string> path =
      ui_.AskSaveFile({"Save CSV File", kFilter,
                       InFolder(data_folder_, "waveform" + std::to_string(channel) + ".csv")});
  if (!path.has_value()) return;
  WriteCsvFile(*path, channel);
}

bool CsvFiles::WriteCsvFile(const std::string& path, std::int16_t channel) {
  if (!ValidChannel(channel)) return false;
  const acquisition::WaveformRecord& record = records_.waveforms.Records[channel];
  const acquisition::ChannelSettings& settings = records_.scope.Channels[channel];
  const acquisition::SampleStorage& samples = records_.waveforms.Samples;
  const std::int32_t count = std::min(record.ByteCount, samples.capacity());
  // The volts the capture computed from the raw codes with this channel's own y increment, or
  // the volts a file brought (a loaded record has no raw codes).
  const std::span<const double> volts = samples.Volts(channel);

  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "wb"));
  bool written = file != nullptr;
  if (written) {
    const std::string header = CsvHeaderLine({channel, records_.waveforms.Shared.SampleRateK * 1000,
                                              settings.Scale, records_.scope.TimebaseScale,
                                              settings.Offset, record.XOrigin, record.XIncrement}) +
                               "\r\n";
    written = std::fwrite(header.data(), 1, header.size(), file.get()) == header.size();
    std::vector<char> buffer(kWriteChunk + 2 * kFixed9MaxChars + 3);
    char* const begin = buffer.data();
    char* out = begin;
    for (std::int32_t i = 0; i < count && written; ++i) {
      out = AppendFixed9(i * record.XIncrement + record.XOrigin, out);
      *out++ = ';';
      out = AppendFixed9(volts[static_cast<std::size_t>(i)], out);
      *out++ = '\r';
      *out++ = '\n';
      if (static_cast<std::size_t>(out - begin) >= kWriteChunk || i == count - 1) {
        const auto size = static_cast<std::size_t>(out - begin);
        written = std::fwrite(begin, 1, size, file.get()) == size;
        out = begin;
      }
    }
    written = std::fclose(file.release()) == 0 && written;
  }
  if (!written) {
    ui_.ShowMessage("The file " + path + " could not be written.", ui::MessageIcon::kCritical,
                    ui::MessageButtons::kOk);
  }
  return written;
}

void CsvFiles::OpenCsvFile() {
  const std::optional<std::string> path = ui_.AskOpenFile({"Open CSV File", kFilter, data_folder_});
  if (!path.has_value()) return;
  OpenCsvPath(*path);
}

void CsvFiles::OpenCsvPath(const std::string& path) {
  FileSource source(path);
  if (!source.is_open()) {
    FileError();
    return;
  }
  LoadCsv(source);
}

void CsvFiles::LoadCsv(ByteSource& source, std::size_t line_buffer) {
  host_.DrawEmptyFrame();
  LineReader reader(source, line_buffer);
  std::string_view line;
  if (reader.Next(&line) != LineReader::Result::kLine) {
    FileError();
    return;
  }
  const std::optional<CsvHeader> header = ParseCsvHeader(WithoutByteOrderMark(line));
  // A channel outside 1..4 has no record to load into, and an x increment that is not positive
  // gives no time axis: the header is not one this program wrote.
  if (!header.has_value() || !ValidChannel(header->channel) ||
      !(header->x_increment > 0 && std::isfinite(header->x_increment))) {
    FileError();
    return;
  }

  acquisition::ScopeState& scope = records_.scope;
  acquisition::WaveformRecords& waveforms = records_.waveforms;
  const auto channel = static_cast<std::int16_t>(header->channel);
  acquisition::WaveformRecord& record = waveforms.Records[channel];
  acquisition::ChannelSettings& settings = scope.Channels[channel];
  host_.SetDisplayedChannel(channel);
  waveforms.Shared.SampleRateK = header->sample_rate / 1000;
  settings.Scale = header->scale;
  scope.TimebaseScale = header->timebase_scale;
  settings.Offset = header->offset;
  record.XOrigin = header->x_origin;
  record.XIncrement = header->x_increment;

  // Records of another sample rate no longer share the loaded record's time base.
  const double rate = 1 / header->x_increment / 1000;
  if (WholeRate(waveforms.Shared.SampleRateK) != WholeRate(rate)) {
    for (int c = 1; c <= acquisition::kMaxChannels; ++c) scope.Channels[c].HasData = false;
  }
  waveforms.Shared.SampleRateK = rate;
  scope.SampleRate = rate;

  std::vector<double> values;
  LineReader::Result result;
  while ((result = reader.Next(&line)) == LineReader::Result::kLine) {
    const std::string_view data = Trimmed(line);
    if (data.empty()) return;  // the end of the data: nothing further is loaded
    const std::size_t semicolon = data.find(';');
    if (semicolon == std::string_view::npos) {
      FileError();
      return;
    }
    if (values.size() == static_cast<std::size_t>(kMaxCsvSamples)) {
      FileError();
      ui_.ShowMessage("The file holds more than " + std::to_string(kMaxCsvSamples) +
                          " samples, more than a record can hold.",
                      ui::MessageIcon::kCritical, ui::MessageButtons::kOk);
      return;
    }
    // The time column is not used: the time axis is rebuilt from the header.
    values.push_back(CsvNumber(data.substr(semicolon + 1)));
  }
  if (result == LineReader::Result::kError ||
      values.size() < static_cast<std::size_t>(kMinCsvSamples)) {
    FileError();
    return;
  }

  const auto count = static_cast<std::int32_t>(values.size());
  record.ByteCount = count;
  waveforms.Shared.LastIndex = count - 1;
  waveforms.Samples.Grow(count);
  const std::span<double> time = waveforms.Samples.Time(channel);
  const std::span<double> volts = waveforms.Samples.Volts(channel);
  for (std::int32_t i = 0; i < count; ++i) {
    time[static_cast<std::size_t>(i)] = i * record.XIncrement + record.XOrigin;
  }
  std::copy(values.begin(), values.end(), volts.begin());
  values = {};  // the table is not needed during the sweep

  RestoreSingleChannelState(channel, count);
  host_.SetSweepMode();
  host_.RunSweep();
}

void CsvFiles::RestoreSingleChannelState(std::int16_t channel, std::int32_t count) {
  acquisition::ScopeState& scope = records_.scope;
  scope.TriggerChannel = channel;
  scope.TriggerSource = "CHAN" + std::to_string(channel);
  scope.TriggerSlope = "POS";
  scope.TriggerLevel = 0;
  scope.TimebasePosition = 0;
  scope.AcquireType = "NORM";
  scope.AcquireCount = 1;

  acquisition::ChannelSettings& settings = scope.Channels[channel];
  settings.Coupling = "CSV";  // marks a record that came from a file
  settings.BandwidthLimit = 0;
  settings.Displayed = true;
  settings.HasData = true;

  host_.SetCursorChannel(channel);
  const int channels = std::clamp<int>(scope.ChannelCount, 1, acquisition::kMaxChannels);
  for (int c = 1; c <= channels; ++c) {
    scope.Channels[c].FirstSample = 0;
    scope.Channels[c].LastSample = count - 1;
  }
  settings.FirstSample = 0;
  settings.LastSample = count - 1;
  host_.SetLastZoomMode(display::kZoomReset);

  link::ToolUpdateGuard guard(scope.ToolUpdateInProgress);
  const std::string n = std::to_string(channel);
  tools_.SetToolState("ID_CH" + n, true);
  tools_.SetToolState("ID_TG" + n, true);
  tools_.SetToolState("ID_CSR" + n, true);  // the cursors' channel
}

void CsvFiles::FileError() {
  ui_.ShowStatus(kFileError);
  const std::int16_t channel = host_.DisplayedChannel();
  if (!ValidChannel(channel)) return;
  records_.waveforms.Records[channel].ByteCount = 0;
  records_.scope.Channels[channel].HasData = false;
}

}  // namespace quarvelo::files
