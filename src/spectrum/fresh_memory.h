// Large arrays of a spectrum pass on fresh memory. Each 4 KiB page the system supplies costs
// a fault, and the first pass at a new length touches tens of megabytes; asking for large
// pages and taking the pages in one request before the first write makes that first pass
// cost about what a later one costs.
#ifndef QUARVELO_SPECTRUM_FRESH_MEMORY_H_
#define QUARVELO_SPECTRUM_FRESH_MEMORY_H_

#include <cstddef>
#include <vector>

namespace quarvelo::spectrum::internal {

// Advises large pages for [data, data + bytes) and, with `populate`, has the system supply
// its pages at once. Small ranges and systems without the advice are left alone.
void AdviseFreshMemory(void* data, std::size_t bytes, bool populate);

// array.resize(size), new elements zero; when it must grow, its new memory is advised first.
void ResizeFresh(std::vector<double>& array, std::size_t size);
// array.assign(size, value), with the same advice when it must grow.
void AssignFresh(std::vector<double>& array, std::size_t size, double value);

}  // namespace quarvelo::spectrum::internal

#endif  // QUARVELO_SPECTRUM_FRESH_MEMORY_H_
