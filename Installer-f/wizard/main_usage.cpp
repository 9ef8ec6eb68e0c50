// The installer's own command-line options: their description for the usage text, and the question
// whether a run wants a window.

#include "Installer-f/wizard/main_usage.h"

#include "corekit/base/UTL_cmdline.h"

bool wizard_without_window() {
  if (wizard_unattended()) return true;
  for (const char* const option :
       {"--build_master", "--write_server_list", "--sign_master", "--sign_list"})
    if (cmdline.has_option(option)) return true;
  return false;
}

bool wizard_unattended() {
  for (const char* const option : {"--unattended", "--check", "--list", "--uninstall"})
    if (cmdline.has_option(option)) return true;
  return false;
}

std::string wizard_usage() {
  return R"(
WHAT THIS PROGRAM IS FOR

It installs the flight simulator Skyvane 9 and keeps it up to date. It compares
what is on your disk with the list of all files that any release ever shipped,
fetches what is missing or out of date, and leaves alone what you have changed
yourself, unless you tell it otherwise. There are three of it:
    skyvane-demo-installer   installs a new demo copy from the web
    skyvane-web-updater      brings an installed copy up to date from the web
    skyvane-disc-installer   installs from discs, adds and removes scenery, and
                             repairs a copy
Started without options, each opens a window and leads through the rest.

RUNNING WITHOUT A DISPLAY

    skyvane-demo-installer --unattended --accept_eula --dest=/opt/games
    skyvane-web-updater --unattended --copy="/opt/games/Skyvane 9"
    skyvane-disc-installer --unattended --accept_eula --dest=/opt/games
        --sectors=+30-120,+40-110

    skyvane-web-updater --check --copy="/opt/games/Skyvane 9"
    skyvane-web-updater --uninstall --copy="/opt/games/Skyvane 9"
    skyvane-web-updater --list

An install from the web that was interrupted is gone on with by the same
command, one from discs by "--do=repair" and "--do=scenery". All flags, states
and objects are explained in docs/unattended.md of the sources.

--unattended
  Runs this installer's own pages from the first to the last with no window
  and no display, pressing Next as a user would. The answers come from the
  flags below. On a terminal one live line shows the progress; elsewhere a
  line is printed for each page and each 5 % of the transfer. Alerts go to
  standard error and to the log. The log is "Skyvane Installer Log.txt" beside
  the program, or, where that folder cannot be written, in
  ~/.local/state/skyvane/ (XDG_STATE_HOME); the run says where. Each run has a
  log of its own, and those of the four runs before are kept.

--accept_eula
  Accepts the End User License Agreement, which "--help" cannot do for you.

--allow_unsigned
  Uses a disc whose list of files is not signed by the makers, which a program
  that knows their keys refuses else. What comes from the web is never used
  unsigned by such a program.

--dest=FOLDER
  The folder in which the new copy is created. Default: the desktop, or the
  home folder where there is no desktop.

--name=NAME
  The name of the new copy's own folder. Default: the release's name.

--platform=mac|windows|linux
  The system that a new copy is for. Default: this computer's. An installed
  copy keeps the one that it has.

--copy=FOLDER
  The installed copy to update, to repair, or whose scenery to change.
  "-path FOLDER", first on the command line, says the same to the web updater.
  Default: the one copy that is known on this computer.

--do=install|scenery|repair
  What to do with the discs: install a new copy, change the scenery of an
  installed one, or put its missing and damaged files right. When another disc
  is needed, the run ejects the present one, says which disc it wants, and
  goes on as soon as that one is mounted. Default: install.

--sectors=all|none|LIST
  The sectors of 10 by 10 degrees whose scenery to have; scenery of all others
  is removed. LIST names them by their south-west corners, latitude first:
  --sectors=+30-120,+40-110. Default: all for a new copy; for an installed
  one, those that it has.

--on_modified=keep|overwrite|cancel
  What to do with a file that you have changed yourself and that the release
  would replace or delete. Default: keep.

--give_up_after=SECONDS
  How long to go on without any progress. Default: 300.

--check
  Tells what the same command would do, and does nothing. The status is 0 when
  there is nothing to do, and 10 when there is. Implies --unattended.

--list
  Prints the installed copies that this user has, a line each: path, release,
  platform and edition, with a tab between and "?" for what is not known.
  Implies --unattended.

--uninstall
  Takes the copy away that --copy=FOLDER names: what the list of all releases
  knows, and nobody has changed, is deleted, and the folders that this leaves
  empty. Everything else stays, and is listed. The copy goes off the list.
  Implies --unattended.

--quiet
  Prints nothing but complaints.

--json
  Prints one object of JSON a line, in place of all other lines.

--timestamps
  Puts the time before every line.

--log=FILE
  Writes the log of this run to FILE, in place of what is there.

  Exit status of an unattended run:
    0  finished: the last page offers to start the simulator
    1  failed: a failure page or a fatal alert
    2  an option is wrong, or an answer is missing or was refused; the text
       says which
    3  given up: no progress for too long, or interrupted
    4  another installer or updater is at work on the copy
   10  --check: there is something to do

FOR THE MAKERS

--build_master
  Builds a master from a source tree: a tree of per-file archives and the
  manifest that the installer works from. It takes these flags:
    --source=DIR      the source tree (default "/Skyvane 9.00/")
    --output=DIR      where the master goes (default "/DVD_Masters/")
    --previous=FILE   the manifest of the release before, or a zip of it, or
                      "none" for a first release; read for type 0 only
                      (default "/directory.txt")
    --type=N          0 the base product without scenery, for the web;
                      1 the base product with Earth scenery; 2 the Mars
                      scenery; 3 the Moon scenery (default 1)
    --name=NAME       the release's folder on every disc and mirror
    --release=N       the release number of what is new (default 91001)
    --disk_kb=N       compressed size at which a disc is full, in units of
                      1,000 bytes (default 630000)
    --check           looks at the tree, tells all that is wrong with it, and
                      writes nothing
    --reuse=DIR       the output of the last build: archives of files that have
                      not changed since, by size and date, are taken over
    --verify_reuse    hashes these files and archives to be sure
    --threads=N       how many files to pack at once (default: one for each
                      processor)
    --json            prints a summary for scripts on standard output
  "q" on the terminal, or Ctrl-C, ends a build; no part of a master is left.
  Exit status: 0 done, 1 failed, 2 a flag makes no sense, 128 and the signal's
  number when one ended it.

--write_server_list=FILE --mirrors=HOST/PATH,HOST/PATH,... --name=NAME
  Writes the server list that the product's web server holds.

--sign=KEYFILE
  Signs the master that --build_master makes, or the list that
  --write_server_list writes, with a secret key of minisign's; or what lies
  there already:
    --sign_master=DIR      the output folder of a build
    --sign_list=FILE       a server list
  The password is asked for on the terminal. Further flags:
    --sign_password_fd=N   reads it from this descriptor, one line
    --sign_serial=N        a number that grows with each signature (default: the
                           seconds since 1970)
    --sign_days=N          for how many days it is (default: 400 for a release,
                           100 for a list)
    --sign_final=ZIP, --sign_beta=ZIP
                           the installers that a list leads to
    --sign_statement=FILE  in place of --sign: leaves in FILE what is to be
                           signed elsewhere (minisign -S -m FILE), and, once
                           FILE.minisig is there, puts it in

SETTINGS FOR ONE RUN

--pref:TAG=VALUE
  Overrides a setting of the preference file without touching the file:
  _stream_count (1 to 4, 0 automatic), _log_actions (0, 1), _proxy_host,
  _proxy_port_int (0 for none), _get_beta (0, 1), _lang (0 English, 1 French,
  2 German, 3 Italian, 4 Spanish, 5 Portuguese, 6 Korean). Where no proxy is
  set, http_proxy and no_proxy of the environment count, in lower case only:
  HTTP_PROXY may be a visitor's, where a web server has started the program.

--scale=1 to 4
  Pixels to a unit of the window, which has 800 by 600. Default: as the
  desktop draws its own (GDK_SCALE, Xft.dpi, or the screen's resolution).

--missing_strings
  Logs every text that the chosen language does not translate.

--check_layout
  Logs every text that leaves its place: one over another text or a picture,
  across the edge of a frame, or cut off.

--list_texts=FILE
  Keeps in FILE where the texts of the shown picture are.
)";
}
