// Sets ToolUpdateInProgress for the lifetime of the guard and restores its previous value, so
// that tool states changed by code do not run the tools' commands.
#ifndef QUARVELO_LINK_TOOL_UPDATE_GUARD_H_
#define QUARVELO_LINK_TOOL_UPDATE_GUARD_H_

namespace quarvelo::link {

class ToolUpdateGuard {
 public:
  explicit ToolUpdateGuard(bool& flag) : flag_(flag), previous_(flag) { flag_ = true; }
  ~ToolUpdateGuard() { flag_ = previous_; }
  ToolUpdateGuard(const ToolUpdateGuard&) = delete;
  ToolUpdateGuard& operator=(const ToolUpdateGuard&) = delete;

 private:
  bool& flag_;
  bool previous_;
};

}  // namespace quarvelo::link

#endif  // QUARVELO_LINK_TOOL_UPDATE_GUARD_H_
