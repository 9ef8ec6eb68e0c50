// The makers' master builder: turns a source tree into the compressed files of the discs and the
// mirrors, and the manifest that lists them. No page of the wizard reaches it; a flag does.
//
//   make_installer_cmdline.h the run: flags in, exit status out
//   make_installer.h         build_install
//   make_installer_bld.h     bld: what a build is told, has found, and how far it is
//   make_installer_tree.h    the rules of the source tree
//   make_installer_scan.h    the walk over it
//   make_installer_comp.h    one file into its archive, and the manifest's lines
//   make_installer_places.h  warnings about what will not install as the makers think
//   make_installer_say.h     progress, notices, alerts
//   make_installer_servers.h the server list
//
// Everything here belongs to the main thread and blocks it: a build has no frames of its own. Every
// failure of a build is a fatal alert, which ends the process with status 1; nothing is undone.
#pragma once

// Builds the tree of the install type, then shows the makers' checklist.
void build_install();

// Builds one tree: `sim_name`, of region `reg`.
void sub_install();
