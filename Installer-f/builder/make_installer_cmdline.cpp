// The builder's flags, checked as a whole before anything is touched: a build takes hours, and a
// wrong flag should not show at its end.
//
// Main thread. Writes what make_installer.h says a build is told, from the command line.

#include "Installer-f/builder/make_installer_cmdline.h"

#include <sys/stat.h>

#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "Installer-f/builder/make_installer.h"
#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_close.h"
#include "Installer-f/builder/make_installer_reuse.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_servers.h"
#include "Installer-f/builder/make_installer_sign.h"
#include "Installer-f/builder/make_installer_tree.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/sign.h"

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
constexpr char flag_check[] = "--check";
constexpr char flag_json[] = "--json";
constexpr char flag_reuse[] = "--reuse";
constexpr char flag_verify[] = "--verify_reuse";
constexpr char flag_verify_2[] = "--verify-reuse";  // the same
constexpr char flag_threads[] = "--threads";
constexpr char flag_sign[] = "--sign";
constexpr char flag_password[] = "--sign_password_fd";
constexpr char flag_serial[] = "--sign_serial";
constexpr char flag_days[] = "--sign_days";
constexpr char flag_statement[] = "--sign_statement";
constexpr char flag_master[] = "--sign_master";
constexpr char flag_sign_list[] = "--sign_list";
constexpr char flag_final[] = "--sign_final";
constexpr char flag_beta[] = "--sign_beta";

constexpr int threads_limit = 256;
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

complaint check_source() {
  if (!dir_exists(bld.src_fold)) return "The source folder does not exist: " + bld.src_fold;
  // The tree's rules are held against whole paths, so they would find this in every file.
  if (const char* const part = path_trouble(bld.src_fold)) {
    return str_format(
               "The source tree cannot be built from below this folder, whose own path "
               "holds \"%s\": ",
               part) +
           bld.src_fold;
  }
  return {};
}

// The output folder, or the one it is to be made in, with every link resolved; empty if neither is
// there.
std::string real_output_folder() {
  const std::string& output = bld.dst_fold_base;
  std::string real = real_folder(output);
  if (!real.empty()) return real;
  const std::string bare = output.substr(0, output.size() - 1);
  const std::string above = real_folder(std::string(path_folder(bare)));
  return above.empty() ? above : above + std::string(path_leaf(bare)) + "/";
}

complaint check_output() {
  const std::string& output = bld.dst_fold_base;
  // The manifest is read back from there, and the reader takes neither.
  if (output.find_first_of(":\\") != std::string::npos)
    return "The output folder's path holds a \":\" or a \"\\\": " + output;
  const std::string bare = output.substr(0, output.size() - 1);
  if (file_exists(bare)) return "The output folder is a file: " + bare;
  const std::string real = real_output_folder();
  if (real.empty()) return "There is no folder to make the output folder in: " + output;
  // The walk would meet the master that is being written.
  if (real.starts_with(real_folder(bld.src_fold)))
    return "The output folder lies within the source tree: " + output;
  return {};
}

// Archives are taken over by hard links, which do not cross volumes.
complaint check_reuse() {
  if (bld.reuse_fold.empty()) return {};
  struct stat last, next;
  const std::string real = real_output_folder();
  const std::string there =
      dir_exists(real) ? real : std::string(path_folder(real.substr(0, real.size() - 1)));
  if (stat(bld.reuse_fold.c_str(), &last) == 0 && stat(there.c_str(), &next) == 0 &&
      last.st_dev != next.st_dev) {
    return "--reuse and --output must be on one volume: " + bld.reuse_fold + ", " +
           bld.dst_fold_base;
  }
  return load_reuse();
}

// SOURCE_DATE_EPOCH, as other tools of reproducible builds have it: seconds since 1970.
complaint read_source_date() {
  const char* const text = std::getenv("SOURCE_DATE_EPOCH");
  if (!text || !*text) return {};
  const char* const end = text + std::strlen(text);
  int64_t seconds = -1;
  const auto [stop, error] = std::from_chars(text, end, seconds);
  if (error != std::errc() || stop != end || seconds < 0)
    return str_format("SOURCE_DATE_EPOCH needs a number of seconds, not \"%s\".", text);
  bld.source_date = static_cast<time_t>(seconds);
  return {};
}

