// A key that minisign has made for the tests, and signing with it.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "Installer-f/builder/make_installer_key.h"
#include "corekit/files/sign.h"

inline constexpr char test_public_key[] =
    "RWQD0MnvBXAU5gcYVDbKd1MmBHQ2BLcNw88CW1imG9F82ILtTLgndV8J";

inline sign_public_key test_key() {
  sign_public_key key;
  EXPECT_TRUE(sign_read_key(test_public_key, key));
  return key;
}

// While one lives, this is what the program has built in; else it has no keys.
class built_in_keys {
 public:
  explicit built_in_keys(const char* keys);
  ~built_in_keys();
};

inline sign_cover cover_of(const std::string& name, const std::string& text) {
  return {name, text.size(), sign_hash(text.data(), text.size())};
}

// A statement of a server list, and what else it vouches for.
inline sign_statement statement_of_list(const std::string& list, int64_t serial,
                                        const std::vector<sign_cover>& more = {}) {
  sign_statement made;
  made.kind = sign_of_servers;
  made.serial = serial;
  made.expires = "2030-01-31";
  made.covers = {cover_of(sign_list_name, list)};
  made.covers.insert(made.covers.end(), more.begin(), more.end());
  return made;
}

inline void read_test_key(maker_key& key) {
  const std::string path = testing::TempDir() + "skyvane-key-" + std::to_string(getpid());
  std::ofstream(path)
      << "untrusted comment: minisign encrypted secret key\n"
         "RWQAAEIyAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA9DJ"
         "7wVwFOZmrtYAGO0owngXcJ40D1rL5d8f1B3Y7mOHeqo9V4/CGQcYVDbKd1MmBHQ2BLcNw88CW1im"
         "G9F82ILtTLgndV8JAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=\n";
  EXPECT_EQ(key.read(path, -1), "");
  unlink(path.c_str());
}

// The statement and its signature.
inline std::string signed_by_test_key(const std::string& statement) {
  maker_key key;
  read_test_key(key);
  return statement + key.sign(statement, "a test's");
}
