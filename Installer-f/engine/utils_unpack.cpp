// Steps: unpack beside the place; make a program runnable; move it into the place. For a fetched
// archive also: tell the user of a failure, delete the archive.
//
// Written on the main thread, in the second form only: stg.extract_failed and grab_totals.

#include "Installer-f/engine/utils_unpack.h"

#include <cerrno>

#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_7z.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip.h"

namespace {

int unpack_as(const std::string& archive, const std::string& folder, std::string_view name) {
  std::string as(name);
  return archive.ends_with(".7z") ? p7z_to_file(archive, folder, &as, 1)
                                  : zip_to_file(archive, folder, &as, 1);
}

// Replaces what is at `location` in one step. An empty folder there holds nothing to lose and makes
// room; any other stays, and the file is the one that gives way.
int move_into_place(const std::string& folder, const std::string& part,
                    const std::string& location) {
  const std::string leaf(path_leaf(location));
  int code = rename_file(folder, part, leaf);
  if (code == EISDIR && delete_file(location + "/") == 0) code = rename_file(folder, part, leaf);
  // A link whose folder is missing is passed over by the archive layer: then there is no part.
  return code == ENOENT ? 0 : code;
}

// The folder was there when the transfer began; it is missing where it had to wait for a dropped
// file of the same name to go, or where somebody has removed it since.
void make_folders_above(const std::string& location, size_t base) {
  for (size_t slash = location.find('/', base); slash != std::string::npos;
       slash = location.find('/', slash + 1))
    make_folder(location.substr(0, slash));
}

// The main program of a bundle must be runnable, whatever its archive says.
bool is_program(const std::string& location) {
  return str_holds(location, "Contents/MacOS/");
}

// A mirror may lie, or be behind. A manifest without a signature has nothing to compare.
int check_signature(const std::string& path, std::string_view sig_want) {
  constexpr size_t signature_length = 32;
  if (sig_want.size() != signature_length) return 0;
  std::string sig;
  if (const int code = calc_file_md5(path, sig)) return code;
  return sig == sig_want ? 0 : unpack_wrong_file;
}

}  // namespace

int unpack_into_place(const std::string& archive, const std::string& location, size_t base,
                      std::string_view part_leaf, std::string_view sig_want, int& chmod_code) {
  const std::string folder(path_folder(location));
  const std::string part = folder + std::string(part_leaf);
  int code = EACCES;
  if (part.size() <= path_limit) {
    code = unpack_as(archive, folder, part_leaf);
    if (code == ENOENT) {
      make_folders_above(location, base);
      code = unpack_as(archive, folder, part_leaf);
    }
    if (code == 0) code = check_signature(part, sig_want);
    // Runnable before it has its name: a stop in between would leave a program that does not start
    // and whose signature is right.
    if (code == 0 && is_program(location)) chmod_code = make_file_executable(part.c_str());
    if (code == 0) code = move_into_place(folder, std::string(part_leaf), location);
    if (code != 0) delete_file(part);
  }
  // A folder that takes no new file may still let the old one be written.
  if (code != EACCES) return code;
  code = unpack_as(archive, folder, path_leaf(location));
  if (is_program(location)) chmod_code = make_file_executable(location.c_str());
  return code;
}

bool extract_and_delete_file(const std::string& archive, const std::string& location,
                             std::string_view sig_want) {
  int chmod_code = 0;
  const int code =
      unpack_into_place(archive, location, dest_dir_path.size(), part_name, sig_want, chmod_code);
  if (code == 0) {
    ++grab_totals.fetched;
  } else if (code == unpack_wrong_file) {
    xer << "WARNING: the server sent another file in place of " << location << '\n';
  } else {
    stg.extract_failed = 1;
    __MACIBM_alert(0, "The installer cannot extract a file.",
                   UTL_translate_string("Error: ") + UTL_translate_string(error_str(code)),
                   UTL_translate_string("Compressed File: ") + archive,
                   UTL_translate_string("Destination: ") + location, t_alert, "Installer-f/utils",
                   2288);
  }
  if (stg.log_actions != 0) {
    xer << "EXPANDING file " << location << ", with result=" << code << ".\n";
    xer << "CHMODING  file " << location << ", with result=" << chmod_code << ".\n";
  }
  delete_file(archive);
  return code != unpack_wrong_file;
}
