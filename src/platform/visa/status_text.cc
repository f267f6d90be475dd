#include "platform/visa/status_text.h"

#include <array>
#include <utility>

namespace quarvelo::visa {
namespace {

struct StatusEntry {
  ViStatus status;
  std::string_view text;
};

constexpr std::array kStatusTexts = {
    StatusEntry{VI_SUCCESS, "VI_SUCCESS: Operation completed successfully."},
    StatusEntry{VI_SUCCESS_TERM_CHAR,
                "VI_SUCCESS_TERM_CHAR: The specified termination character was read."},
    StatusEntry{VI_SUCCESS_MAX_CNT,
                "VI_SUCCESS_MAX_CNT: The number of bytes transferred is equal to the requested "
                "input count. More data may be available."},
    StatusEntry{VI_WARN_NULL_OBJECT,
                "VI_WARN_NULL_OBJECT: The specified object reference is uninitialized."},
    StatusEntry{VI_WARN_NSUP_ATTR_STATE,
                "VI_WARN_NSUP_ATTR_STATE: Although the specified state of the attribute is "
                "valid, it is not supported by this implementation."},
    StatusEntry{VI_WARN_UNKNOWN_STATUS,
                "VI_WARN_UNKNOWN_STATUS: The status code passed to the operation could not be "
                "interpreted."},
    StatusEntry{VI_ERROR_SYSTEM_ERROR,
                "VI_ERROR_SYSTEM_ERROR: Unknown system error (miscellaneous error)."},
    StatusEntry{VI_ERROR_INV_OBJECT,
                "VI_ERROR_INV_OBJECT: The given session or object reference is invalid."},
    StatusEntry{VI_ERROR_RSRC_LOCKED,
                "VI_ERROR_RSRC_LOCKED: Specified type of lock cannot be obtained, or specified "
                "operation cannot be performed, because the resource is locked."},
    StatusEntry{VI_ERROR_RSRC_NFOUND,
                "VI_ERROR_RSRC_NFOUND: Insufficient location information or the requested "
                "device or resource is not present in the system."},
    StatusEntry{VI_ERROR_INV_RSRC_NAME,
                "VI_ERROR_INV_RSRC_NAME: Invalid resource reference specified. Parsing error."},
    StatusEntry{VI_ERROR_INV_ACC_MODE, "VI_ERROR_INV_ACC_MODE: Invalid access mode."},
    StatusEntry{VI_ERROR_TMO, "VI_ERROR_TMO: Timeout expired before operation completed."},
    StatusEntry{VI_ERROR_CLOSING_FAILED,
                "VI_ERROR_CLOSING_FAILED: The VISA driver failed to properly close the session "
                "or object reference."},
    StatusEntry{VI_ERROR_NSUP_ATTR,
                "VI_ERROR_NSUP_ATTR: The specified attribute is not defined or supported by "
                "the referenced object."},
    StatusEntry{VI_ERROR_NSUP_ATTR_STATE,
                "VI_ERROR_NSUP_ATTR_STATE: The specified state of the attribute is not valid, "
                "or is not supported as defined by the object."},
    StatusEntry{VI_ERROR_ATTR_READONLY,
                "VI_ERROR_ATTR_READONLY: The specified attribute is read-only."},
    StatusEntry{VI_ERROR_ALLOC,
                "VI_ERROR_ALLOC: Insufficient system resources to perform necessary memory "
                "allocation."},
    StatusEntry{VI_ERROR_INV_MASK, "VI_ERROR_INV_MASK: Invalid buffer mask specified."},
    StatusEntry{VI_ERROR_IO, "VI_ERROR_IO: Could not perform operation because of I/O error."},
    StatusEntry{VI_ERROR_INV_FMT,
                "VI_ERROR_INV_FMT: A format specifier in the format string is invalid."},
    StatusEntry{VI_ERROR_NSUP_FMT,
                "VI_ERROR_NSUP_FMT: A format specifier in the format string is not supported."},
    StatusEntry{VI_ERROR_NSUP_OPER,
                "VI_ERROR_NSUP_OPER: The given session or object reference does not support "
                "this operation."},
    StatusEntry{VI_ERROR_USER_BUF,
                "VI_ERROR_USER_BUF: A specified user buffer is not valid or cannot be accessed "
                "for the required size."},
    StatusEntry{VI_ERROR_ABORT, "VI_ERROR_ABORT: User abort occurred during transfer."},
    StatusEntry{VI_ERROR_RSRC_BUSY,
                "VI_ERROR_RSRC_BUSY: The resource is valid, but VISA cannot currently access "
                "it."},
    StatusEntry{VI_ERROR_INV_PARAMETER,
                "VI_ERROR_INV_PARAMETER: The value of some parameter (which parameter is not "
                "known) is invalid."},
    StatusEntry{VI_ERROR_NIMPL_OPER,
                "VI_ERROR_NIMPL_OPER: The given operation is not implemented."},
    StatusEntry{VI_ERROR_INV_LENGTH, "VI_ERROR_INV_LENGTH: Invalid length specified."},
    StatusEntry{VI_ERROR_LIBRARY_NFOUND,
                "VI_ERROR_LIBRARY_NFOUND: A code library required by VISA could not be located "
                "or loaded."},
    StatusEntry{VI_ERROR_CONN_LOST,
                "VI_ERROR_CONN_LOST: The connection for the given session has been lost."},
    StatusEntry{VI_ERROR_NPERMISSION,
                "VI_ERROR_NPERMISSION: Access to the resource or remote machine is denied."},
};

}  // namespace

std::string_view StatusText(ViStatus status) {
  for (const StatusEntry& entry : kStatusTexts) {
    if (entry.status == status) return entry.text;
  }
  return {};
}

}  // namespace quarvelo::visa
