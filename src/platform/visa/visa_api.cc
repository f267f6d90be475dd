// The VISA C API over the session registry and the sessions it holds.
#include <cstring>
#include <string_view>

#include "platform/visa/deadline.h"
#include "platform/visa/resource_name.h"
#include "platform/visa/session_registry.h"
#include "platform/visa/status_text.h"
#include "platform/visa/transport_open.h"
#include "platform/visa/va_args.h"
#include "platform/visa/visa.h"

namespace {

using quarvelo::visa::Session;
using quarvelo::visa::SessionRegistry;
using quarvelo::visa::VaArgs;

// An open time-out of VI_TMO_IMMEDIATE is what callers pass when they wait for no lock; a
// connection still needs some time to be made.
constexpr ViUInt32 kConnectTimeoutWhenImmediateMs = 5000;

constexpr ViAccessMode kLoadConfig = 4;

// Runs `operation` on an instrument session, VI_ERROR_INV_OBJECT for any other handle.
template <typename Operation>
ViStatus WithInstrument(ViSession vi, Operation operation) {
  const std::shared_ptr<Session> session = SessionRegistry::Instance().FindInstrument(vi);
  if (session == nullptr) {
    return SessionRegistry::Instance().IsResourceManager(vi) ? VI_ERROR_NSUP_OPER
                                                             : VI_ERROR_INV_OBJECT;
  }
  return operation(*session);
}

}  // namespace

ViStatus viOpenDefaultRM(ViPSession vi) {
  if (vi == nullptr) return VI_ERROR_INV_PARAMETER;
  *vi = SessionRegistry::Instance().AddResourceManager();
  return VI_SUCCESS;
}

ViStatus viOpen(ViSession sesn, ViConstRsrc name, ViAccessMode mode, ViUInt32 timeout,
                ViPSession vi) {
  if (vi != nullptr) *vi = VI_NULL;
  if (!SessionRegistry::Instance().IsResourceManager(sesn)) return VI_ERROR_INV_OBJECT;
  if (vi == nullptr) return VI_ERROR_INV_PARAMETER;
  if ((mode & ~(VI_EXCLUSIVE_LOCK | kLoadConfig)) != 0) return VI_ERROR_INV_ACC_MODE;
  if (name == nullptr) return VI_ERROR_INV_RSRC_NAME;
  quarvelo::visa::ResourceAddress address;
  const ViStatus parsed = quarvelo::visa::ParseResourceName(name, &address);
  if (parsed != VI_SUCCESS) return parsed;
  const ViUInt32 connect_ms =
      timeout == VI_TMO_IMMEDIATE ? kConnectTimeoutWhenImmediateMs : timeout;
  std::unique_ptr<quarvelo::visa::Transport> transport;
  const ViStatus opened =
      quarvelo::visa::OpenTransport(address, quarvelo::visa::DeadlineAfter(connect_ms), &transport);
  if (opened < VI_SUCCESS) return opened;
  if (transport == nullptr) return VI_ERROR_RSRC_NFOUND;
  return SessionRegistry::Instance().AddInstrument(
      sesn, std::make_shared<Session>(std::move(transport)), vi);
}

ViStatus viClose(ViObject vi) {
  if (vi == VI_NULL) return VI_WARN_NULL_OBJECT;
  return SessionRegistry::Instance().Close(vi);
}

ViStatus viSetAttribute(ViObject vi, ViAttr attribute, ViAttrState attr_state) {
  if (SessionRegistry::Instance().IsResourceManager(vi)) return VI_ERROR_NSUP_ATTR;
  return WithInstrument(vi, [&](Session& session) {
    if (attribute != VI_ATTR_TMO_VALUE) return VI_ERROR_NSUP_ATTR;
    if (attr_state > VI_TMO_INFINITE) return VI_ERROR_NSUP_ATTR_STATE;
    session.SetTimeout(static_cast<ViUInt32>(attr_state));
    return VI_SUCCESS;
  });
}

