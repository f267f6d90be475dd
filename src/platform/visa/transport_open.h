// Opens the transport a parsed resource string asks for.
#ifndef QUARVELO_PLATFORM_VISA_TRANSPORT_OPEN_H_
#define QUARVELO_PLATFORM_VISA_TRANSPORT_OPEN_H_

#include <memory>

#include "platform/visa/resource_name.h"
#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

ViStatus OpenTransport(const ResourceAddress& address, Deadline deadline,
                       std::unique_ptr<Transport>* out);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_TRANSPORT_OPEN_H_
