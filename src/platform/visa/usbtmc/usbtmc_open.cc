#include "platform/visa/usbtmc/usbtmc_open.h"

namespace quarvelo::visa {

ViStatus OpenUsbtmcTransport(const UsbAddress&, Deadline, std::unique_ptr<Transport>*) {
  return VI_ERROR_RSRC_NFOUND;
}

}  // namespace quarvelo::visa
