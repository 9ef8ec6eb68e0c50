// Fuzz target of the HTTP client's reader of answers. The first byte is the size of the pieces in
// which the rest arrives; cut or whole, it has to come to the same.

#include <algorithm>
#include <string>
#include <string_view>

#include "corekit/net/http_answer.h"
#include "fuzz/fuzz_util.h"

namespace {

constexpr int64_t budget = 4096;

struct outcome {
  bool ended, goes_on;
  http_fault fault;
  int code;
  int64_t length;
  std::string reason, body;
  bool operator==(const outcome&) const = default;
};

outcome read(std::string_view bytes, size_t piece) {
  http_answer answer(budget);
  std::string all;
  while (!bytes.empty() && !answer.ended() && answer.fault() == fault_none) {
    std::string_view part = bytes.substr(0, piece);
    while (!part.empty() && !answer.ended() && answer.fault() == fault_none) {
      std::string_view body;
      const size_t used = answer.take(part, &body);
      fuzz_check(used > 0 && used <= part.size() && body.size() <= used);
      all += body;
      part.remove_prefix(used);
      bytes.remove_prefix(used);
    }
  }
  fuzz_check(all.size() <= static_cast<size_t>(budget));
  if (answer.ended()) {
    fuzz_check(answer.code() > 199);
    fuzz_check(answer.length() < 0 || answer.length() == static_cast<int64_t>(all.size()));
    std::string_view body;
    fuzz_check(answer.take("more", &body) == 0);
  }
  return {answer.ended(),
          answer.may_go_on(),
          answer.fault(),
          answer.code(),
          answer.length(),
          answer.reason(),
          all};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
  fuzz_check(read(bytes, std::max<size_t>(data[0], 1)) == read(bytes, bytes.size() + 1));
  return 0;
}
