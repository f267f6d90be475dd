// Program-wide flags shared by the status poll, the single-shot check and the capture.
#ifndef QUARVELO_LINK_STATUS_FLAGS_H_
#define QUARVELO_LINK_STATUS_FLAGS_H_

namespace quarvelo::link {

struct StatusFlags {
  bool PollBusy = false;     // a status poll or single-shot check is running
  bool CaptureBusy = false;  // a waveform capture is running
  bool AutoRefresh = false;  // the tool ID_Refresh is on
  int RunBit = 0;            // Run bit of the Operation Status Condition register, last poll
  bool Stopped = false;      // RunBit was 0 at the last poll
};

}  // namespace quarvelo::link

#endif  // QUARVELO_LINK_STATUS_FLAGS_H_
