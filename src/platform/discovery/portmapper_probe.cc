#include "platform/discovery/portmapper_probe.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <random>

#include "platform/visa/vxi11/core_channel.h"
#include "platform/visa/vxi11/rpc.h"

namespace quarvelo::discovery {
namespace {

namespace portmapper = visa::portmapper;
namespace rpc = visa::rpc;
namespace xdr = visa::xdr;

std::string DottedOf(const in_addr& address) {
  char text[INET_ADDRSTRLEN] = {};
  inet_ntop(AF_INET, &address, text, sizeof text);
  return text;
}

}  // namespace

std::vector<std::string> LocalBroadcastAddresses() {
  std::vector<std::string> addresses;
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return addresses;
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    const unsigned flags = entry->ifa_flags;
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET ||
        (flags & IFF_UP) == 0 || (flags & IFF_BROADCAST) == 0 || (flags & IFF_LOOPBACK) != 0 ||
        entry->ifa_broadaddr == nullptr) {
      continue;
    }
    const std::string address =
        DottedOf(reinterpret_cast<const sockaddr_in*>(entry->ifa_broadaddr)->sin_addr);
    if (std::ranges::find(addresses, address) == addresses.end()) addresses.push_back(address);
  }
  freeifaddrs(list);
  return addresses;
}

PortmapperProbe::~PortmapperProbe() {
  if (socket_ >= 0) close(socket_);
}

bool PortmapperProbe::Start(const std::vector<std::string>& addresses, std::uint16_t port,
                            std::string* error) {
  socket_ = socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (socket_ < 0) {
    *error = "cannot open a UDP socket";
    return false;
  }
  const int on = 1;
  setsockopt(socket_, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
  xid_ = std::random_device()();
  xdr::Writer call;
  rpc::PutCallHeader(call,
                     {xid_, portmapper::kProgram, portmapper::kVersion, portmapper::kProcGetPort});
  portmapper::PutMapping(
      call, {visa::vxi11::kCoreProgram, visa::vxi11::kCoreVersion, portmapper::kProtocolTcp, 0});
  int sent = 0;
  for (const std::string& address : addresses) {
    sockaddr_in target{};
    target.sin_family = AF_INET;
    target.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &target.sin_addr) != 1) continue;
    // An unreachable network fails here at once, or the call is simply never answered.
    if (sendto(socket_, call.bytes().data(), call.bytes().size(), 0,
               reinterpret_cast<const sockaddr*>(&target), sizeof target) >= 0) {
      ++sent;
    }
  }
  if (sent == 0) {
    *error = "no network to search";
    return false;
  }
  return true;
}

void PortmapperProbe::Poll(int wait_ms) {
  if (socket_ < 0) return;
  pollfd entry{socket_, POLLIN, 0};
  if (poll(&entry, 1, std::max(0, wait_ms)) <= 0) return;
  std::array<std::byte, 512> buffer;
  for (;;) {
    sockaddr_in from{};
    socklen_t from_size = sizeof from;
    const ssize_t count = recvfrom(socket_, buffer.data(), buffer.size(), 0,
                                   reinterpret_cast<sockaddr*>(&from), &from_size);
    if (count < 0) return;  // EAGAIN: all read; an ICMP error: that host has no portmapper
    xdr::Reader in(std::span<const std::byte>(buffer.data(), static_cast<std::size_t>(count)));
    rpc::ReplyHeader reply;
    std::uint16_t core_port = 0;
    if (!rpc::GetReplyHeader(in, &reply) || reply.xid != xid_ || !reply.accepted ||
        reply.stat != rpc::AcceptStat::kSuccess || !portmapper::GetPort(in, &core_port) ||
        core_port == 0) {
      continue;
    }
    const std::string host = DottedOf(from.sin_addr);
    if (std::ranges::find(responders_, host) == responders_.end()) responders_.push_back(host);
  }
}

std::vector<std::string> PortmapperProbe::responders() const {
  std::vector<std::string> sorted = responders_;
  const auto numeric = [](const std::string& host) {
    in_addr address{};
    inet_pton(AF_INET, host.c_str(), &address);
    return ntohl(address.s_addr);
  };
  std::ranges::sort(sorted, {}, numeric);
  return sorted;
}

}  // namespace quarvelo::discovery
