// Signing. Steps for a master: find its manifest; read back every archive that it lists; state what
// was found; sign that, or leave it to be signed elsewhere; write the signed archive beside that of
// the manifest, which stays as it is. Main thread. Writes sim_info, and no file but those.

#include "Installer-f/builder/make_installer_sign.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_fault.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_stop.h"
#include "Installer-f/builder/make_installer_sums.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_place.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_set.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/sign.h"

namespace {

constexpr uint64_t most_manifest = 512u << 20, most_list = 1'000'000, most_program = 512u << 20;
constexpr int days_of_release = 400, days_of_list = 100;
constexpr time_t day = 24 * 60 * 60;

enum { directory, sums, signature, entry_count };

void name_entries(set_entry (&entries)[entry_count]) {
  entries[directory] = {"directory.txt", most_manifest};
  entries[sums] = {"directory.sum", most_manifest};
  entries[signature] = {"directory.sig", sign_most_statement};
}

int say(const std::string& wrong) {
  if (!wrong.empty()) builder_notice(wrong);
  return wrong.empty() ? build_done : build_failed;
}

// --- files ---------------------------------------------------------------------------------------

bool load(const std::string& path, uint64_t most, std::string& text) {
  const io_handle file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  const unsigned char* bytes = nullptr;
  size_t size = 0;
  if (!file || io_load_archive(file.get(), most, bytes, size) != single_ok) return false;
  text.assign(reinterpret_cast<const char*>(bytes), size);
  return true;
}

// Beside the place first, so that there is the old file or the new one.
std::string save(const std::string& path, const std::string& text) {
  const std::string part = path + ".part";
  io_handle file(open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
  int code = file ? io_write_all(file.get(), text.data(), text.size()) : errno;
  if (file && code == 0) code = file.close();
  if (code == 0 && rename(part.c_str(), path.c_str()) != 0) code = errno;
  if (code == 0) return {};
  unlink(part.c_str());
  return "This could not be written: " + path + " (" + error_str(code) + ")";
}

// The date of a zip's first entry, as its local header has it.
uint32_t date_in(std::string_view zip) {
  uint32_t date = 0;
  for (size_t i = 0; i < 4 && zip.size() > 13; ++i)
    date |= uint32_t{static_cast<unsigned char>(zip[10 + i])} << (8 * i);
  return date;
}

// The plain archive of a manifest; its one text, and the date that it has there.
bool read_plain(const std::string& path, std::string& text, uint32_t& date) {
  std::string zip;
  if (!load(path, most_manifest, zip)) return false;
  set_entry entry{"directory.txt", most_manifest};
  date = date_in(zip);
  const bool is_read = io_read_set(reinterpret_cast<const unsigned char*>(zip.data()), zip.size(),
                                   {&entry, 1}) == single_ok;
  text = std::move(entry.bytes);
  return is_read;
}

// The statement of a signed archive, whoever has signed it; false if there is none.
bool read_last_statement(const std::string& path, sign_statement& statement) {
  std::string zip;
  set_entry entries[entry_count];
  name_entries(entries);
  return load(path, most_manifest, zip) &&
         io_read_set(reinterpret_cast<const unsigned char*>(zip.data()), zip.size(), entries) ==
             single_ok &&
         sign_read_fields(entries[signature].bytes, statement);
}

// --- statements ----------------------------------------------------------------------------------

// The hour that a signature is of: the one that a reproducible build is told, or this one.
time_t hour_of_signing() {
  return bld.source_date >= 0 ? bld.source_date : time(nullptr);
}

sign_cover cover_of(const char* name, std::string_view bytes) {
  return {name, bytes.size(), sign_hash(bytes.data(), bytes.size())};
}

sign_statement begin_statement(const char* kind, const sign_order& order, int usual_days) {
  sign_statement statement;
  statement.kind = kind;
  statement.serial = order.serial > 0 ? order.serial : hour_of_signing();
  statement.expires =
      sign_day(hour_of_signing() + day * (order.days > 0 ? order.days : usual_days));
  return statement;
}

std::string comment_of(const sign_statement& statement) {
  return statement.kind + " " + statement.release + ", serial " + std::to_string(statement.serial);
}

std::string check_serial(const sign_statement& statement, int64_t last) {
  if (statement.serial > last) return {};
  return str_format(
      "The serial %lld is not above that of the last signature, %lld: installers would "
      "refuse it. Give a higher one by --sign_serial.",
      static_cast<long long>(statement.serial), static_cast<long long>(last));
}

// The statement with its signature. What is made for another place's key is left in the order's
// file; `text` is empty then.
std::string sign_here_or_elsewhere(const sign_statement& statement, const maker_key& key,
                                   const sign_order& order, std::string& text) {
  const std::string stated = sign_statement_text(statement);
  if (order.statement.empty()) {
    text = stated + key.sign(stated, comment_of(statement));
    return {};
  }
  builder_notice("To be signed: " + order.statement +
                 " (minisign -S -m FILE); then the same command "
                 "once more.");
  return save(order.statement, stated);
}

// What was left for another place's key, come back with its signature, which must be one of the
// keys that are built in, if any are.
std::string take_from_elsewhere(const sign_order& order, const char* kind, std::string& text,
                                sign_statement& statement) {
  std::string stated, signed_there;
  if (!load(order.statement, sign_most_statement, stated) ||
      !load(order.statement + ".minisig", sign_most_statement, signed_there)) {
    return "This cannot be read: " + order.statement + ", .minisig";
  }
  text = stated + signed_there;
  const std::vector<sign_public_key> keys = sign_keys();
  const sign_verdict verdict =
      keys.empty() ? sign_good : sign_read_statement(text, kind, keys, statement);
  if (verdict != sign_good) return order.statement + ": " + error_str(verdict);
  if (!sign_read_fields(text, statement) || statement.kind != kind)
    return "This is no statement of a " + std::string(kind) + ": " + order.statement;
  return {};
}

bool is_back(const sign_order& order) {
  return !order.statement.empty() && file_exists(order.statement + ".minisig");
}

// What is in its place now. If it stayed, the same commands a month later would put it in again.
void drop_statement(const sign_order& order) {
  if (order.statement.empty()) return;
  for (const char* const end : {"", ".minisig", ".sum"})
    delete_file(order.statement + end);
}

// --- a master ------------------------------------------------------------------------------------

struct master {
  std::string name, zip, signed_zip;  // of the release; its manifest's archives
  uint32_t date = 0;                  // of the manifest in the first, which the second has, too
  set_entry entries[entry_count];
};

// The release's folder on the first disc is the only one there with a manifest.
std::string find_master(const std::string& output, master& found) {
  std::vector<std::string> names;
  std::vector<int> is_folder;
  const std::string root = output + "disk_0/";
  opensave_getitems(root, 0, names, is_folder);
  for (size_t i = 0; i < names.size(); ++i) {
    const std::string folder = root + names[i] + "/", zip = folder + manifest_archive;
    if (!is_folder[i] || !file_exists(zip)) continue;
    if (!found.zip.empty()) return "There are two releases below " + root;
    found.name = names[i];
    found.zip = zip;
    found.signed_zip = folder + signed_manifest_archive;
  }
  if (found.zip.empty()) return "There is no master below " + output;
  name_entries(found.entries);
  return read_plain(found.zip, found.entries[directory].bytes, found.date)
             ? ""
             : "This is no manifest's archive: " + found.zip;
}

std::string read_manifest(const std::string& text) {
  const std::string path = temp_path + "directory.txt";
  std::string wrong = save(path, text);
  if (wrong.empty() && read_directory(path, "") != directory_loaded)
    wrong = "The master's manifest is none of ours.";
  delete_file(path);
  return wrong;
}

int newest_release() {
  int newest = 0;
  for (const file_history_struct& history : sim_info)
    newest = std::max(newest, history.current().version);
  return newest;
}

std::string state_release(const std::string& output, master& found, const sign_order& order,
                          sign_statement& statement) {
  std::string wrong = read_manifest(found.entries[directory].bytes);
  if (!wrong.empty()) return wrong;
  clear_faults();
  const builder_stop_watch watch;
  if (!make_sums(output, found.name, found.entries[sums].bytes)) {
    tell_faults();
    return "The master was not signed.";
  }
  statement = begin_statement(sign_of_release, order, days_of_release);
  statement.release = found.name;
  statement.number = newest_release();
  statement.covers = {cover_of("directory.txt", found.entries[directory].bytes),
                      cover_of("directory.sum", found.entries[sums].bytes)};
  return {};
}

std::string check_release_serial(const master& found, const sign_statement& statement) {
  sign_statement last;
  return read_last_statement(found.signed_zip, last) ? check_serial(statement, last.serial) : "";
}

std::string write_signed(const master& found) {
  const std::string part = found.signed_zip + ".part";
  int code = io_write_set(part, found.entries, found.date);
  if (code == 0 && rename(part.c_str(), found.signed_zip.c_str()) != 0) code = errno;
  if (code == 0) return {};
  unlink(part.c_str());
  return "This could not be written: " + found.signed_zip + " (" + error_str(code) + ")";
}

std::string attach(master& found, const std::string& text, const sign_statement& statement) {
  if (!statement.covers_bytes("directory.txt", found.entries[directory].bytes) ||
      !statement.covers_bytes("directory.sum", found.entries[sums].bytes) ||
      statement.release != found.name) {
    return "The statement is not of this master: " + found.zip;
  }
  found.entries[signature].bytes = text;
  std::string wrong = write_signed(found);
  if (wrong.empty()) {
    builder_notice(str_format("%s is signed: release %d, serial %lld, until %s.",
                              found.name.c_str(), statement.number,
                              static_cast<long long>(statement.serial), statement.expires.c_str()));
  }
  return wrong;
}

// --- a server list -------------------------------------------------------------------------------

// The release that the list names to those who want no test release.
std::string release_of_list(std::string_view body) {
  constexpr std::string_view keyword = "\nFINAL ";
  const size_t at = body.find(keyword);
  if (at == body.npos) return {};
  body.remove_prefix(at + keyword.size());
  return std::string(body.substr(0, body.find_first_of("\r\n")));
}

std::string add_program(sign_statement& statement, const char* name, const std::string& path) {
  std::string bytes;
  if (path.empty()) return {};
  if (!load(path, most_program, bytes)) return "This program cannot be read: " + path;
  statement.covers.push_back(cover_of(name, bytes));
  return {};
}

std::string state_list(std::string_view body, const sign_order& order, sign_statement& statement) {
  statement = begin_statement(sign_of_servers, order, days_of_list);
  statement.release = release_of_list(body);
  statement.covers = {cover_of(sign_list_name, body)};
  std::string wrong = add_program(statement, "FINAL_INSTALLER_MAC", order.final_program);
  if (wrong.empty()) wrong = add_program(statement, "BETA_INSTALLER_MAC", order.beta_program);
  return wrong;
}

std::string check_list_serial(const std::string& list, size_t body, const sign_statement& now) {
  sign_statement last;
  return sign_read_fields(std::string_view(list).substr(body), last)
             ? check_serial(now, last.serial)
             : "";
}

}  // namespace

int sign_master(const std::string& output, const maker_key& key, const sign_order& order) {
  master found;
  sign_statement statement;
  std::string text, wrong = find_master(output, found);
  const std::string sums_file = order.statement + ".sum";
  if (!wrong.empty()) return say(wrong);
  if (is_back(order)) {
    wrong = take_from_elsewhere(order, sign_of_release, text, statement);
    if (wrong.empty() && !load(sums_file, most_manifest, found.entries[sums].bytes))
      wrong = "This cannot be read: " + sums_file;
    if (wrong.empty()) wrong = check_release_serial(found, statement);
    if (wrong.empty()) wrong = attach(found, text, statement);
    if (wrong.empty()) drop_statement(order);
    return say(wrong);
  }
  wrong = state_release(output, found, order, statement);
  if (wrong.empty()) wrong = check_release_serial(found, statement);
  if (wrong.empty() && !order.statement.empty()) wrong = save(sums_file, found.entries[sums].bytes);
  if (wrong.empty()) wrong = sign_here_or_elsewhere(statement, key, order, text);
  if (wrong.empty() && !text.empty()) wrong = attach(found, text, statement);
  return say(wrong);
}

int sign_server_list(const std::string& path, const maker_key& key, const sign_order& order) {
  std::string list, text, wrong;
  if (!load(path, most_list, list)) return say("This list cannot be read: " + path);
  if (!list.ends_with('\n')) list += '\n';
  const std::string body(sign_list_body(list));
  if (body.size() == list.size() && body.find("ENDOFLIST") == body.npos)
    return say("A list that is to be signed ends in ENDOFLIST: " + path);
  sign_statement statement;
  const bool was_elsewhere = is_back(order);
  if (was_elsewhere) {
    wrong = take_from_elsewhere(order, sign_of_servers, text, statement);
    if (wrong.empty() && !statement.covers_bytes(sign_list_name, body))
      wrong = "The statement is not of this list: " + path;
  } else {
    wrong = state_list(body, order, statement);
  }
  if (wrong.empty()) wrong = check_list_serial(list, body.size(), statement);
  if (wrong.empty() && !was_elsewhere) wrong = sign_here_or_elsewhere(statement, key, order, text);
  if (wrong.empty() && !text.empty()) wrong = save(path, body + text);
  if (wrong.empty() && was_elsewhere) drop_statement(order);
  if (wrong.empty() && !text.empty())
    builder_notice(str_format("The list is signed: serial %lld, until %s.",
                              static_cast<long long>(statement.serial), statement.expires.c_str()));
  return say(wrong);
}

int64_t signed_serial(const std::string& manifest) {
  sign_statement statement;
  const std::string beside = std::string(path_folder(manifest)) + signed_manifest_archive;
  return read_last_statement(beside, statement) ? statement.serial : 0;
}
