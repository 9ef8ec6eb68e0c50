// Unpacking of one archive into its place.
//
// A file under its own name is always whole: it is unpacked beside its place and moved into it. If
// the program wrote there and was stopped half-way, the next run would meet a file that no release
// ever shipped, take it for the user's work, and keep it.
#pragma once

#include <string>
#include <string_view>

// What a stopped run may leave in a folder; hidden, and written over by the next run.
inline constexpr std::string_view part_name = ".skyvane_part";

// The archive is whole, but holds another file than the manifest speaks of.
inline constexpr int unpack_wrong_file = 20100;

// Unpacks `archive` as the file at `location`, by way of a file named `part` in the same folder,
// which no other call may use at the same time. Folders that are missing below the first `base`
// characters of the location are made. The main program of a bundle is made runnable, with the
// outcome in `chmod_code`. What does not have the signature `sig_want` (if that is one) never gets
// to its place. 0, unpack_wrong_file, or a code of the archive layer or of the system. Any thread.
int unpack_into_place(const std::string& archive, const std::string& location, size_t base,
                      std::string_view part, std::string_view sig_want, int& chmod_code);

// The same with a fetched archive, which is then deleted, whether that worked or not. A failure is
// shown to the user and sets stg.extract_failed, but for the wrong file, which another mirror may
// have right: then the result is false. Main thread.
bool extract_and_delete_file(const std::string& archive, const std::string& location,
                             std::string_view sig_want);