complaint read_previous() {
  if (cmdline.get_option(flag_previous) != "none")
    return read_path(flag_previous, false, &bld.old_dir_path);
  bld.old_dir_path.clear();
  return {};
}

complaint read_build_flags(int type) {
  bld.fog_fals = type;
  bld.check_only = cmdline.has_option(flag_check);
  bld.verify_reuse = cmdline.has_option(flag_verify) || cmdline.has_option(flag_verify_2);
  int disk_kb = static_cast<int>(bld.disc_limit_kb);
  complaint wrong = read_path(flag_source, true, &bld.src_fold);
  if (wrong.empty()) wrong = read_path(flag_output, true, &bld.dst_fold_base);
  if (wrong.empty()) wrong = read_path(flag_reuse, true, &bld.reuse_fold);
  if (wrong.empty()) wrong = read_previous();
  if (wrong.empty()) wrong = read_number(flag_disk, 1, disk_kb_limit, &disk_kb);
  if (wrong.empty()) wrong = read_number(flag_threads, 1, threads_limit, &bld.threads);
  if (wrong.empty()) wrong = read_source_date();
  bld.disc_limit_kb = static_cast<float>(disk_kb);
  if (wrong.empty()) wrong = check_source();
  // A check writes nothing, and need not be told where to.
  if (wrong.empty() && (!bld.check_only || cmdline.has_option(flag_output))) wrong = check_output();
  if (wrong.empty()) wrong = check_reuse();
  return wrong;
}

// A flag that is misspelt would be a build by its default. What there is stands in the usage text.
complaint check_spelling() {
  const std::string usage = UTL_cmdline_usage();
  for (const std::string& flag : cmdline.all_options()) {
    if (flag == flag_verify_2 || flag.starts_with("--pref:")) continue;
    bool known = false;
    for (size_t at = usage.find(flag); !known && at != usage.npos; at = usage.find(flag, at + 1)) {
      const char next = usage[at + flag.size()];
      known = flag.starts_with("--") && (next == '=' || next == ' ' || next == '\n');
    }
    if (!known) return "There is no flag \"" + flag + "\" (a value follows its flag behind \"=\").";
  }
  return {};
}

// --- signing ------------------------------------------------------------------------------------

struct sign_flags {
  maker_key key;
  sign_order order;
  bool is_wanted = false;
  std::string master, list;  // to be signed as they are; empty: none
};

complaint read_serial(int64_t* serial) {
  if (!cmdline.has_option(flag_serial)) return {};
  const std::string text = cmdline.get_option(flag_serial);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *serial);
  if (error == std::errc() && end == text.data() + text.size() && *serial > 0 &&
      *serial <= sign_most_serial) {
    return {};
  }
  return str_format("%s needs a whole number above 0, not \"%s\".", flag_serial, text.c_str());
}

