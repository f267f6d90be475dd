// A temporary folder per test, removed with its contents afterwards.
#ifndef QUARVELO_TESTS_FILES_FILES_TEST_SUPPORT_H_
#define QUARVELO_TESTS_FILES_FILES_TEST_SUPPORT_H_

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quarvelo::testing_support {

class TempFolder {
 public:
  TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quarvelo-files-XXXXXX");
    if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
    EXPECT_FALSE(path_.empty());
  }
  ~TempFolder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  const std::string& path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline std::string ReadWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void WriteWholeFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace quarvelo::testing_support

#endif  // QUARVELO_TESTS_FILES_FILES_TEST_SUPPORT_H_
