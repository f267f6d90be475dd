// Saving one channel's record as a CSV waveform file and loading one back, so that a record
// can be viewed, measured and analysed later with no instrument connected.
#ifndef QUARVELO_FILES_CSV_FILES_H_
#define QUARVELO_FILES_CSV_FILES_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "acquisition/scope_state.h"
#include "acquisition/waveform_record.h"
#include "files/line_reader.h"
#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"

namespace quarvelo::files {

// A file with more data lines than this is refused: it is more than the largest record a
// capture can hold (the binary area), and loading it would take memory for nothing.
inline constexpr std::int32_t kMaxCsvSamples = 5'000'000;
// Fewer data lines than this are not a record.
inline constexpr std::int32_t kMinCsvSamples = 11;

// What the files need from the main window's higher layers: the sweep cycle's flag and sweep,
// the spectrum's channel, and the view values the screen drawing keeps.
class CsvHost {
 public:
  virtual ~CsvHost() = default;
  virtual bool SweepMode() const = 0;
  // The time-domain view is in use. The sweep reads its trigger source from ScopeState, and
  // the drawing grows its point tables as it draws.
  virtual void SetSweepMode() = 0;
  // The channel of the last FFT run.
  virtual std::int16_t SpectrumChannel() const = 0;
  virtual std::int16_t DisplayedChannel() const = 0;
  virtual void SetDisplayedChannel(std::int16_t channel) = 0;
  // Both mouse cursors measure on `channel`.
  virtual void SetCursorChannel(std::int16_t channel) = 0;
  virtual void SetLastZoomMode(int mode) = 0;
  // Clears the drawing surface and draws the empty frame.
  virtual void DrawEmptyFrame() = 0;
  // One sweep (`ID_Sweep`); with remote control off it analyses and draws what is loaded.
  virtual void RunSweep() = 0;
};

struct CsvRecords {
  acquisition::ScopeState& scope;
  acquisition::WaveformRecords& waveforms;
};

class CsvFiles {
 public:
  // `data_folder` is read at every call (it is known only after start-up).
  CsvFiles(const CsvRecords& records, CsvHost& host, ui::UiServices& ui, ui::ToolHost& tools,
           const std::string& data_folder);
  CsvFiles(const CsvFiles&) = delete;
  CsvFiles& operator=(const CsvFiles&) = delete;

  // "ID_Save": the displayed channel (or, after an FFT run, the spectrum's) to a file the user
  // chooses.
  void SaveCsvFile();
  // "ID_Open": a file the user chooses into the channel its header names.
  void OpenCsvFile();

  // The parts of the two operations after their dialogs.
  // False when the file could not be written (the user has been told).
  bool WriteCsvFile(const std::string& path, std::int16_t channel);
  void OpenCsvPath(const std::string& path);
  // `line_buffer` bounds the longest line read (a file's lines are far shorter than the default).
  void LoadCsv(ByteSource& source, std::size_t line_buffer = LineReader::kDefaultBufferSize);

 private:
  void FileError();
  void RestoreSingleChannelState(std::int16_t channel, std::int32_t count);

  CsvRecords records_;
  CsvHost& host_;
  ui::UiServices& ui_;
  ui::ToolHost& tools_;
  const std::string& data_folder_;
};

}  // namespace quarvelo::files

#endif  // QUARVELO_FILES_CSV_FILES_H_
