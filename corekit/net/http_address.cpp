// Answers of the resolver, kept. Main thread; writes its own table.
//
// Asking the resolver for every small file could cost more than the file, so an answer is kept for
// a minute, or until a transfer from that host fails. That there is no answer is kept for a moment
// too: with the network down each question may stop the interface for as long as the resolver
// waits.

#include "corekit/net/http_address.h"

#include <vector>

#include "corekit/base/xtim.h"
#include "corekit/net/PCSBSocket.h"

namespace {

constexpr float address_lifetime = 60.0f;  // seconds of the frame clock
constexpr float failure_lifetime = 2.0f;
constexpr size_t address_limit = 16;  // more than the list has mirrors

struct known_address {
  std::string host;
  uint32_t address;  // 0 if the lookup failed
  double looked_up;  // frame clock
};
std::vector<known_address> known_addresses;

bool is_stale(const known_address& entry) {
  const float lifetime = entry.address == 0 ? failure_lifetime : address_lifetime;
  return xtim.now_sec < entry.looked_up || xtim.now_sec > entry.looked_up + lifetime;
}

}  // namespace

uint32_t http_address_of(const std::string& host, bool* fresh) {
  std::erase_if(known_addresses, is_stale);
  for (const known_address& entry : known_addresses) {
    if (entry.host == host) {
      *fresh = false;
      return entry.address;
    }
  }
  if (known_addresses.size() == address_limit) known_addresses.erase(known_addresses.begin());
  *fresh = true;
  const uint32_t address = PCSBSocket::LookupAddress(host.c_str());
  known_addresses.push_back({host, address, xtim.now_sec});
  return address;
}

void http_forget_address(const std::string& host) {
  std::erase_if(known_addresses, [&](const known_address& entry) {
    return entry.host == host && entry.address != 0;
  });
}