// A build may take hours: the key, its password and the serial are looked at before it begins.
complaint read_sign_flags(sign_flags* sign, std::string* list_path) {
  int password_fd = -1;
  std::string key_path;
  complaint wrong = read_path(flag_sign, false, &key_path);
  if (wrong.empty()) wrong = read_number(flag_password, 0, INT_MAX, &password_fd);
  if (wrong.empty()) wrong = read_serial(&sign->order.serial);
  if (wrong.empty()) wrong = read_number(flag_days, 1, 10000, &sign->order.days);
  if (wrong.empty()) wrong = read_path(flag_statement, false, &sign->order.statement);
  if (wrong.empty()) wrong = read_path(flag_final, false, &sign->order.final_program);
  if (wrong.empty()) wrong = read_path(flag_beta, false, &sign->order.beta_program);
  if (wrong.empty()) wrong = read_path(flag_master, true, &sign->master);
  if (wrong.empty()) wrong = read_path(flag_sign_list, false, &sign->list);
  if (wrong.empty()) wrong = read_source_date();
  if (!wrong.empty()) return wrong;

  sign->is_wanted = !key_path.empty() || !sign->order.statement.empty();
  const bool has_work = cmdline.has_option(flag_build) || !list_path->empty() ||
                        !sign->master.empty() || !sign->list.empty();
  if (!sign->is_wanted && !(sign->master.empty() && sign->list.empty()))
    return "Signing needs a key, --sign=KEYFILE, or a file for the statement, "
           "--sign_statement=FILE.";
  if (!sign->is_wanted) return {};
  if (!has_work) return "There is nothing to sign.";
  if (!key_path.empty() && !sign->order.statement.empty())
    return "--sign and --sign_statement are two ways: the key signs, or it is elsewhere.";
  if (!sign->order.statement.empty() &&
      (cmdline.has_option(flag_build) || sign->master.empty() == sign->list.empty())) {
    return "--sign_statement is for one --sign_master or one --sign_list.";
  }
  const int64_t serial = sign->order.serial > 0 ? sign->order.serial : bld.source_date;
  if (cmdline.has_option(flag_build) && serial > 0 && serial <= signed_serial(bld.old_dir_path))
    return "--sign_serial is not above that of the previous release: installers would refuse it.";
  return key_path.empty() ? complaint() : sign->key.read(key_path, password_fd);
}

complaint read_flags(std::string* list_path, sign_flags* sign) {
  if (complaint unknown = check_spelling(); !unknown.empty()) return unknown;
  const bool want_build = cmdline.has_option(flag_build);
  if (!want_build && cmdline.has_option(flag_check)) return "--check is of a --build_master alone.";
  int type = bld.fog_fals;
  complaint wrong = read_number(flag_type, install_base, install_moon, &type);
  const int region = type <= install_earth ? 0 : type - install_earth;
  bld.reg = region;
  if (wrong.empty()) wrong = read_number(flag_release, 1, INT_MAX, &bld.release_version);
  if (wrong.empty()) wrong = read_name(region);
  if (wrong.empty() && want_build) wrong = read_build_flags(type);
  if (wrong.empty() && cmdline.has_option(flag_list)) {
    wrong = read_path(flag_list, false, list_path);
    if (wrong.empty()) wrong = server_list_complaint(cmdline.get_option(flag_mirrors));
  }
  if (wrong.empty()) wrong = read_sign_flags(sign, list_path);
  return wrong;
}

int sign_what_is_there(const sign_flags& sign) {
  int status = build_done;
  if (!sign.master.empty()) status = sign_master(sign.master, sign.key, sign.order);
  if (status == build_done && !sign.list.empty())
    status = sign_server_list(sign.list, sign.key, sign.order);
  return status;
}

int run(const std::string& list_path, const sign_flags& sign) {
  if (cmdline.has_option(flag_build)) {
    if (cmdline.has_option(flag_previous) && bld.fog_fals != install_base &&
        !bld.old_dir_path.empty()) {
      builder_notice(
          "The previous manifest is not used: only a build of type 0 carries the history on.");
    }
    int status = build_install();
    if (status == build_done && sign.is_wanted && !bld.check_only)
      status = sign_master(bld.dst_fold_base, sign.key, sign.order);
    if (status != build_done) return status;
  }
  if (bld.check_only) return build_done;
  if (cmdline.has_option(flag_list)) {
    int status =
        write_server_list(list_path, bld.build_name[bld.reg], cmdline.get_option(flag_mirrors));
    if (status == build_done && sign.is_wanted)
      status = sign_server_list(list_path, sign.key, sign.order);
    if (status != build_done) return status;
  }
  return sign_what_is_there(sign);
}

}  // namespace

int run_master_builder() {
  constexpr int flags_make_no_sense = 2;
  g_case_sensitive = 0;
  std::string list_path;
  sign_flags sign;
  const complaint wrong = read_flags(&list_path, &sign);
  if (!wrong.empty()) builder_notice(wrong);
  const int status = wrong.empty() ? run(list_path, sign) : flags_make_no_sense;
  if (cmdline.has_option(flag_json)) print_summary(status, wrong);
  return status;
}
