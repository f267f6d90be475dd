// Calls from the link up to the main window (the sweep, the toolbar rebuild, the generator
// dialog, ending the program). The link sits below those layers, so it reaches them only
// through this interface, which the main window implements.
#ifndef QUARVELO_LINK_LINK_HOOKS_H_
#define QUARVELO_LINK_LINK_HOOKS_H_

namespace quarvelo::link {

class LinkHooks {
 public:
  virtual ~LinkHooks() = default;
  // ID_Sweep: restart = true leaves a running oscilloscope running after the capture.
  virtual void RequestSweep(bool restart) = 0;
  // SetToolbar: rebuild the toolbar for model, channel count and options.
  virtual void RebuildToolbar() = 0;
  // Closes the waveform generator dialog if it is open (before the link goes down).
  virtual void CloseWgenDialog() = 0;
  // Ends the program in order after an unexpected fault.
  virtual void EndProgram() = 0;
};

// Until the main window provides them, the hooks do nothing.
class NoLinkHooks final : public LinkHooks {
 public:
  void RequestSweep(bool) override {}
  void RebuildToolbar() override {}
  void CloseWgenDialog() override {}
  void EndProgram() override {}
};

}  // namespace quarvelo::link

#endif  // QUARVELO_LINK_LINK_HOOKS_H_
