// The failure record, and the log with its header. Writes xer; any thread may report, the rest is
// the main thread's.

#include "corekit/base/exce.h"

#include <ios>
#include <utility>

#include "corekit/Platform/PLT_system.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_thread.h"

std::ofstream xer;

namespace {

constexpr char unknown[] = "?";

// A figure of the header, or "?" where the system does not tell.
std::string figure(uint32_t value) {
  return value ? std::to_string(value) : unknown;
}

}  // namespace

exce_class::exce_class(alert_line l1, alert_line l2, alert_line l3, alert_line l4,
                       const char* source_file, int source_line, int how_bad)
    : line_1(std::move(l1)),
      line_2(std::move(l2)),
      line_3(std::move(l3)),
      line_4(std::move(l4)),
      file(source_file),
      line(source_line),
      severity(how_bad) {}

void exce_class::log_lines() const {
  for (const alert_line* text : {&line_1, &line_2, &line_3, &line_4})
    xer << PLT_terminal_text(text->logged()) << '\n';
}

bool exce_class::is_empty() const {
  return line_1.is_empty() && line_2.is_empty() && line_3.is_empty() && line_4.is_empty();
}

void exce_class::Report() const {
  if (THREAD_is_inited() && !THREAD_is_main_thread()) {
    xer << "EXCEPTION REPORTED FROM THREAD!!  File: " << file << ", line " << line << ".\n";
    log_lines();
    xer.flush();
    app_done = 1;
    report_finish(1);
    return;
  }
  report(*this);
}

void exce_class::LogAndContinue() const {
  // A warning reads "fatal" here too, on purpose: only a note is not.
  xer << "Logging " << (severity ? "fatal" : "non-fatal") << " Exception thrown from file: " << file
      << ", line " << line << ".\n";
  log_lines();
  xer.flush();
}

bool xer_open(const std::string& path) {
  xer.close();
  xer.clear();
  xer.open(path, std::ios::out | std::ios::trunc);
  xer << std::fixed;
  return xer.is_open();
}

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
