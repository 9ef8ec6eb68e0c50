// The server list that the makers publish. Main thread.
//
// `mirrors` is a list "host/path,host,...": a mirror without a path serves from its root, and
// earlier ones get more users.
#pragma once

#include <string>

// What an installer would misread in such a list, in words for the user; empty if nothing.
std::string server_list_complaint(const std::string& mirrors);

// Writes a serverlist9.txt that offers the release folder `name` as the public release. REQUIRES:
// no complaint about `mirrors`. Returns 0, or 1 after the user was told that it could not be
// written.
int write_server_list(const std::string& path, const std::string& name, const std::string& mirrors);
