// The keys that are built into the test program: none, but where a test says otherwise.

#include "tests/unit/sign_test_key.h"

#include <cstring>

namespace {
char keys_now[200] = "";
}

const char* const sign_built_in_keys = keys_now;

built_in_keys::built_in_keys(const char* keys) {
  std::strncpy(keys_now, keys, sizeof keys_now - 1);
}

built_in_keys::~built_in_keys() {
  keys_now[0] = '\0';
}
