// The about box: what this program is, whether there is a newer one, and the way to it.
//
// No page of the wizard opens it: it is there for whatever application wants it. The box asks the
// maker's web server for the list of releases, says how this one compares, and offers to fetch,
// unpack and start the installer of a newer one.
//
//   about_closed ..> about_settled  (nothing more to do, or an error to read)
//                ..> about_offer -> about_download -> about_launch, or back to about_settled
//
// Main thread. Uses HTTP slots 0 and 1 while it is open, and leaves both free.
#pragma once

#include <string>

#include "corekit/files/sign.h"

// What the self-update is doing.
enum about_step : int {
  about_closed = 0,    // the list of releases has not been read yet
  about_offer = 1,     // a button offers the new release
  about_download = 2,  // its installer is on its way
  about_launch = 3,    // and is about to take this program's place
  about_settled = 4,   // err_msg is shown
};

// Where a release's installer lies: a host, and a path on it that begins with "/".
struct about_installer {
  std::string server, path;
};

// The box's state. Written by the box alone; what came from the list stays for the whole run.
struct about_record {
  int version_str_found = 0;         // the list has been read
  std::string version_str_net;       // names of the public release
  std::string version_str_net_beta;  //   and of the test release
  int version_final = -1;            // their version numbers; -1 until known
  int version_beta = -1;
  about_installer final_installer, beta_installer;

  int is_latest = 1;  // what the comparison gave
  int is_beta = 0;    // the newer release is a test release

  bool is_signed = false;    // keys are built in, and the list is signed by one of them
  sign_statement statement;  // with which

  double ask_again_sec = 0;        // when a list that says nothing may be asked for again
  int ins_state = about_closed;    // of about_step
  about_installer installer;       // the one on offer
  std::string installer_app_name;  // what its archive held, in the working folder
  std::string err_msg;             // shown in about_settled
};
extern about_record about;

// Shows the box until it is closed. Starting the new installer ends this program.
void MACIBM_about();

// Its parts: the list at `path` into `about`, 1 if it is one that names the public release; the
// comparison of this program's `version` with what the list says; and one step of the self-update
// and of the list's download, which is due once a frame.
int about_read_list(const std::string& path);
void about_compare(int version);
void about_step_on();
