// What the engine's decisions need to know of a path. Pure functions of their arguments, except
// for the two locations, which read dest_dir_path and, the second, the disk; callable from any
// thread.
#pragma once

#include <string>
#include <string_view>

// Takes the platform folder off a manifest path: removes everything up to and including the first
// "/". Leaves a path without one as it is.
void trim_dest_folder(std::string& path);

// The same without a copy: the part of `path` that is the installed location.
std::string_view installed_part(std::string_view path);

// Where the file of a manifest path lies on disk: dest_dir_path and the installed part.
std::string install_location(std::string_view path);

// Where it lies now. The verification finds a file under another case of letters, too, and it is
// replaced or deleted under the spelling that it has on disk: under the manifest's own, the old one
// would stay beside the new and be found again for ever.
std::string location_on_disk(std::string_view path);

// 1 if `path` names a folder. REQUIRES: not empty.
int path_has_no_file(std::string_view path);

// Whether the installed location of a manifest path stays below the destination: false when it is
// empty or absolute, or holds a ".", ".." or empty component or a NUL. Nothing that the table holds
// fails this.
bool manifest_path_is_safe(std::string_view path);
