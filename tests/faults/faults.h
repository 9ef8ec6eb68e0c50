// The kinds of calls that faults.cpp counts and spoils, and its door for memory.

#pragma once

#include <cstddef>

// In the order of kind_names.
enum fault_kind {
  fault_open,
  fault_read,
  fault_write,
  fault_close,
  fault_rename,
  fault_unlink,
  fault_mkdir,
  fault_mmap,
  fault_truncate,
  fault_chmod,
  fault_symlink,
  fault_link,
  fault_lock,
  fault_stat,
  fault_readdir,
  fault_socket,
  fault_connect,
  fault_send,
  fault_recv,
  fault_malloc,
  fault_thread,
  fault_kinds
};

// 1 when memory of so many bytes is to be refused, with errno set. Any thread.
extern "C" int faults_memory(size_t bytes);
