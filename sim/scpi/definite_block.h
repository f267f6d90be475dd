// IEEE 488.2 definite-length block framing as the instrument sends it: "#8" and eight digits.
#ifndef QUARVELO_SIM_SCPI_DEFINITE_BLOCK_H_
#define QUARVELO_SIM_SCPI_DEFINITE_BLOCK_H_

#include <cstdio>
#include <string>

namespace quarvelo::sim {

inline std::string DefiniteBlock(const std::string& data) {
  char header[16];
  std::snprintf(header, sizeof header, "#8%08zu", data.size());
  return header + data;
}

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SCPI_DEFINITE_BLOCK_H_
