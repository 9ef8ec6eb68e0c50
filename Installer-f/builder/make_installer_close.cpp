// The end of a build: the makers' checklist, with what is true of this one, and the summary for
// scripts. Main thread. Reads bld.

#include "Installer-f/builder/make_installer_close.h"

#include <cstdio>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_fault.h"
#include "Installer-f/builder/make_installer_say.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/base/hl_json.h"
#include "corekit/base/hl_string.h"

namespace {

constexpr int64_t mb = 1000 * 1000;

std::string mb_text(int64_t bytes) {
  return str_format("%lld MB", static_cast<long long>((bytes + mb / 2) / mb));
}

void say_what_was_made() {
  builder_notice(str_format("%s: %d files, %.6f GB compressed, %d disc(s).", bld.sim_name.c_str(),
                            bld.num_files_com, static_cast<double>(bld.zip_size_ins),
                            bld.dvd_now + 1));
  std::string line = str_format("Release %d, type %d, of %s of files; ", bld.release_version,
                                bld.fog_fals, mb_text(bld.bytes_com).c_str());
  if (!bld.reuse_fold.empty()) {
    line += str_format("%d archives were taken over from the last build, %d made anew; ",
                       bld.num_files_old, bld.num_files_com - bld.num_files_old);
  }
  if (bld.old_dir_path.empty()) {
    line += "without a history.";
  } else {
    line +=
        str_format("%d files of earlier releases are gone since the last one.", bld.num_files_gone);
  }
  builder_notice(line);
}

void say_what_is_next() {
  const std::string folder = dest_dvd(0) + bld.sim_name + "/";
  if (bld.fog_fals != install_base) {
    builder_notice("For discs: script/make_discs " + bld.dst_fold_base + " FOLDER");
  } else if (bld.dvd_now > 0) {
    builder_notice(
        str_format("For mirrors, raise --disk_kb until all fits one disc, or merge the "
                   "folders %s of %d discs.",
                   bld.sim_name.c_str(), bld.dvd_now + 1));
  } else {
    builder_notice("For mirrors: script/publish " + bld.dst_fold_base +
                   " REMOTE..., with the list that --write_server_list writes; or upload " +
                   folder + " by hand, with directory.txt.zip last, and then the list.");
  }
  std::string next = "For the next build:";
  if (bld.fog_fals == install_base) next += " --previous=" + folder + "directory.txt.zip";
  builder_notice(next + " --reuse=" + bld.dst_fold_base);
}

void say_checklist() {
  builder_alert("OK compression is done. Checklist if doing net:",
                str_format("Get the version string and version number of this build, %s and %d, "
                           "into the serverlist.txt file in the internet folder, and bring that to "
                           "the web server.",
                           bld.sim_name.c_str(), bld.release_version),
                "Upload the -NET uploads- folder stuff.",
                "Extract directory.txt.zip to the next previous directory file for use next time.",
                at_build_done);
}

const char* result_word(int status, bool flags_are_wrong) {
  if (flags_are_wrong) return "flags";
  if (status == build_done) return bld.check_only ? "checked" : "built";
  return status > build_by_signal ? "ended" : "failed";
}

}  // namespace

void close_build() {
  if (bld.check_only) {
    builder_notice(
        str_format("%s: %d files, %s, would be built. Nothing is wrong, and nothing was "
                   "written.",
                   bld.sim_name.c_str(), bld.num_files_use, mb_text(bld.bytes_use).c_str()));
    return;
  }
  say_what_was_made();
  say_checklist();
  say_what_is_next();
}

void print_summary(int status, const std::string& why) {
  json_line line("result", result_word(status, !why.empty()));
  line.add("status", status);
  if (!why.empty()) {
    line.add("why", why);
  } else {
    line.add("name", bld.sim_name)
        .add("output", bld.dst_fold_base)
        .add("release", bld.release_version)
        .add("type", bld.fog_fals)
        .add("files_seen", bld.num_files_rec)
        .add("files", bld.num_files_use)
        .add("bytes", bld.bytes_use)
        .add("packed", bld.num_files_com - bld.num_files_old)
        .add("taken_over", bld.num_files_old)
        .add("gone", bld.num_files_gone)
        .add("archive_bytes", bld.zip_bytes)
        .add("discs", bld.num_files_com > 0 ? bld.dvd_now + 1 : 0)
        .add("faults", fault_count())
        .add("warnings", builder_warnings());
  }
  std::printf("%s\n", line.text().c_str());
  std::fflush(stdout);
}
