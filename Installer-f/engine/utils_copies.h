// What is known of the installed copies beside their places: the release that each was last brought
// to, its platform, and which edition it was made by. Kept in "skyvane_copies.txt" of the
// preferences folder, by who ends a job; nothing is decided by it. Its form is in docs/formats.md.
//
// Main thread. No failure here goes beyond a line in the log.
#pragma once

#include <string>
#include <vector>

struct copy_facts {
  std::string path;      // as it stands on the list of copies
  std::string release;   // such as "Skyvane 9.00"; empty where nothing is known, and so below
  std::string platform;  // "mac", "windows" or "linux"
  std::string edition;   // "demo" or "full"
};

// The registered folders that exist, in the order of the list, with what is known of each.
std::vector<copy_facts> copies_on_list();

// Notes that the copy at dest_dir_path is now at install_name, for stg.target_os. `edition` empty:
// the one that it had.
void copy_note_release(const char* edition);
void copy_forget(const std::string& path);
