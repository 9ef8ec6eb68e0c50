// Unpacking of one fetched archive into its place. Main thread, runs inline.
#pragma once

#include <string>

// Unpacks `archive` into the folder of `location` and deletes it, whether that worked or not. A
// failure is shown to the user and sets stg.extract_failed.
void extract_and_delete_file(const std::string& archive, const std::string& location);
