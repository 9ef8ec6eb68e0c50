// Compression: the outcome of each file becomes its lines, and the discs break where one is full.
//
// Main thread; the archives themselves are made on others. Writes how far bld is, and `ouf`.

#include "Installer-f/builder/make_installer_comp.h"

#include <cstdint>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_history.h"
#include "Installer-f/builder/make_installer_pack.h"
#include "Installer-f/builder/make_installer_places.h"
#include "Installer-f/builder/make_installer_reuse.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/engine/utils_manifest.h"

namespace {

// Sizes are whole units of 1,000 bytes, in the manifest and in the totals.
float size_kb(int64_t bytes) {
  const int64_t kb = bytes / 1000;
  return static_cast<float>(kb);
}

// The break falls behind the file that crossed the limit.
void break_disc() {
  if (bld.zip_size_dvd <= bld.disc_limit_kb) return;
  bld.zip_size_dvd = 0;
  ++bld.dvd_now;
  write_disc_line(bld.dvd_now);
  set_dest_dvd(bld.dvd_now);
}

void comp_file(const source_file& file, const pack_outcome& outcome) {
  const std::string path = source_path(file);
  if (outcome.sig == sig_none.text())
    builder_alert("Could not MD5 file!", path, "", "", at_build_md5);
  note_archive_kind(file.relative, outcome.suffix == "7z");
  const float zip_kb = size_kb(outcome.archive_bytes);
  bld.zip_size_dvd += zip_kb;
  bld.zip_size_ins += zip_kb * 0.001f * 0.001f;
  bld.zip_bytes += outcome.archive_bytes;
  bld.bytes_com += file.bytes;
  bld.num_files_old += outcome.taken_over ? 1 : 0;
  ++bld.num_files_com;

  write_versions(file.relative, file.os, outcome.sig, zip_kb, size_kb(file.bytes));
  note_record(file, bld.dvd_now, outcome.suffix, outcome.date, outcome.archive_bytes, outcome.sig);
  break_disc();
}

}  // namespace

void start_comp() {
  bld.zip_size_ins = 0;
  bld.zip_size_dvd = 0;
  bld.dvd_now = 0;
  bld.num_files_com = 0;
  bld.bytes_com = 0;
  bld.zip_bytes = 0;
  bld.num_files_old = 0;
  bld.num_files_gone = 0;
}

bool comp_files() {
  set_dest_dvd(bld.dvd_now);
  start_record();
  return pack_files(comp_file);
}
