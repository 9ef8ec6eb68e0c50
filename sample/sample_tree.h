// A source tree in memory, edited from one version to the next, then written to disk.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <string>

// What a file's bytes look like.
enum class content {
  text,     // lines of words
  data,     // binary that compresses to about half
  tile,     // the text of a made-up scenery tile
  program,  // a Windows program that does nothing
  script,   // a program of the other platforms, which says that it was started
  link,     // no bytes: a symbolic link
};

struct sample_file {
  content kind = content::text;
  size_t size = 0;   // bytes; a script has its own size, and a program at least that of its headers
  int revision = 0;  // another revision has other bytes
  mode_t mode = 0644;
  std::string target;     // of a link
  bool ready_7z = false;  // an archive made by hand lies beside it
};

// By path below the tree's root; folders are those that the paths need, and `folders` more.
struct sample_tree {
  std::map<std::string, sample_file> files;
  std::map<std::string, int> folders;  // made though nothing lies in them
};

// The bytes of a file: a function of its path and its record alone.
std::string sample_content(const std::string& path, const sample_file& file);

// Writes the tree below `root`, which must not exist; its parent must. Returns 0, or 1 after saying
// on standard error what failed.
int write_sample_tree(const sample_tree& tree, const std::string& root);
