// The server list and the manifest's download, a step a call: the list, the manifest's archive, its
// unpacking, its reading.
//
// Main thread. Writes of stg the fields server_count and server_index; the reading of the list is
// in utils_servers_list.cpp, the choice of a mirror in utils_grab_mirrors.cpp.

#include "Installer-f/engine/utils_servers.h"

#include <fstream>
#include <string_view>

#include "Installer-f/engine/utils_grab_mirrors.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_place.h"
#include "Installer-f/engine/utils_trouble.h"
#include "Installer-f/engine/utils_trust.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_utils.h"
#include "corekit/net/http.h"

namespace {

constexpr int list_slot = 0;
constexpr char list_file[] = "/serverlist9.txt";
// Seconds of the frame clock until the list is fetched again.
constexpr float list_rest = 0.5f;   // it did not come, or there is no room for it
constexpr float list_pause = 2.0f;  // it came, and leads nowhere
constexpr int manifest_slot = 1;
// Bytes of the packed manifest: more than the most lines that a table may hold, some 50 bytes each.
constexpr int64_t manifest_budget = 128'000'000;

// --- list ----------------------------------------------------------------------------------------

// One read a frame would be slower than many a line: reads while there is something, for a while.
int fetch(int slot, const std::string& server, const std::string& file, const std::string& local,
          int64_t budget) {
  constexpr uint64_t longest_us = 10000;
  const uint64_t start = PLT_microseconds();
  for (;;) {
    const int64_t before = http.slot_received(slot);
    const int result = http.net_check(slot, server, file, local, budget);
    if (result != http_running || http.slot_received(slot) == before ||
        PLT_microseconds() - start >= longest_us) {
      return result;
    }
  }
}

// Whether a file begins as HTML does.
bool is_web_page(const std::string& path) {
  constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
  char bytes[64];
  std::ifstream in(path, std::ios::binary);
  in.read(bytes, sizeof bytes);
  std::string_view text(bytes, static_cast<size_t>(in.gcount()));
  if (text.starts_with(byte_order_mark)) text.remove_prefix(byte_order_mark.size());
  const size_t first = text.find_first_not_of(" \t\r\n");
  return first != text.npos && text[first] == '<';
}

// A hotel's log-in page, most likely. Told once a run; the fetch goes on, and succeeds once the
// user has logged in.
void tell_foreign(UTL_text what) {
  static bool told = false;
  if (told) return;
  told = true;
  __MACIBM_alert(0, what, "Perhaps the network that you use wants you to log in first.",
                 "Please look with your web browser. I will go on trying.", "", t_alert,
                 at_foreign_list);
}

struct manifest_record {
  int mirror = no_mirror;   // that is being asked,
  double asked_at = 0;      // and since when, frame clock
  mirror_set failed = 0;    // those that have failed since all had
  bool came_wrong = false;  // one of them with something that is no manifest
} manifest;

int list_beta_flag = 0;  // stg.beta_flag when the list was read
double not_before = 0;   // frame clock: nothing is fetched until then

// What has come finds no place in the working folder. That is no server's failure, and the next one
// would not help: the user may.
void tell_no_place(int code, const std::string& file) {
  not_before = xtim.now_sec + list_rest;
  __MACIBM_alert(0, "The installer cannot extract a file.",
                 UTL_translate_string("Error: ") + UTL_translate_string(error_str(code)),
                 UTL_translate_string("Compressed File/") + file,
                 UTL_translate_string("Destination Path/") + temp_path, t_alert,
                 at_manifest_archive);
}

// Who wants the test release while there is none has to say so: nothing is fetched in its place
// that was not asked for. Told once a run.
void tell_no_beta() {
  static bool told = false;
  if (told) return;
  told = true;
  __MACIBM_alert(0, "There is no beta of Skyvane 9 at the moment.",
                 "Go back to the first page, choose options and uncheck the beta option.", "", "",
                 t_alert, at_no_beta);
}

// Told once a run: whoever sits between may have gone the next time.
void tell_untrusted_list() {
  static bool told = false;
  if (told) return;
  told = true;
  __MACIBM_alert(0, "The list of servers cannot be trusted, and I do not use it.",
                 UTL_translate_string("Error: ") + UTL_translate_string(error_str(list_verdict())),
                 "Somebody may have changed it on its way, or the server that it comes from.",
                 "I will go on trying.", t_alert, at_untrusted_list);
}

// As if the list had not come: it leads nowhere, and is fetched again, though not at once.
void drop_list() {
  stg.server_count = -1;
  not_before = xtim.now_sec + list_pause;
}

// Why the fetch in `slot` failed, for who gives up on it.
void note_failure(int slot, const std::string& server, const std::string& path,
                  const std::string& local) {
  trouble_note(trouble_of_slot(slot, server, path, local));
}

void fetch_list() {
  const std::string list = temp_path + "serverlist9.txt";
  const int result = fetch(list_slot, product_web_host, list_file, list, server_list_budget);
  if (result == http_failed) {
    not_before = xtim.now_sec + list_rest;
    note_failure(list_slot, product_web_host, list_file, list);
    if (const int code = http.disk_failure(list_slot)) tell_no_place(code, list);
  }
  if (result != http_done) return;
  trouble_ended(product_web_host);
  switch (read_server_list(list)) {
    case list_foreign:
      trouble_note(trouble_of_content(product_web_host, list_file));
      tell_foreign(is_web_page(list) ? "A web page came in place of the list of servers."
                                     : "Something else came in place of the list of servers.");
      drop_list();
      return;
    case list_refused:
      new_format(list);
      return;
    case list_untrusted:
      tell_untrusted_list();
      drop_list();
      return;
    case list_lacks_beta:
      tell_no_beta();
      drop_list();
      return;
    default:
      break;
  }
  if (stg.server_count == 0) {  // no mirror to go to
    trouble_note(trouble_of_content(product_web_host, list_file));
    drop_list();
    return;
  }
  list_beta_flag = stg.beta_flag;
  draw_server();
  mirrors_forget();
  manifest = {};
  http.drop(manifest_slot);  // whatever runs there came from the list before
}

// --- manifest ------------------------------------------------------------------------------------

bool is_missing(const net_trouble& trouble) {
  return trouble.kind == net_status && (trouble.code == 404 || trouble.code == 410);
}

// The mirror has failed, and the others are asked first. True when none is left: all have failed,
// and what came was `wrong` from at least one of them.
bool manifest_failed(bool wrong) {
  mirror_failed(manifest.mirror, manifest.asked_at);
  manifest.failed |= mirror_set{1} << manifest.mirror;
  manifest.came_wrong |= wrong;
  manifest.mirror = no_mirror;
  if (!mirrors_are_all(manifest.failed)) return false;
  const bool is_news = manifest.came_wrong;
  manifest = {};
  return is_news;
}

void tell_untrusted_manifest(int code, const std::string& zip) {
  __MACIBM_alert(0, "The list of files cannot be trusted, and nothing was installed from it.",
                 UTL_translate_string("Error: ") + UTL_translate_string(error_str(code)),
                 "Somebody may have changed it on its way, or the server that it comes from.",
                 UTL_translate_string("Compressed File/") + zip, t_alert, at_untrusted_manifest);
}

// What the makers have not signed, or have signed once and replaced, is no better than a damaged
// one.
void manifest_is_untrusted(int code, const std::string& zip) {
  const std::string& server = server_name[manifest.mirror];
  xer << "WARNING: " << server << " has a list of files that I do not take: " << error_str(code)
      << '\n';
  if (manifest_failed(true)) tell_untrusted_manifest(code, zip);
}

void take_manifest(const std::string& zip, const std::string& server, const std::string& path) {
  const place_result result =
      trust_is_on() ? place_signed_manifest(zip, dest_dir_path) : place_manifest(zip);
  if (result.outcome != place_ok) {
    trouble_note(place_is_wrong_content(result.outcome) ? trouble_of_content(server, path)
                                                        : trouble_here(temp_path, result.code));
  }
  if (result.outcome == place_ok) {
    set_directory_state(manifest_unpacked);  // its mirror has delivered once it is read
  } else if (result.outcome == place_untrusted) {
    manifest_is_untrusted(result.code, zip);
  } else if (!place_is_wrong_content(result.outcome)) {
    tell_no_place(result.code, zip);
    manifest.mirror = no_mirror;
  } else if (is_web_page(zip)) {
    manifest_failed(false);
    tell_foreign("A web page came in place of the list of files.");
  } else if (manifest_failed(true)) {
    tell_no_place(result.code, zip);
  }
  remove_temp_file(zip);
}

void fetch_manifest() {
  if (manifest.mirror == no_mirror) {
    manifest.mirror = mirror_to_ask(manifest.failed, true);
    manifest.asked_at = xtim.now_sec;
    if (manifest.mirror == no_mirror) return;
    http.drop(manifest_slot);
  }
  const std::string name = manifest_archive_asked_for();
  const std::string zip = temp_path + name;
  const std::string& server = server_name[manifest.mirror];
  const std::string path = server_path[manifest.mirror] + name;
  switch (fetch(manifest_slot, server, path, zip, manifest_budget)) {
    case http_failed:
      note_failure(manifest_slot, server, path, zip);
      if (const int code = http.disk_failure(manifest_slot)) {
        tell_no_place(code, zip);
        manifest.mirror = no_mirror;
      } else if (trust_is_on() && is_missing(http.trouble(manifest_slot))) {
        manifest_is_untrusted(sign_unsigned, zip);
      } else {
        manifest_failed(false);
      }
      break;
    case http_done:
      take_manifest(zip, server, path);
      break;
    default:
      break;
  }
}

void read_manifest() {
  const std::string plain = temp_path + "directory.txt";
  const directory_outcome outcome =
      read_directory(plain, UTL_translate_string("Scanning directory text file to see if you "
                                                 "already have the latest version..."));
  if (outcome == directory_loaded && !trust_take_sums()) {
    set_directory_state(manifest_none);
    manifest_is_untrusted(sign_malformed, temp_path + signed_manifest_archive);
    return;
  }
  if (outcome != directory_foreign) {
    if (const sign_statement* const statement = trust_statement()) sign_tell_expired(*statement, 0);
    mirror_delivered(manifest.mirror);
    if (manifest.mirror != no_mirror) trouble_ended(server_name[manifest.mirror]);
    manifest = {};
    set_directory_state(outcome);
    return;
  }
  if (manifest.mirror != no_mirror) {
    const std::string path = server_path[manifest.mirror] + manifest_archive_asked_for();
    trouble_note(trouble_of_content(server_name[manifest.mirror], path));
  }
  manifest_failed(false);
  set_directory_state(manifest_none);
  tell_foreign(is_web_page(plain) ? "A web page came in place of the list of files."
                                  : "Something else came in place of the list of files.");
}

}  // namespace

void UTL_download_directory() {
  if (xtim.now_sec < not_before) return;
  // The options ask for the other release by now, which the list that was read does not lead to.
  if (stg.server_count > 0 && list_beta_flag != stg.beta_flag) {
    stg.server_count = -1;
    set_directory_state(manifest_none);
  }
  if (stg.server_count < 1) {
    fetch_list();
  } else if (stg.directory_state == manifest_none) {
    fetch_manifest();
  } else if (stg.directory_state == manifest_unpacked) {
    read_manifest();
  }
}
