// The log with its header. Writes xer; main thread, but for a failing one as its last resort.

#include "corekit/base/xer.h"

#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <ios>

#include "corekit/Platform/PLT_system.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/base/hl_app.h"

xer_class xer;

// --- the stream ---------------------------------------------------------------------------------

bool xer_buffer::open(const std::string& path) {
  close();
  before_ = 0;
  failed_ = false;
  keeps_time_ = false;
  setp(bytes_, bytes_ + sizeof bytes_);
  const int file = PLT_open_own(path, plt_own_append);
  if (file < 0) return false;
  // Not cut before it is known that no other run is writing to it.
  const bool is_others = flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  if (is_others || ftruncate(file, 0) != 0) {
    const int reason = errno;
    ::close(file);
    errno = reason;
    return false;
  }
  file_ = file;
  return true;
}

void xer_buffer::close() {
  if (file_ < 0) return;
  sync();
  ::close(file_);
  file_ = -1;
}

int xer_buffer::overflow(int c) {
  if (sync() != 0) return traits_type::eof();
  if (c == traits_type::eof()) return traits_type::not_eof(c);
  *pptr() = static_cast<char>(c);
  pbump(1);
  return c;
}

void xer_buffer::put(const char* bytes, size_t count) {
  for (size_t at = 0; at < count && !failed_;) {
    const ssize_t done = write(file_, bytes + at, count - at);
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) {
      failed_ = true;  // the run goes on without its log
    } else {
      at += static_cast<size_t>(done);
    }
  }
}

void xer_buffer::mark_time() {
  const time_t now = time(nullptr);
  if (!keeps_time_ || before_ != '\n' || now == marked_) return;
  marked_ = now;
  tm parts;
  char mark[32];
  if (localtime_r(&now, &parts)) put(mark, strftime(mark, sizeof mark, "[%F %T]\n", &parts));
}

int xer_buffer::sync() {
  if (file_ < 0 || failed_) return -1;
  const size_t count = static_cast<size_t>(pptr() - pbase());
  if (count > 0) {
    mark_time();
    before_ = PLT_hide_controls(bytes_, count, before_);
    put(bytes_, count);
  }
  setp(bytes_, bytes_ + sizeof bytes_);
  return failed_ ? -1 : 0;
}

void xer_class::close() {
  buffer_.close();
}

bool xer_open(const std::string& path) {
  xer.close();
  xer.clear();
  const bool opened = xer.buffer_.open(path);
  if (!opened) xer.setstate(std::ios::failbit);
  xer << std::fixed;
  return opened;
}

// --- the header ---------------------------------------------------------------------------------

namespace {

constexpr char unknown[] = "?";

// A figure of the header, or "?" where the system does not tell.
std::string figure(uint32_t value) {
  return value ? std::to_string(value) : unknown;
}

}  // namespace

std::string xer_cpu_name(uint32_t cpu_type) {
  struct known_type {
    uint32_t type;
    const char* name;
  };
  // Four characters as a number, the first one highest.
  constexpr auto code = [](const char* text) constexpr {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
      value = value << 8 | static_cast<unsigned char>(text[i]);
    return value;
  };
  static constexpr known_type known[] = {
      {0x108, "G3"},
      {0x10C, "G4"},
      {0x110, "G4/7450"},
      {0x111, "G4/7455"},
      {0x112, "G4/7447"},
      {0x120, "G3/750FX"},
      {0x139, "G5"},
      {0x13C, "G5/FX"},
      {code("i486"), "i486"},
      {code("i586"), "Pentium"},
      {code("i5pr"), "Pentium Pro"},
      {code("i5ii"), "Pentium II"},
      {code("i5iv"), "Pentium 4"},
      {code("ixxx"), "X86"},
  };
  for (const known_type& row : known)
    if (row.type == cpu_type) return std::string(" (") + row.name + ") ";

  std::string letters;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const uint32_t byte = cpu_type >> shift & 0xFF;
    if (byte >= 0x20 && byte < 0x7F) letters += static_cast<char>(byte);
  }
  if (letters.size() == 4) return " (" + letters + ") ";
  return cpu_type >> 24 == 'i' ? " (unknown intel) " : " (unknown PowerPC) ";
}

void xer_header() {
  xer << "Installer log.txt for " << APP.title << " compiled on " << __DATE__ << ' ' << __TIME__
      << "\n\n"
         "This log file is generated automatically by Tessaron Labs applications and contains "
         "diagnostics about your graphics hardware, installation, and any error conditions.\n"
         "If you need to contact tech support or file a bug, please send us this file. NOTE: this "
         "file is rewritten every time you start ANY of your Sky-Root applications.\n\n";

  const PLT_machine machine = PLT_machine_figures();
  xer << machine.system << ' ' << machine.version[0] << '.' << machine.version[1] << '.'
      << machine.version[2] << '\n';
  xer << "CPU type: " << figure(machine.cpu_type)
      << (machine.cpu_type ? xer_cpu_name(machine.cpu_type) : " ")
      << "CPU speed (mhz): " << figure(static_cast<uint32_t>(machine.cpu_mhz)) << ' '
      << "Bus speed (mhz): " << figure(static_cast<uint32_t>(machine.bus_mhz)) << ' '
      << "RAM (MB): " << figure(static_cast<uint32_t>(machine.ram_mb)) << '\n';
}
