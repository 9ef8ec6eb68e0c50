// The record of a build, and where its discs lie. Main thread. Writes bld.

#include "Installer-f/builder/make_installer_bld.h"

#include "corekit/base/hl_string.h"

build_record bld;

std::string dest_dvd(int disk) {
  return bld.dst_fold_base + str_format("disk_%d/", disk);
}

void set_dest_dvd(int disk) {
  bld.dst_folder = dest_dvd(disk);
}