ViStatus viGetAttribute(ViObject vi, ViAttr attribute, void* attr_state) {
  if (SessionRegistry::Instance().IsResourceManager(vi)) return VI_ERROR_NSUP_ATTR;
  return WithInstrument(vi, [&](Session& session) {
    if (attribute != VI_ATTR_TMO_VALUE) return VI_ERROR_NSUP_ATTR;
    if (attr_state == nullptr) return VI_ERROR_USER_BUF;
    const ViUInt32 value = session.timeout();
    std::memcpy(attr_state, &value, sizeof value);
    return VI_SUCCESS;
  });
}

ViStatus viStatusDesc(ViObject /*vi*/, ViStatus status, ViChar desc[]) {
  if (desc == nullptr) return VI_ERROR_USER_BUF;
  std::string_view text = quarvelo::visa::StatusText(status);
  ViStatus result = VI_SUCCESS;
  if (text.empty()) {
    text = quarvelo::visa::StatusText(VI_WARN_UNKNOWN_STATUS);
    result = VI_WARN_UNKNOWN_STATUS;
  }
  const std::size_t length = std::min<std::size_t>(text.size(), 255);
  std::memcpy(desc, text.data(), length);
  desc[length] = '\0';
  return result;
}

ViStatus viFlush(ViSession vi, ViUInt16 mask) {
  return WithInstrument(vi, [&](Session& session) { return session.Flush(mask); });
}

ViStatus viWrite(ViSession vi, ViConstBuf buf, ViUInt32 count, ViPUInt32 ret_count) {
  return WithInstrument(vi, [&](Session& session) {
    if (buf == nullptr && count > 0) return VI_ERROR_USER_BUF;
    return session.Write(std::as_bytes(std::span(buf, count)), ret_count);
  });
}

ViStatus viRead(ViSession vi, ViBuf buf, ViUInt32 count, ViPUInt32 ret_count) {
  return WithInstrument(vi, [&](Session& session) {
    if (buf == nullptr && count > 0) return VI_ERROR_USER_BUF;
    return session.Read(std::as_writable_bytes(std::span(buf, count)), ret_count);
  });
}

ViStatus viVPrintf(ViSession vi, ViConstString write_fmt, ViVAList params) {
  return WithInstrument(vi, [&](Session& session) {
    if (write_fmt == nullptr) return VI_ERROR_USER_BUF;
    VaArgs args;
    va_copy(args.list, params);
    const ViStatus status = session.Printf(write_fmt, &args);
    va_end(args.list);
    return status;
  });
}

ViStatus viPrintf(ViSession vi, ViConstString write_fmt, ...) {
  va_list params;
  va_start(params, write_fmt);
  const ViStatus status = viVPrintf(vi, write_fmt, params);
  va_end(params);
  return status;
}

ViStatus viVScanf(ViSession vi, ViConstString read_fmt, ViVAList params) {
  return WithInstrument(vi, [&](Session& session) {
    if (read_fmt == nullptr) return VI_ERROR_USER_BUF;
    VaArgs args;
    va_copy(args.list, params);
    const ViStatus status = session.Scanf(read_fmt, &args);
    va_end(args.list);
    return status;
  });
}

ViStatus viScanf(ViSession vi, ViConstString read_fmt, ...) {
  va_list params;
  va_start(params, read_fmt);
  const ViStatus status = viVScanf(vi, read_fmt, params);
  va_end(params);
  return status;
}

ViStatus viClear(ViSession vi) {
  return WithInstrument(vi, [&](Session& session) { return session.Clear(); });
}

ViStatus viReadSTB(ViSession vi, ViPUInt16 status) {
  return WithInstrument(vi, [&](Session& session) {
    if (status == nullptr) return VI_ERROR_USER_BUF;
    return session.ReadStatusByte(status);
  });
}
