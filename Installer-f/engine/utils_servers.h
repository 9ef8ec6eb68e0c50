// The server list and the newest manifest: fetched from the product's web server and from a mirror
// drawn from the list. Main thread only.
#pragma once

#include "Installer-f/engine/utils_servers_list.h"

// One step of getting the list, then the manifest, then reading it. Call once a frame and watch
// stg.server_count (-1 until the list is read) and stg.directory_state. Failures are tried again
// without end, after a rest; the page decides when to give up. Uses HTTP slots 0 and 1.
void UTL_download_directory();
