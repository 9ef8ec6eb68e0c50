// Warnings about a master that is well formed and yet will not install as the makers think. Main
// thread; what is noted is of one tree, and started anew by note_installed_places.
#pragma once

#include <string_view>

void note_installed_places();  // of bld.comp_files; warns of two files at one place
void warn_if_still_shipped(std::string_view path, int os);      // of a manifest path that has gone
void note_archive_kind(std::string_view relative, bool is_7z);  // of each archive made
void warn_of_archive_kinds();                                   // at the end, in all
