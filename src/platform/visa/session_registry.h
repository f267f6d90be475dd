// The table behind the handle-based VISA API: which handles are resource-manager sessions,
// which are instrument sessions, and which manager opened which instrument. The API hands out
// plain integers, so this table is necessarily one per process; it is the only process-wide
// state of this layer and every access goes through its mutex.
#ifndef QUARVELO_PLATFORM_VISA_SESSION_REGISTRY_H_
#define QUARVELO_PLATFORM_VISA_SESSION_REGISTRY_H_

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/visa/session.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

class SessionRegistry {
 public:
  static SessionRegistry& Instance();

  SessionRegistry() = default;
  SessionRegistry(const SessionRegistry&) = delete;
  SessionRegistry& operator=(const SessionRegistry&) = delete;

  ViSession AddResourceManager();
  // VI_ERROR_INV_OBJECT when `manager` is not an open resource manager.
  ViStatus AddInstrument(ViSession manager, std::shared_ptr<Session> session, ViSession* out);

  bool IsResourceManager(ViSession handle) const;
  // The instrument session, or nullptr. The caller's reference keeps the session alive through
  // an operation even if another thread closes the handle meanwhile.
  std::shared_ptr<Session> FindInstrument(ViSession handle) const;

  // Closes an instrument session, or a manager with every session it opened.
  // VI_ERROR_INV_OBJECT for an unknown handle.
  ViStatus Close(ViSession handle);

 private:
  struct Entry {
    ViSession manager = VI_NULL;       // for an instrument: who opened it
    std::shared_ptr<Session> session;  // null for a resource manager
    std::vector<ViSession> opened;     // for a manager: its instruments
  };

  ViSession NextHandle();

  mutable std::mutex mutex_;
  std::map<ViSession, Entry> entries_;
  ViSession last_handle_ = 0x100;
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_SESSION_REGISTRY_H_
