// The record of a build, and where things lie by it. Main thread. Writes bld.

#include "Installer-f/builder/make_installer_bld.h"

#include <limits>

#include "corekit/base/hl_string.h"

build_record bld;

std::string dest_dvd(int disk) {
  return bld.dst_fold_base + str_format("disk_%d/", disk);
}

void set_dest_dvd(int disk) {
  bld.dst_folder = dest_dvd(disk);
}

time_t newest_date() {
  return bld.source_date >= 0 ? bld.source_date : std::numeric_limits<time_t>::max();
}

std::string source_path(const source_file& file) {
  return bld.src_fold + file.relative;
}

std::string archive_stem(const source_file& file, int disk) {
  return dest_dvd(disk) + bld.sim_name + "/" + file.relative;
}
