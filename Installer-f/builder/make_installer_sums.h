// directory.sum: what each archive of a master is, read back from the master. Main thread.
#pragma once

#include <string>

// Reads every archive of the release `name` below `output` (trailing "/"), the root of its discs,
// which the manifest in sim_info lists: hashes it, unpacks it, and holds the content against the
// manifest's signature. `sums` receives the text. False after a fault, or when the maker has ended
// it.
bool make_sums(const std::string& output, const std::string& name, std::string& sums);
