// Verification: reads the installed copy and sets sig_have and sig_match of every wanted file. The
// disk alone is believed; no journal is kept, so a broken install heals at the next run.
#pragma once

#include <ctime>
#include <string>

class UTL_worker_threads;

extern UTL_worker_threads* checksum_workers;  // the pool of the pass; null when none is running

// One step of the pass over the copy at dest_dir_path; call once a frame, with `index` 0 the first
// time, which settles the platform that the copy is for. Returns 0 while work remains and 1 when
// the pass is complete. `index` is the next history to hand out; `progress` is set to the share
// handed out, 0 to 1. Main thread. While the pass runs, sig_have and sig_match belong to the
// workers, and sim_info must not change.
int checksum_directory(int& index, float& progress);

// Abandons a running pass: lets go of the files in hand, then ends the threads. Safe without one.
void checksum_directory_kill();

// A sign of life: bytes that the running pass has read; 0 without one. Main thread.
uint64_t checksum_bytes();

// When the last pass began: what has changed since, it may not have seen. Zero before the first.
// Any thread, while none begins.
timespec verification_began();

// The findings of a pass over a copy that does not exist: every current version is absent.
void mark_all_absent();

// The signature of one file as 32 lowercase hexadecimal digits: the MD5 of its bytes, or of its
// target text for a symbolic link. Returns 0 with `sig` filled, or 20006 with `sig` untouched when
// there is no regular file that can be read to its end. Any thread.
int calc_file_md5(const std::string& path, std::string& sig);
