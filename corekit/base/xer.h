// The log stream.
#pragma once

#include <cstdint>
#include <ostream>
#include <streambuf>
#include <string>

// Collects what is written and hands it to the file in pieces. What would steer the terminal of one
// who reads the log becomes "?": names come from servers and archives.
class xer_buffer : public std::streambuf {
 public:
  ~xer_buffer() override { close(); }
  bool open(const std::string& path);
  void close();
  bool is_open() const { return file_ >= 0; }
  void keep_time() { keeps_time_ = true; }

 protected:
  int overflow(int c) override;
  int sync() override;

 private:
  void put(const char* bytes, size_t count);
  void mark_time();

  int file_ = -1;  // a program that is started does not inherit it
  bool failed_ = false;
  unsigned char before_ = 0;  // the last byte that has been written
  bool keeps_time_ = false;
  int64_t marked_ = 0;  // the second that was marked last
  char bytes_[4096];
};

class xer_class : public std::ostream {
 public:
  xer_class() : std::ostream(&buffer_) {}
  void close();
  bool is_open() const { return buffer_.is_open(); }
  // From here on a line such as "[2026-03-01 14:05:09]", local time, stands before what was written
  // since the last such line, wherever a second has gone by. What is written stays a bare line.
  void keep_time() { buffer_.keep_time(); }

 private:
  friend bool xer_open(const std::string& path);
  xer_buffer buffer_;
};

// The log, "Skyvane Installer Log.txt" beside the application; a new one for each run, fixed-point
// numbers. The frame flushes it, so that it can be followed and outlives a kill. A stream that
// could not be opened swallows what is written to it. It has no lock: the main thread writes, and
// another one only when it has no other way left to report its failure.
extern xer_class xer;

// Opens the log at `path`, truncating, and holds a lock on it that dies with the process. Returns
// false if that failed, as it does where something else lies there than a file of this user's own,
// or the log of another run that is at work (EWOULDBLOCK); the run goes on without.
bool xer_open(const std::string& path);

// Writes the log's header: title, notices, system and hardware lines.
void xer_header();

// The name that the header gives to a processor type: PLT_machine::cpu_type, its first character in
// the highest byte. Begins and ends with a blank.
std::string xer_cpu_name(uint32_t cpu_type);
