// What fetches have failed on, in the user's words: which mirror, which address, what it answered.
//
// Each mirror's last failure is kept until it delivers, and what could not be had until the next
// job. Who gives up tells these; nothing is decided by them. Main thread.
#pragma once

#include <string>
#include <vector>

struct fetch_trouble {
  std::string mirror;     // host name of the server
  std::string address;    // of what was asked for, as a web browser takes it
  std::string answer;     // in words, translated; no full stop
  bool is_final = false;  // it would be the same again: the server has refused, and works
  bool is_local = false;  // not the server's doing: a file here could not be written
};
// Its one line, such as "http://a.example/x.zip: the server answered 404 Not Found".
std::string trouble_line(const fetch_trouble& trouble);

// The failure of the last transfer in an HTTP slot, which had asked `server` for `path` and was to
// write to `local` (empty: memory).
fetch_trouble trouble_of_slot(int slot, const std::string& server, const std::string& path,
                              const std::string& local);
// Of something that came and is not what was asked for.
fetch_trouble trouble_of_content(const std::string& server, const std::string& path);
// A file here that could not be written; tells the volume when that is full.
fetch_trouble trouble_here(const std::string& local, int code);

// --- what is in the way at present ---------------------------------------------------------------

void trouble_note(const fetch_trouble& trouble);  // in place of the mirror's last
void trouble_ended(const std::string& mirror);    // it has delivered
const std::vector<fetch_trouble>& troubles();     // the latest one last

// --- what could not be had -----------------------------------------------------------------------

// A file that every mirror has refused for good, and that the job was ended without.
struct missing_file {
  std::string path;  // below the destination
  std::vector<fetch_trouble> answers;
};
extern std::vector<missing_file> missing_files;  // of the present job, or of the last

// Whether such a file is left out and the others are fetched, as a run without a user does; a user
// is asked for the network or another mirror instead. Set once, at the start.
extern bool passes_over_missing;
