// The few fields of the oscilloscope's mirror (ScopeState, in the acquisition layer above the
// link) that the link reads or writes. The main window binds them to its ScopeState.
#ifndef QUARVELO_LINK_SCOPE_FIELDS_H_
#define QUARVELO_LINK_SCOPE_FIELDS_H_

#include <cstdint>

namespace quarvelo::link {

struct ScopeFields {
  std::int16_t& ChannelCount;
  bool& HasDvm;
  bool& HasWgen;
  bool& ToolUpdateInProgress;
};

}  // namespace quarvelo::link

#endif  // QUARVELO_LINK_SCOPE_FIELDS_H_
