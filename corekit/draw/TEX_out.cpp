// Files of pictures that appear whole or not at all. Main thread; writes the log.

#include "corekit/draw/TEX_out.h"

#include <cerrno>

#include "corekit/base/exce.h"
#include "corekit/files/io_utils.h"

TEX_out::TEX_out(const std::string& path)
    : path_(path_checked(app_path + path)), partial_(path_ + ".part") {
  stream_ = std::fopen(partial_.c_str(), "wb");
  if (!stream_) xer << "WARNING: cannot write " << path_ << ": " << error_str(errno) << "\n";
}

TEX_out::~TEX_out() {
  if (!stream_) return;
  std::fclose(stream_);
  std::remove(partial_.c_str());
}

int TEX_out::finish(bool written) {
  if (!stream_) return 0;
  written = !std::ferror(stream_) && written;
  errno = 0;
  if (std::fclose(stream_) != 0) written = false;
  stream_ = nullptr;
  if (written && std::rename(partial_.c_str(), path_.c_str()) == 0) return 1;
  xer << "WARNING: cannot write " << path_ << ": " << error_str(errno) << "\n";
  std::remove(partial_.c_str());
  return 0;
}
