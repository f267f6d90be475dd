// Reading a text file line by line in large pieces, with whatever line ends it has: CR LF, LF
// alone or CR alone. The memory used is bounded by the buffer, whatever the file's size.
#ifndef QUARVELO_FILES_LINE_READER_H_
#define QUARVELO_FILES_LINE_READER_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quarvelo::files {

// Where the bytes come from.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Reads up to `size` bytes; returns how many, 0 at the end, -1 on a read error.
  virtual std::int64_t Read(char* data, std::size_t size) = 0;
};

// A file opened for reading; closed when the source is destroyed.
class FileSource : public ByteSource {
 public:
  explicit FileSource(const std::string& path);
  bool is_open() const { return file_ != nullptr; }
  std::int64_t Read(char* data, std::size_t size) override;

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Closer> file_;
};

class LineReader {
 public:
  enum class Result { kLine, kEnd, kError };

  static constexpr std::size_t kDefaultBufferSize = std::size_t{1} << 20;

  explicit LineReader(ByteSource& source, std::size_t buffer_size = kDefaultBufferSize);

  // The next line without its line end, valid until the next call. A line longer than the
  // buffer, and a failed read, give kError.
  Result Next(std::string_view* line);

 private:
  // Moves the unread rest to the front and reads more after it; false at the end or on error.
  bool Fill();

  ByteSource& source_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  // first unread byte
  std::size_t end_ = 0;    // one past the last byte read
  bool at_end_ = false;
  bool failed_ = false;
  bool skip_lf_ = false;  // the previous line ended in a CR whose LF may follow
};

}  // namespace quarvelo::files

#endif  // QUARVELO_FILES_LINE_READER_H_
