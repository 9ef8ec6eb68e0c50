// The log stream.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

// The log, "Skyvane Installer Log.txt" beside the application; rewritten on each run, fixed-point
// numbers. A stream that could not be opened swallows what is written to it. It has no lock: the
// main thread writes, and another one only when it has no other way left to report its failure.
extern std::ofstream xer;

// Opens the log at `path`, truncating. Returns false if that failed; the run goes on without.
bool xer_open(const std::string& path);

// Writes the log's header: title, notices, system and hardware lines.
void xer_header();

// The name that the header gives to a processor type: PLT_machine::cpu_type, its first character in
// the highest byte. Begins and ends with a blank.
std::string xer_cpu_name(uint32_t cpu_type);
