// Signing what the makers publish: a master, or a server list. docs/security.md has the formats.
// Main thread.
#pragma once

#include <cstdint>
#include <string>

#include "Installer-f/builder/make_installer_key.h"

// What the maker has said of a signature. Written by the command line.
struct sign_order {
  int64_t serial = 0;  // of what is signed; 0: the seconds since 1970
  int days = 0;        // that it is for; 0: 400 for a release, 100 for a list
  std::string
      statement;  // a file to leave what is to be signed in, for a key that is elsewhere; or
                  // to take it from, once FILE.minisig lies beside it. Empty: the key signs
  std::string final_program, beta_program;  // what the about box fetches; empty: nothing
};

// Signs the one release below `output` (trailing "/"), a master: reads it back, and writes the
// archive that holds its manifest, the sums and the signature. Returns an exit status, after saying
// what is wrong.
int sign_master(const std::string& output, const maker_key& key, const sign_order& order);

// Signs the list at `path`, whose last signature goes. The same results.
int sign_server_list(const std::string& path, const maker_key& key, const sign_order& order);

// The serial of the release whose manifest, or its archive, is at `manifest`; 0 if it is not
// signed.
int64_t signed_serial(const std::string& manifest);
