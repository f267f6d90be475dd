// The subset of the VISA library API (IVI-4.1 / VPP-4.3.2) that QUARVELO uses, with the
// standard's names, types and values, so that code calling it reads like code written
// against any VISA implementation. The implementation lives beside this header.
#ifndef QUARVELO_PLATFORM_VISA_VISA_H_
#define QUARVELO_PLATFORM_VISA_VISA_H_

#include <cstdarg>
#include <cstdint>

using ViUInt32 = std::uint32_t;
using ViInt32 = std::int32_t;
using ViUInt16 = std::uint16_t;
using ViPUInt16 = ViUInt16*;
using ViInt16 = std::int16_t;
using ViUInt8 = std::uint8_t;
using ViUInt64 = std::uint64_t;
using ViChar = char;
using ViByte = unsigned char;
using ViBoolean = ViUInt16;
using ViStatus = ViInt32;
using ViObject = ViUInt32;
using ViSession = ViObject;
using ViAttr = ViUInt32;
using ViAttrState = ViUInt64;
using ViAccessMode = ViUInt32;
using ViString = ViChar*;
using ViConstString = const ViChar*;
using ViRsrc = ViString;
using ViConstRsrc = ViConstString;
using ViBuf = ViByte*;
using ViConstBuf = const ViByte*;
using ViPUInt32 = ViUInt32*;
using ViPSession = ViSession*;
using ViVAList = va_list;

inline constexpr ViSession VI_NULL = 0;
inline constexpr ViBoolean VI_TRUE = 1;
inline constexpr ViBoolean VI_FALSE = 0;

inline constexpr ViAccessMode VI_NO_LOCK = 0;
inline constexpr ViAccessMode VI_EXCLUSIVE_LOCK = 1;

inline constexpr ViAttr VI_ATTR_TMO_VALUE = 0x3FFF001A;
inline constexpr ViUInt32 VI_TMO_IMMEDIATE = 0;
inline constexpr ViUInt32 VI_TMO_INFINITE = 0xFFFFFFFF;

inline constexpr ViUInt16 VI_READ_BUF = 1;
inline constexpr ViUInt16 VI_WRITE_BUF = 2;
inline constexpr ViUInt16 VI_READ_BUF_DISCARD = 4;
inline constexpr ViUInt16 VI_WRITE_BUF_DISCARD = 8;
inline constexpr ViUInt16 VI_IO_IN_BUF = 16;
inline constexpr ViUInt16 VI_IO_OUT_BUF = 32;
inline constexpr ViUInt16 VI_IO_IN_BUF_DISCARD = 64;
inline constexpr ViUInt16 VI_IO_OUT_BUF_DISCARD = 128;

inline constexpr ViUInt32 VI_FIND_BUFLEN = 256;

// Completion and warning codes.
inline constexpr ViStatus VI_SUCCESS = 0;
inline constexpr ViStatus VI_SUCCESS_TERM_CHAR = 0x3FFF0005;
inline constexpr ViStatus VI_SUCCESS_MAX_CNT = 0x3FFF0006;
inline constexpr ViStatus VI_WARN_NULL_OBJECT = 0x3FFF0082;
inline constexpr ViStatus VI_WARN_NSUP_ATTR_STATE = 0x3FFF0084;
inline constexpr ViStatus VI_WARN_UNKNOWN_STATUS = 0x3FFF0085;

