// The failure record of the disc pipeline. Main thread.

#include "Installer-f/utils_disc.h"

int install_err_num = 0;
std::string install_err_msg;

int install_files_get_error(std::string& message) {
  const int code = install_err_num;
  message = install_err_msg;
  install_err_num = 0;
  install_err_msg.clear();
  return code;
}
