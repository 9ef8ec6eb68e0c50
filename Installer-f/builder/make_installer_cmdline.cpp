// The builder's flags, checked as a whole before anything is touched: a build takes hours, and a
// wrong flag should not show at its end.
//
// Main thread. Writes what make_installer.h says a build is told, from the command line.

#include "Installer-f/builder/make_installer_cmdline.h"

#include <charconv>
#include <climits>
#include <cstdlib>
#include <string_view>

#include "Installer-f/builder/make_installer.h"
#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_servers.h"
#include "Installer-f/builder/make_installer_tree.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"

namespace {

constexpr char flag_build[] = "--build_master";
constexpr char flag_list[] = "--write_server_list";
constexpr char flag_source[] = "--source";
constexpr char flag_output[] = "--output";
constexpr char flag_previous[] = "--previous";
constexpr char flag_type[] = "--type";
constexpr char flag_name[] = "--name";
constexpr char flag_release[] = "--release";
constexpr char flag_disk[] = "--disk_kb";
constexpr char flag_mirrors[] = "--mirrors";

constexpr int disk_kb_limit = 2'000'000'000;  // 2 terabytes a disc, far above any medium

// What the checks found wrong: empty while nothing is.
using complaint = std::string;

complaint read_number(const char* flag, int low, int high, int* value) {
  if (!cmdline.has_option(flag)) return {};
  const std::string text = cmdline.get_option(flag);
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < low || number > high) {
    return str_format("%s needs a whole number from %d to %d, not \"%s\".", flag, low, high,
                      text.c_str());
  }
  *value = number;
  return {};
}

complaint read_path(const char* flag, bool folder, std::string* path) {
  if (!cmdline.has_option(flag)) return {};
  const std::string text = cmdline.get_option(flag);
  if (text.empty()) return str_format("%s needs a path behind its \"=\".", flag);
  *path = folder ? folder_from_start(text) : from_start_folder(text);
  return {};
}

// The release's name is a folder on every disc and server, and a line of the disc's label and of
// the server list.
complaint check_release_name(const std::string& name) {
  const auto wrong = [&name](const char* why) {
    return str_format("%s needs a plain folder name: \"%s\" %s.", flag_name, name.c_str(), why);
  };
  if (name.empty()) return wrong("is empty");
  if (name == "." || name == "..") return wrong("is no name");
  if (name.front() == ' ' || name.back() == ' ') return wrong("has a blank at an end");
  for (const char c : name) {
    if (c == '/' || c == '\\' || c == ':') return wrong("holds a separator of folders");
    if (static_cast<unsigned char>(c) < ' ' || c == 0x7F) return wrong("holds a control character");
  }
  return {};
}

complaint read_name(int region) {
  if (cmdline.has_option(flag_name)) bld.build_name[region] = cmdline.get_option(flag_name);
  return check_release_name(bld.build_name[region]);
}

// The folder with every link resolved and a "/" behind it; empty if there is none.
std::string real_folder(const std::string& path) {
  char* const real = realpath(path.c_str(), nullptr);
  if (real == nullptr) return {};
  std::string folder = real;
  std::free(real);
  if (!folder.ends_with('/')) folder += '/';
  return folder;
}

complaint check_folders() {
  if (!dir_exists(bld.src_fold)) return "The source folder does not exist: " + bld.src_fold;
  // The tree's rules are held against whole paths, so they would find this in every file.
  if (const char* const part = path_trouble(bld.src_fold)) {
    return str_format(
               "The source tree cannot be built from below this folder, whose own path "
               "holds \"%s\": ",
               part) +
           bld.src_fold;
  }
  const std::string& output = bld.dst_fold_base;
  // The manifest is read back from there, and the reader takes neither.
  if (output.find_first_of(":\\") != std::string::npos)
    return "The output folder's path holds a \":\" or a \"\\\": " + output;
  std::string real_output = real_folder(output);
  if (real_output.empty()) {
    const std::string bare = output.substr(0, output.size() - 1);
    if (file_exists(bare)) return "The output folder is a file: " + bare;
    real_output = real_folder(std::string(path_folder(bare)));
    if (real_output.empty()) return "There is no folder to make the output folder in: " + output;
    real_output += std::string(path_leaf(bare)) + "/";
  }
  // The walk would meet the master that is being written.
  if (real_output.starts_with(real_folder(bld.src_fold)))
    return "The output folder lies within the source tree: " + output;
  return {};
}

complaint read_build_flags(int type) {
  bld.fog_fals = type;
  complaint wrong = read_path(flag_source, true, &bld.src_fold);
  if (wrong.empty()) wrong = read_path(flag_output, true, &bld.dst_fold_base);
  if (wrong.empty() && cmdline.get_option(flag_previous) == "none") {
    bld.old_dir_path.clear();
  } else if (wrong.empty()) {
    wrong = read_path(flag_previous, false, &bld.old_dir_path);
  }
  int disk_kb = static_cast<int>(bld.disc_limit_kb);
  if (wrong.empty()) wrong = read_number(flag_disk, 1, disk_kb_limit, &disk_kb);
  bld.disc_limit_kb = static_cast<float>(disk_kb);
  if (wrong.empty()) wrong = check_folders();
  return wrong;
}

int refuse(const complaint& wrong) {
  builder_notice(wrong);
  return 2;
}

int build() {
  if (!dir_exists(bld.dst_fold_base)) {
    const int code = make_folder(bld.dst_fold_base);
    if (code != 0) {
      builder_notice("The output folder could not be made: " + bld.dst_fold_base + " (" +
                     error_str(code) + ")");
      return 1;
    }
  }
  if (cmdline.has_option(flag_previous) && bld.fog_fals != install_base &&
      !bld.old_dir_path.empty()) {
    builder_notice(
        "The previous manifest is not used: only a build of type 0 carries the history on.");
  }
  build_install();
  return 0;
}

}  // namespace

int run_master_builder() {
  g_case_sensitive = 0;
  const bool want_build = cmdline.has_option(flag_build);
  const bool want_list = cmdline.has_option(flag_list);

  int type = bld.fog_fals;
  complaint wrong = read_number(flag_type, install_base, install_moon, &type);
  if (!wrong.empty()) return refuse(wrong);
  const int region = type <= install_earth ? 0 : type - install_earth;
  wrong = read_number(flag_release, 1, INT_MAX, &bld.release_version);
  if (wrong.empty()) wrong = read_name(region);
  if (wrong.empty() && want_build) wrong = read_build_flags(type);

  std::string list_path;
  const std::string mirrors = cmdline.get_option(flag_mirrors);
  if (wrong.empty() && want_list) wrong = read_path(flag_list, false, &list_path);
  if (wrong.empty() && want_list) wrong = server_list_complaint(mirrors);
  if (!wrong.empty()) return refuse(wrong);

  if (want_build) {
    const int status = build();
    if (status != 0) return status;
  }
  return want_list ? write_server_list(list_path, bld.build_name[region], mirrors) : 0;
}
