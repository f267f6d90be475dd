// Opens a USB-TMC instrument through libusb-1.0.
#ifndef QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_OPEN_H_
#define QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_OPEN_H_

#include <memory>

#include "platform/visa/resource_name.h"
#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

// Finds the device by vendor, product and serial number among interfaces of class 0xFE
// subclass 3, claims it (detaching a kernel driver that holds it) and returns its transport.
// VI_ERROR_RSRC_NFOUND when no such device is attached, VI_ERROR_NPERMISSION when the user may
// not open it (see the udev rule in contrib/udev), VI_ERROR_RSRC_BUSY when another program
// holds the interface.
ViStatus OpenUsbtmcTransport(const UsbAddress& address, Deadline deadline,
                             std::unique_ptr<Transport>* out);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_OPEN_H_
