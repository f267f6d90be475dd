#include "platform/visa/vxi11/core_channel.h"

namespace quarvelo::visa::vxi11 {
namespace {

// Device names are short ("inst0", "gpib0,7"); anything longer is not a real request.
constexpr std::size_t kMaxDeviceName = 256;

}  // namespace

ViStatus StatusFromDeviceError(std::int32_t error) {
  switch (error) {
    case kNoError:
      return VI_SUCCESS;
    case kIoTimeout:
      return VI_ERROR_TMO;
    case kDeviceLockedByAnotherLink:
      return VI_ERROR_RSRC_LOCKED;
    case kOutOfResources:
      // The instrument's limit of simultaneous links (or other resources) is reached.
      return VI_ERROR_RSRC_BUSY;
    case kAbort:
      return VI_ERROR_ABORT;
    case kInvalidLinkIdentifier:
    case kChannelNotEstablished:
      return VI_ERROR_CONN_LOST;
    default:
      return VI_ERROR_IO;
  }
}

void Put(xdr::Writer& out, const CreateLinkParms& value) {
  out.PutInt32(value.client_id);
  out.PutBool(value.lock_device);
  out.PutUint32(value.lock_timeout);
  out.PutString(value.device);
}

void Put(xdr::Writer& out, const CreateLinkResp& value) {
  out.PutInt32(value.error);
  out.PutInt32(value.lid);
  out.PutUint32(value.abort_port);
  out.PutUint32(value.max_recv_size);
}

void Put(xdr::Writer& out, const DeviceWriteParms& value) {
  out.PutInt32(value.lid);
  out.PutUint32(value.io_timeout);
  out.PutUint32(value.lock_timeout);
  out.PutUint32(value.flags);
  out.PutOpaque(value.data);
}

void Put(xdr::Writer& out, const DeviceWriteResp& value) {
  out.PutInt32(value.error);
  out.PutUint32(value.size);
}

void Put(xdr::Writer& out, const DeviceReadParms& value) {
  out.PutInt32(value.lid);
  out.PutUint32(value.request_size);
  out.PutUint32(value.io_timeout);
  out.PutUint32(value.lock_timeout);
  out.PutUint32(value.flags);
  out.PutUint32(value.term_char);
}

void Put(xdr::Writer& out, const DeviceReadResp& value) {
  out.PutInt32(value.error);
  out.PutUint32(value.reason);
  out.PutOpaque(value.data);
}

void Put(xdr::Writer& out, const DeviceReadStbResp& value) {
  out.PutInt32(value.error);
  out.PutUint32(value.stb);
}

void Put(xdr::Writer& out, const DeviceGenericParms& value) {
  out.PutInt32(value.lid);
  out.PutUint32(value.flags);
  out.PutUint32(value.lock_timeout);
  out.PutUint32(value.io_timeout);
}

bool Get(xdr::Reader& in, CreateLinkParms* value) {
  return in.GetInt32(&value->client_id) && in.GetBool(&value->lock_device) &&
         in.GetUint32(&value->lock_timeout) && in.GetString(&value->device, kMaxDeviceName);
}

bool Get(xdr::Reader& in, CreateLinkResp* value) {
  return in.GetInt32(&value->error) && in.GetInt32(&value->lid) &&
         in.GetUint32(&value->abort_port) && in.GetUint32(&value->max_recv_size);
}

bool Get(xdr::Reader& in, DeviceWriteParms* value) {
  return in.GetInt32(&value->lid) && in.GetUint32(&value->io_timeout) &&
         in.GetUint32(&value->lock_timeout) && in.GetUint32(&value->flags) &&
         in.GetOpaque(&value->data);
}

bool Get(xdr::Reader& in, DeviceWriteResp* value) {
  return in.GetInt32(&value->error) && in.GetUint32(&value->size);
}

bool Get(xdr::Reader& in, DeviceReadParms* value) {
  std::uint32_t term_char = 0;
  if (!(in.GetInt32(&value->lid) && in.GetUint32(&value->request_size) &&
        in.GetUint32(&value->io_timeout) && in.GetUint32(&value->lock_timeout) &&
        in.GetUint32(&value->flags) && in.GetUint32(&term_char))) {
    return false;
  }
  // The term char travels as an XDR char: one byte widened to a word.
  value->term_char = static_cast<std::uint8_t>(term_char);
  return true;
}

bool Get(xdr::Reader& in, DeviceReadResp* value) {
  return in.GetInt32(&value->error) && in.GetUint32(&value->reason) && in.GetOpaque(&value->data);
}

bool Get(xdr::Reader& in, DeviceReadStbResp* value) {
  std::uint32_t stb = 0;
  if (!(in.GetInt32(&value->error) && in.GetUint32(&stb))) return false;
  value->stb = static_cast<std::uint8_t>(stb);
  return true;
}

bool Get(xdr::Reader& in, DeviceGenericParms* value) {
  return in.GetInt32(&value->lid) && in.GetUint32(&value->flags) &&
         in.GetUint32(&value->lock_timeout) && in.GetUint32(&value->io_timeout);
}

}  // namespace quarvelo::visa::vxi11
