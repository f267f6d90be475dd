// The VXI-11 core channel (program 0x0607AF, version 1): procedure numbers, flags, error
// codes and the argument and result records of the procedures this layer uses or serves.
// Byte fields are views into the buffer they were decoded from.
#ifndef QUARVELO_PLATFORM_VISA_VXI11_CORE_CHANNEL_H_
#define QUARVELO_PLATFORM_VISA_VXI11_CORE_CHANNEL_H_

#include <cstdint>
#include <span>
#include <string>

#include "platform/visa/visa.h"
#include "platform/visa/vxi11/xdr.h"

namespace quarvelo::visa::vxi11 {

inline constexpr std::uint32_t kCoreProgram = 0x0607AF;
inline constexpr std::uint32_t kCoreVersion = 1;

enum Procedure : std::uint32_t {
  kCreateLink = 10,
  kDeviceWrite = 11,
  kDeviceRead = 12,
  kDeviceReadStb = 13,
  kDeviceTrigger = 14,
  kDeviceClear = 15,
  kDeviceRemote = 16,
  kDeviceLocal = 17,
  kDeviceLock = 18,
  kDeviceUnlock = 19,
  kDeviceEnableSrq = 20,
  kDeviceDocmd = 22,
  kDestroyLink = 23,
  kCreateIntrChan = 25,
  kDestroyIntrChan = 26,
};

inline constexpr std::uint32_t kFlagWaitLock = 0x01;
inline constexpr std::uint32_t kFlagEnd = 0x08;
inline constexpr std::uint32_t kFlagTermCharSet = 0x80;

inline constexpr std::uint32_t kReasonRequestCount = 1;
inline constexpr std::uint32_t kReasonChr = 2;
inline constexpr std::uint32_t kReasonEnd = 4;

enum DeviceErrorCode : std::int32_t {
  kNoError = 0,
  kSyntaxError = 1,
  kDeviceNotAccessible = 3,
  kInvalidLinkIdentifier = 4,
  kParameterError = 5,
  kChannelNotEstablished = 6,
  kOperationNotSupported = 8,
  kOutOfResources = 9,
  kDeviceLockedByAnotherLink = 11,
  kNoLockHeldByThisLink = 12,
  kIoTimeout = 15,
  kIoError = 17,
  kInvalidAddress = 21,
  kAbort = 23,
  kChannelAlreadyEstablished = 29,
};

// What a failed read or write means to the VISA caller.
ViStatus StatusFromDeviceError(std::int32_t error);

struct CreateLinkParms {
  std::int32_t client_id = 0;
  bool lock_device = false;
  std::uint32_t lock_timeout = 0;
  std::string device;
};

struct CreateLinkResp {
  std::int32_t error = 0;
  std::int32_t lid = 0;
  std::uint32_t abort_port = 0;
  std::uint32_t max_recv_size = 0;
};

struct DeviceWriteParms {
  std::int32_t lid = 0;
  std::uint32_t io_timeout = 0;
  std::uint32_t lock_timeout = 0;
  std::uint32_t flags = 0;
  std::span<const std::byte> data;
};

struct DeviceWriteResp {
  std::int32_t error = 0;
  std::uint32_t size = 0;
};

struct DeviceReadParms {
  std::int32_t lid = 0;
  std::uint32_t request_size = 0;
  std::uint32_t io_timeout = 0;
  std::uint32_t lock_timeout = 0;
  std::uint32_t flags = 0;
  std::uint8_t term_char = 0;
};

struct DeviceReadResp {
  std::int32_t error = 0;
  std::uint32_t reason = 0;
  std::span<const std::byte> data;
};

struct DeviceReadStbResp {
  std::int32_t error = 0;
  std::uint8_t stb = 0;
};

struct DeviceGenericParms {
  std::int32_t lid = 0;
  std::uint32_t flags = 0;
  std::uint32_t lock_timeout = 0;
  std::uint32_t io_timeout = 0;
};

void Put(xdr::Writer& out, const CreateLinkParms& value);
void Put(xdr::Writer& out, const CreateLinkResp& value);
void Put(xdr::Writer& out, const DeviceWriteParms& value);
void Put(xdr::Writer& out, const DeviceWriteResp& value);
void Put(xdr::Writer& out, const DeviceReadParms& value);
void Put(xdr::Writer& out, const DeviceReadResp& value);
void Put(xdr::Writer& out, const DeviceReadStbResp& value);
void Put(xdr::Writer& out, const DeviceGenericParms& value);

bool Get(xdr::Reader& in, CreateLinkParms* value);
bool Get(xdr::Reader& in, CreateLinkResp* value);
bool Get(xdr::Reader& in, DeviceWriteParms* value);
bool Get(xdr::Reader& in, DeviceWriteResp* value);
bool Get(xdr::Reader& in, DeviceReadParms* value);
bool Get(xdr::Reader& in, DeviceReadResp* value);
bool Get(xdr::Reader& in, DeviceReadStbResp* value);
bool Get(xdr::Reader& in, DeviceGenericParms* value);

// Device_Link (destroy_link's argument) and Device_Error (the result of most procedures) are
// single words: PutInt32 / GetInt32 serve them.

}  // namespace quarvelo::visa::vxi11

#endif  // QUARVELO_PLATFORM_VISA_VXI11_CORE_CHANNEL_H_
