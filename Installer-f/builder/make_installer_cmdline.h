// The master builder as a program. Main thread.
#pragma once

// Does what the builder's flags ask for: a build (--build_master), a server list
// (--write_server_list), or both. Needs MACIBM_init. Returns the process's exit status: 0, 1 when
// the server list could not be written, 2 for flags that make no sense (said on standard error,
// nothing touched).
int run_master_builder();
