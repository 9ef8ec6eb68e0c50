// Fuzz target of the server list's reader, and so of the header of all text files. The first byte
// says whether test releases are wanted.

#include "Installer-f/engine/utils_servers_list.h"
#include "Installer-f/settings/main_stg.h"
#include "fuzz/fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz_file file;
  if (size == 0) return 0;
  fuzz_take_alerts();
  file.put(data + 1, size - 1);
  stg.beta_flag = data[0] & 1;
  stg.server_count = -1;
  install_name = no_install_name;
  int result = list_foreign;
  try {
    result = read_server_list(file.path);
  } catch (const fuzz_fatal&) {
    return 0;
  }
  if (result != list_read && result != list_lacks_beta) return 0;
  fuzz_check(stg.server_count >= 0 && stg.server_count <= server_limit);
  fuzz_check(install_name == no_install_name || release_is_plain(install_name));
  for (int i = 0; i < stg.server_count; ++i) {
    // Each goes into the first lines of a request. A host on another line is none, and never
    // answers.
    fuzz_check(!server_name[i].ends_with('/'));
    fuzz_check(server_path[i].starts_with('/') && server_path[i].ends_with('/'));
    fuzz_check((server_name[i] + server_path[i]).find_first_of("\r\n") == std::string::npos);
  }
  draw_server();
  fuzz_check(stg.server_index >= 0 && stg.server_index < std::max(stg.server_count, 1));
  return 0;
}
