#include "spectrum/fresh_memory.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace quarvelo::spectrum::internal {
namespace {

// Below this the faults cost less than the requests.
constexpr std::size_t kAdviceThreshold = std::size_t{1} << 20;

}  // namespace

void AdviseFreshMemory(void* data, std::size_t bytes, bool populate) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  if (bytes < kAdviceThreshold) return;
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto begin = (reinterpret_cast<std::uintptr_t>(data) + page - 1) / page * page;
  const auto end = (reinterpret_cast<std::uintptr_t>(data) + bytes) / page * page;
  if (end <= begin) return;
  void* first = reinterpret_cast<void*>(begin);
  // Both are hints: a system without them supplies the pages one fault at a time as before.
  madvise(first, end - begin, MADV_HUGEPAGE);
#if defined(MADV_POPULATE_WRITE)
  if (populate) madvise(first, end - begin, MADV_POPULATE_WRITE);
#endif
#else
  (void)data;
  (void)bytes;
  (void)populate;
#endif
}

void ResizeFresh(std::vector<double>& array, std::size_t size) {
  if (array.capacity() < size) {
    std::vector<double> grown;
    grown.reserve(size);
    AdviseFreshMemory(grown.data(), size * sizeof(double), true);
    grown.assign(array.begin(), array.end());
    array.swap(grown);
  }
  array.resize(size);
}

void AssignFresh(std::vector<double>& array, std::size_t size, double value) {
  if (array.capacity() < size) {
    std::vector<double>().swap(array);  // give the old memory back first
    array.reserve(size);
    AdviseFreshMemory(array.data(), size * sizeof(double), true);
  }
  array.assign(size, value);
}

}  // namespace quarvelo::spectrum::internal
