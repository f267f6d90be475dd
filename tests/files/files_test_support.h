// A temporary folder per test, removed with its contents afterwards, and whole-file reads.
#ifndef QUARVELO_TESTS_FILES_FILES_TEST_SUPPORT_H_
#define QUARVELO_TESTS_FILES_FILES_TEST_SUPPORT_H_

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quarvelo::testing_support {

class TempFolder {
 public:
  TempFolder() : path_(std::filesystem::temp_directory_path() / "quarvelo-files-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
  }
  ~TempFolder() { std::filesystem::remove_all(path_, ignored_); }
  const std::string& path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
  std::error_code ignored_;
};

inline std::string ReadWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace quarvelo::testing_support

#endif  // QUARVELO_TESTS_FILES_FILES_TEST_SUPPORT_H_
