// The makers' secret key, and what it signs. Main thread.
#pragma once

#include <string>
#include <string_view>

// A secret key of minisign's, deciphered; wiped when it goes.
class maker_key {
 public:
  maker_key() = default;
  ~maker_key();
  maker_key(const maker_key&) = delete;
  maker_key& operator=(const maker_key&) = delete;

  // Reads the file at `path`. If it is enciphered, the password is the first line that comes from
  // the descriptor `password_fd`, or, if that is below 0, what is typed on the terminal, unseen.
  // Returns what is wrong, for the maker; empty if nothing is. Takes a gigabyte of memory for a
  // moment: the password is made hard to try out.
  std::string read(const std::string& path, int password_fd);

  bool is_there() const { return is_there_; }

  // The text of a signature file over `message`, as minisign writes it.
  std::string sign(std::string_view message, std::string_view trusted_comment) const;

 private:
  bool is_there_ = false;
  unsigned char id_[8] = {};
  unsigned char secret_[64] = {};
};
