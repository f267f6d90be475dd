#include "files/line_reader.h"

#include <cstring>

namespace quarvelo::files {

FileSource::FileSource(const std::string& path) : file_(std::fopen(path.c_str(), "rb")) {}

std::int64_t FileSource::Read(char* data, std::size_t size) {
  const std::size_t count = std::fread(data, 1, size, file_.get());
  if (count == 0 && std::ferror(file_.get())) return -1;
  return static_cast<std::int64_t>(count);
}

LineReader::LineReader(ByteSource& source, std::size_t buffer_size)
    : source_(source), buffer_(buffer_size) {}

bool LineReader::Fill() {
  if (at_end_ || failed_) return false;
  if (begin_ > 0) {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  if (end_ == buffer_.size()) return false;
  const std::int64_t count = source_.Read(buffer_.data() + end_, buffer_.size() - end_);
  if (count < 0) {
    failed_ = true;
    return false;
  }
  if (count == 0) {
    at_end_ = true;
    return false;
  }
  end_ += static_cast<std::size_t>(count);
  return true;
}

LineReader::Result LineReader::Next(std::string_view* line) {
  std::size_t scanned = 0;  // bytes of the current line already searched for a line end
  for (;;) {
    if (skip_lf_ && begin_ < end_) {
      if (buffer_[begin_] == '\n') ++begin_;
      skip_lf_ = false;
    }
    if (!skip_lf_) {
      const char* start = buffer_.data() + begin_;
      const std::size_t available = end_ - begin_;
      for (std::size_t i = scanned; i < available; ++i) {
        const char c = start[i];
        if (c != '\n' && c != '\r') continue;
        *line = std::string_view(start, i);
        begin_ += i + 1;
        skip_lf_ = c == '\r';
        return Result::kLine;
      }
      scanned = available;
    }
    if (!Fill()) {
      if (failed_ || (!at_end_ && end_ - begin_ == buffer_.size())) return Result::kError;
      if (begin_ == end_) return Result::kEnd;
      // The last line has no line end.
      *line = std::string_view(buffer_.data() + begin_, end_ - begin_);
      begin_ = end_;
      return Result::kLine;
    }
  }
}

}  // namespace quarvelo::files
