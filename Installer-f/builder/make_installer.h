// The makers' master builder: turns a source tree into the compressed files of the discs and the
// mirrors, and the manifest that lists them. No page of the wizard reaches it; a flag does.
//
//   make_installer_cmdline.h  the run: flags in, exit status out
//   make_installer.h          build_install: the order of the steps
//   make_installer_scan.h     the walk over the source tree
//   make_installer_comp.h     its files into archives and lines
//   make_installer_pack.h     the archives, on several threads
//   make_installer_reuse.h    archives taken over from the last build
//   make_installer_history.h  the previous manifest, and the lines of the new one
//   make_installer_places.h   warnings about what will not install as the makers think
//   make_installer_tree.h     the rules of the source tree
//   make_installer_close.h    what is said at the end
//   make_installer_fault.h    what is wrong, collected and told
//   make_installer_stop.h     Ctrl-C, signals and the key
//   make_installer_say.h      progress, notices, alerts
//   make_installer_bld.h      bld: what a build is told, has found, and how far it is
//   make_installer_servers.h  the server list
//   make_installer_sign.h     signatures of a master and of a server list
//   make_installer_sums.h     what a signature stands on: the archives, read back
//   make_installer_key.h      the makers' secret key
//   make_installer_password.h its password
//
// Everything belongs to the main thread, which a build blocks, but for the packing. Each file of
// the list includes only those below it. A build scans all of the tree before it writes anything,
// tells every fault that it has found, and leaves a whole master or none.
#pragma once

// Builds the tree of the install type (or only checks it, if bld says so), and says at the end what
// has come of it. Returns a build_status.
int build_install();

// Builds one tree: bld.sim_name, of region bld.reg. Returns a build_status; faults have been told.
int sub_install();
