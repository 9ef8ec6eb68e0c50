// Words for the codes of all services. Any thread.

#include <cstdio>

#include "corekit/base/UTL_translate.h"
#include "corekit/files/io_utils.h"

namespace {
struct code_message {
  int code;
  UTL_text message;
};

// The archive layer's codes, then errno as the family's first system numbers it, then the codes of
// that system's file manager. The slips are the family's own.
constexpr code_message kErrMsgs[] = {
    {20001, "We were unable to open a zip file. It may be missing or damaged"},
    {20002, "We were unable to read from a zip file. It may be missing or damaged"},
    {20003, "We were unable to create a zip file"},
    {20004, "We were unable to write to a zip file. It may be missing or damaged"},
    {20005,
     "We cannot compress a zip file because its source file resource fork is more than 2 GB. The "
     "source file is probably damaged"},
    {20006, "We could not open a file to read from it"},
    {20007, "We were unable to connct to the network due to an internal reconnect error"},
    {20008, "We wre unable to connect to the network due to a bad state error"},
    {20009, "We could not allocate a connection to the network"},
    {20010, "We could not write the incoming file from the web to disk"},
    {20011, "We could not find the server over the network"},
    {20012, "Part of the downloaded zip file is corrupted (the resource fork header is bad)"},
    {20013, "It is not signed by the makers of Skyvane"},
    {20014, "Its signature is damaged"},
    {20015, "It is signed with a key that this program does not know"},
    {20016, "It is not what the makers of Skyvane have signed"},
    {20017, "It was signed for another use than this one"},
    {20018, "It is older than what this program has seen before"},
    {20019,
     "It was changed while the installer was at work. Start the installer again, and it will ask "
     "about this file"},
    {35, "Resource temporarily unavailable"},
    {11, "Resource deadlock avoided"},
    {63, "File name too long"},
    {78, "Function not implemented"},
    {66, "Directory not empty"},
    {92, "Wide character encoding error"},
    {7, "Argument list too long"},
    {13, "Permission denied. Perhaps you do not have access to a directory or file system"},
    {9, "Bad file descriptor"},
    {16, "Device busy"},
    {10, "No child processes"},
    {33, "Numerical argument out of domain"},
    {17, "File exists"},
    {14, "Bad address"},
    {27, "File too large"},
    {4, "Interrupted system call"},
    {22, "Invalid argument"},
    {5, "Input/output error"},
    {21, "Is a directory"},
    {24, "Too many open files"},
    {31, "Too many links"},
    {23, "Too many open files in system"},
    {19, "Operation not supported by device"},
    {2, "No such file or directory"},
    {8, "Exec format error"},
    {77, "No locks available"},
    {12, "Out of memory"},
    {28, "No space left on device. Perhaps your hard drive is full"},
    {20, "Not a directory"},
    {25, "Inappropriate ioctl for device"},
    {6, "Device not configured"},
    {1, "Operation not permitted. Perhaps you do not have access to a directory or file system"},
    {32, "Broken pipe"},
    {34, "Result too large"},
    {30, "The destination file system is read-only"},
    {29, "Illegal seek"},
    {3, "No such process"},
    {18, "Cross-device link"},
    {40, "Too many symbolic links, or one where none may be"},
    {75, "A value is too large for this system"},
    {110, "The connection timed out"},
    {116, "A network volume has lost this file"},
    {122, "Your share of this disk is used up"},
    {123, "There is no disc in the drive"},
    {-43, "File not found"},
    {-50, "param err"},
    {-33, "Directory is full"},
    {-34, "The disk is full"},
    {-35, "no such volume"},
    {-36, "An internal I/O error occurred"},
    {-37, "bad name"},
    {-38, "file not open"},
    {-39, "end of file"},
    {-40, "position error"},
    {-41, "Memory is full"},
    {-42, "Too many files open"},
    {-44, "A disk is write protected"},
    {-45, "File locked"},
    {-46, "Hard disk is locked"},
    {-47, "A file is in use by another application"},
    {-48, "duplicate file name"},
    {-49, "File already open with write permissions by another application"},
    {-51, "refnum error"},
    {-52, "get file position error"},
    {-53, "A needed volume is offline"},
    {-54, "Permissions error - perhaps you do not have access to a directory"},
    {-56, "no such drive"},
    {-57, "Not a macintosh disk"},
    {-60, "bad master directory block"},
    {-61, "Write permissions error - perhaps you do not have enough access to a directory"},
    {-120, "directory not found"},
    {-108, "Out of memory (memory is full)"},
    {-5000, "You have insufficient privileges for this operation"},
};

// Conditions of the table that this system counts under other numbers, where no row claims the
// number: a user is to read "Directory not empty" here as well. Numbers that mean something else in
// the table (11, 35) keep its meaning.
struct code_alias {
  int code;
  int row;
};
constexpr code_alias aliases[] = {
    {36, 63},  // file name too long
    {37, 77},  // no locks
    {38, 78},  // not implemented
    {39, 66},  // folder not empty
    {84, 92},  // wide character encoding
};

const char* find_message(int code) {
  for (const code_message& row : kErrMsgs) {
    if (row.code == code) return row.message;
  }
  return nullptr;
}
}  // namespace

const char* error_str(int code) {
  if (const char* message = find_message(code)) return message;
  for (const code_alias& alias : aliases) {
    if (alias.code == code) return find_message(alias.row);
  }
  // Each thread has a buffer of its own: workers word their failures at the same time.
  static thread_local char unknown[64];
  std::snprintf(unknown, sizeof unknown, "Unknown error occurred (%d)", code);
  return unknown;
}

int show_make_dir_err(int code) {
  constexpr int exists = 17, duplicate_name = -48;
  return code != 0 && code != exists && code != duplicate_name;
}

int show_del_err(int) {
  return 0;  // a file that will not go is left behind, and the install goes on
}
