// What is wrong with a tree, a manifest or a build: collected, and told all at once, so that a
// maker mends a tree in one go. Main thread.
#pragma once

#include <string>
#include <vector>

enum fault_kind : int {
  // names and paths
  fault_blank_end,
  fault_separator,
  fault_line_end,
  fault_blank_start,
  fault_too_long,
  // what never ships
  fault_copy,
  fault_source_code,
  fault_preferences,
  fault_sibling,
  // where things lie
  fault_in_all,
  fault_foreign,
  fault_platform,
  fault_missing,
  fault_no_kind,
  // what cannot be packed
  fault_program,
  fault_link,
  fault_too_large,
  fault_archive_place,
  fault_volume,
  fault_folder,
  fault_discs,
  // what was handed over beside the tree
  fault_history,
  fault_twice,
  fault_release,
  fault_output,
  // while the master was being made
  fault_build,
  fault_quit,
  fault_kinds
};

// Notes a fault. `said` is what the makers know it by, in up to four lines; `place` is the path to
// mend, `detail` what the rule's own words leave open. A second fault of one kind at one place is
// the same one.
void add_fault(fault_kind kind, const std::vector<std::string>& said, const std::string& place,
               const std::string& detail = "");

// How many there are.
int fault_count();

// Tells them: to the log all, to standard error at most 50, some of each kind; then how many there
// are. After each fault's own text a plain line names the place, the rule and the remedy.
void tell_faults();

// Forgets them: a new tree.
void clear_faults();
