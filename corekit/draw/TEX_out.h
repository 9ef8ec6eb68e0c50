// A picture's file on its way to the disk: written beside its place, and moved there once whole.
// For the writers of picture files; the main thread.
#pragma once

#include <cstdio>
#include <string>

class TEX_out {
 public:
  explicit TEX_out(const std::string& path);
  ~TEX_out();
  TEX_out(const TEX_out&) = delete;
  TEX_out& operator=(const TEX_out&) = delete;

  std::FILE* stream() const { return stream_; }  // null if it did not open
  // Closes the file and, if all was `written`, puts it in its place. 1; or 0 with a line in the
  // log, and no new file.
  int finish(bool written);

 private:
  std::string path_, partial_;
  std::FILE* stream_ = nullptr;
};
