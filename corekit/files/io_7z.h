// 7z archives, which carry the global scenery tiles on a disc. They are made outside this program:
// there is a reader only. They bring no forks, no links, no permissions and no dates.
#pragma once

#include <string>

// Unpacks the 7z archive (no other format) at `archive_path`. `out_folder` is a plain prefix of
// each entry's name, so it ends in "/"; folder entries are passed over. With `use_name` set, the
// first entry is written as `out_folder` + `*name`. `name`, if not null, receives each entry's
// whole output path, so the last entry's stays. app_path is prefixed to both paths. The same
// mistrust as in zip_to_file holds for names, links and sizes. May run on several threads at once.
//
// Returns 0 or a code for error_str: errno, 20001 no 7z archive, or a damaged or empty one; 20002
// damaged, encrypted, or an entry that must not be written; 20004 a short write; 12 no memory;
// 27 more bytes than an archive of this size holds. What was written before a failure stays.
int p7z_to_file(const std::string& archive_path, const std::string& out_folder, std::string* name,
                int use_name);
