// Unpacking of one fetched archive: unpack, make a program runnable, delete the archive.
//
// Main thread. Writes stg.extract_failed.

#include "Installer-f/utils_unpack.h"

#include "Installer-f/main_stg.h"
#include "corekit/Files/io_7z.h"
#include "corekit/Files/io_utils.h"
#include "corekit/Files/io_zip.h"
#include "corekit/GenC/hl_alert.h"
#include "corekit/GenH/hl_string.h"
#include "corekit/OOPS_cpp/exce.h"
#include "corekit/UTL/UTL_translate.h"

void extract_and_delete_file(const std::string& archive, const std::string& location) {
  const std::string folder(path_folder(location));
  const int code = archive.ends_with(".7z") ? p7z_to_file(archive, folder, nullptr, 0)
                                            : zip_to_file(archive, folder, nullptr, 0);
  if (code != 0) {
    stg.extract_failed = 1;
    __MACIBM_alert(0, UTL_translate_string("The installer cannot extract a file."),
                   UTL_translate_string("Error: ") + UTL_translate_string(error_str(code)),
                   UTL_translate_string("Compressed File: ") + archive,
                   UTL_translate_string("Destination: ") + location, t_alert, "Installer-f/utils",
                   2288);
  }
  // The main program of a bundle must be runnable, whatever its archive says.
  int chmod_code = 0;
  const bool is_program = str_holds(location, "Contents/MacOS/");
  if (is_program) chmod_code = make_file_executable(location.c_str());
  if (stg.log_actions != 0) {
    xer << "EXPANDING file " << location << ", with result=" << code << ".\n";
    xer << "CHMODING  file " << location << ", with result=" << chmod_code << ".\n";
  }
  delete_file(archive);
}