// Error codes: _VI_ERROR + 0x3FFF0000 + n, i.e. 0xBFFF00nn as a signed 32-bit value.
constexpr ViStatus ViErrorCode(ViUInt32 n) { return static_cast<ViStatus>(0xBFFF0000u + n); }
inline constexpr ViStatus VI_ERROR_SYSTEM_ERROR = ViErrorCode(0x00);
inline constexpr ViStatus VI_ERROR_INV_OBJECT = ViErrorCode(0x0E);
inline constexpr ViStatus VI_ERROR_RSRC_LOCKED = ViErrorCode(0x0F);
inline constexpr ViStatus VI_ERROR_RSRC_NFOUND = ViErrorCode(0x11);
inline constexpr ViStatus VI_ERROR_INV_RSRC_NAME = ViErrorCode(0x12);
inline constexpr ViStatus VI_ERROR_INV_ACC_MODE = ViErrorCode(0x13);
inline constexpr ViStatus VI_ERROR_TMO = ViErrorCode(0x15);
inline constexpr ViStatus VI_ERROR_CLOSING_FAILED = ViErrorCode(0x16);
inline constexpr ViStatus VI_ERROR_NSUP_ATTR = ViErrorCode(0x1D);
inline constexpr ViStatus VI_ERROR_NSUP_ATTR_STATE = ViErrorCode(0x1E);
inline constexpr ViStatus VI_ERROR_ATTR_READONLY = ViErrorCode(0x1F);
inline constexpr ViStatus VI_ERROR_ABORT = ViErrorCode(0x30);
inline constexpr ViStatus VI_ERROR_RAW_WR_PROT_VIOL = ViErrorCode(0x34);
inline constexpr ViStatus VI_ERROR_RAW_RD_PROT_VIOL = ViErrorCode(0x35);
inline constexpr ViStatus VI_ERROR_OUTP_PROT_VIOL = ViErrorCode(0x36);
inline constexpr ViStatus VI_ERROR_INP_PROT_VIOL = ViErrorCode(0x37);
inline constexpr ViStatus VI_ERROR_ALLOC = ViErrorCode(0x3C);
inline constexpr ViStatus VI_ERROR_INV_MASK = ViErrorCode(0x3D);
inline constexpr ViStatus VI_ERROR_IO = ViErrorCode(0x3E);
inline constexpr ViStatus VI_ERROR_INV_FMT = ViErrorCode(0x3F);
inline constexpr ViStatus VI_ERROR_NSUP_FMT = ViErrorCode(0x41);
inline constexpr ViStatus VI_ERROR_NSUP_OPER = ViErrorCode(0x67);
inline constexpr ViStatus VI_ERROR_USER_BUF = ViErrorCode(0x71);
inline constexpr ViStatus VI_ERROR_RSRC_BUSY = ViErrorCode(0x72);
inline constexpr ViStatus VI_ERROR_INV_PARAMETER = ViErrorCode(0x78);
inline constexpr ViStatus VI_ERROR_INV_PROT = ViErrorCode(0x79);
inline constexpr ViStatus VI_ERROR_INV_SIZE = ViErrorCode(0x7B);
inline constexpr ViStatus VI_ERROR_NIMPL_OPER = ViErrorCode(0x81);
inline constexpr ViStatus VI_ERROR_INV_LENGTH = ViErrorCode(0x83);
inline constexpr ViStatus VI_ERROR_LIBRARY_NFOUND = ViErrorCode(0x9E);
inline constexpr ViStatus VI_ERROR_CONN_LOST = ViErrorCode(0xA6);
inline constexpr ViStatus VI_ERROR_MACHINE_NAVAIL = ViErrorCode(0xA7);
inline constexpr ViStatus VI_ERROR_NPERMISSION = ViErrorCode(0xA8);

ViStatus viOpenDefaultRM(ViPSession vi);
ViStatus viOpen(ViSession sesn, ViConstRsrc name, ViAccessMode mode, ViUInt32 timeout,
                ViPSession vi);
ViStatus viClose(ViObject vi);
ViStatus viSetAttribute(ViObject vi, ViAttr attribute, ViAttrState attr_state);
ViStatus viGetAttribute(ViObject vi, ViAttr attribute, void* attr_state);
// desc must hold at least 256 characters, as the standard requires.
ViStatus viStatusDesc(ViObject vi, ViStatus status, ViChar desc[]);
ViStatus viFlush(ViSession vi, ViUInt16 mask);
ViStatus viWrite(ViSession vi, ViConstBuf buf, ViUInt32 count, ViPUInt32 ret_count);
ViStatus viRead(ViSession vi, ViBuf buf, ViUInt32 count, ViPUInt32 ret_count);
ViStatus viVPrintf(ViSession vi, ViConstString write_fmt, ViVAList params);
ViStatus viPrintf(ViSession vi, ViConstString write_fmt, ...);
ViStatus viVScanf(ViSession vi, ViConstString read_fmt, ViVAList params);
ViStatus viScanf(ViSession vi, ViConstString read_fmt, ...);
// Device clear: the instrument drops its input and output; the session drops its buffers.
ViStatus viClear(ViSession vi);
ViStatus viReadSTB(ViSession vi, ViPUInt16 status);

#endif  // QUARVELO_PLATFORM_VISA_VISA_H_
