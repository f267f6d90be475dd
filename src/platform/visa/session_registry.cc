#include "platform/visa/session_registry.h"

#include <algorithm>

namespace quarvelo::visa {

SessionRegistry& SessionRegistry::Instance() {
  static SessionRegistry registry;
  return registry;
}

ViSession SessionRegistry::NextHandle() {
  do {
    ++last_handle_;
  } while (last_handle_ == VI_NULL || entries_.count(last_handle_) != 0);
  return last_handle_;
}

ViSession SessionRegistry::AddResourceManager() {
  std::lock_guard lock(mutex_);
  const ViSession handle = NextHandle();
  entries_[handle] = Entry{};
  return handle;
}

ViStatus SessionRegistry::AddInstrument(ViSession manager, std::shared_ptr<Session> session,
                                        ViSession* out) {
  std::lock_guard lock(mutex_);
  const auto found = entries_.find(manager);
  if (found == entries_.end() || found->second.session != nullptr) return VI_ERROR_INV_OBJECT;
  const ViSession handle = NextHandle();
  found->second.opened.push_back(handle);
  entries_[handle] = Entry{manager, std::move(session), {}};
  *out = handle;
  return VI_SUCCESS;
}

bool SessionRegistry::IsResourceManager(ViSession handle) const {
  std::lock_guard lock(mutex_);
  const auto found = entries_.find(handle);
  return found != entries_.end() && found->second.session == nullptr;
}

std::shared_ptr<Session> SessionRegistry::FindInstrument(ViSession handle) const {
  std::lock_guard lock(mutex_);
  const auto found = entries_.find(handle);
  return found == entries_.end() ? nullptr : found->second.session;
}

ViStatus SessionRegistry::Close(ViSession handle) {
  // Sessions are destroyed (connections closed) after the lock is released, so that a slow
  // close never holds up other handles.
  std::vector<std::shared_ptr<Session>> closing;
  {
    std::lock_guard lock(mutex_);
    const auto found = entries_.find(handle);
    if (found == entries_.end()) return VI_ERROR_INV_OBJECT;
    Entry entry = std::move(found->second);
    entries_.erase(found);
    if (entry.session != nullptr) {
      closing.push_back(std::move(entry.session));
      if (const auto manager = entries_.find(entry.manager); manager != entries_.end()) {
        std::erase(manager->second.opened, handle);
      }
    } else {
      for (const ViSession child : entry.opened) {
        if (const auto instrument = entries_.find(child); instrument != entries_.end()) {
          closing.push_back(std::move(instrument->second.session));
          entries_.erase(instrument);
        }
      }
    }
  }
  closing.clear();
  return VI_SUCCESS;
}

}  // namespace quarvelo::visa
