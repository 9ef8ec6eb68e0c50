// The disc pipeline's failure record: what the pages that poll it report.
#pragma once

#include <string>

extern int install_err_num;          // last failure's code, 0 none
extern std::string install_err_msg;  // and its message

// The last failure's code, with its message in `message`; clears both.
int install_files_get_error(std::string& message);
