// What the tests of the transfer share: a copy to fill, a mirror that serves files by their URL,
// and the page's loop.
#pragma once

#include <chrono>
#include <map>

#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/engine/utils_stream.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/exce.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_zip.h"
#include "net_scripted_server.h"

inline file_version_struct wanted_file(std::string_view path, float kb = 1,
                                       std::string_view signature = "") {
  file_version_struct file;
  file.path = path;
  file.zip_kb = kb;
  file.raw_kb = 2 * kb;
  file.need_fetch = 1;
  file.sig_want = signature;
  return file;
}

inline void add_history(const file_version_struct& file) {
  file_history_struct history;
  history.versions.push_back(file);
  sim_info.push_back(history);
}

class Grab : public testing::Test {
 protected:
  Grab() {
    stg = {};
    sim_info.clear();
    deleted_files.clear();
    temp_path = new_folder();
    dest_dir_path = new_folder();
    stg.server_count = 2;
    server_name[0] = "one";
    server_path[0] = "/up/rel/";
    server_name[1] = "two";
    server_path[1] = "/pub/rel/";
    xtim.now_sec = 10.0f;
    log_path_ = temp_path + "log.txt";
    xer_open(log_path_);
    next = {};
    grab_reset();
  }
  ~Grab() override {
    for (int s = 0; s < stream_limit; ++s)
      http.drop(first_stream_slot + s);
    xer.close();
  }
  // An archive of a file with this name and content.
  std::string archive_of(const std::string& name, const std::string& content) {
    const std::string source = temp_path + name;
    overwrite(source, content);
    EXPECT_EQ(file_to_zip(source, temp_path + "made.zip"), 0);
    delete_file(source);
    return content_of(temp_path + "made.zip");
  }

  void put(const std::string& inside, const std::string& content) {
    const std::string path = dest_dir_path + inside;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    overwrite(path, content);
  }

  std::string log() {
    xer.flush();
    return content_of(log_path_);
  }

 private:
  std::string log_path_;
};

// A mirror that serves `files` by their full URL, and 404 for the rest, each after a pause; it does
// not work when it is asked for `away` the first time.
class mirror {
 public:
  explicit mirror(std::map<std::string, std::string> files, int pause_ms = 0, std::string away = "")
      : files_(std::move(files)),
        server_([this, pause_ms, away](const std::string& request) mutable {
          usleep(static_cast<useconds_t>(pause_ms) * 1000);
          const std::string url = request.substr(4, request.find(" HTTP/") - 4);
          if (url == away) {
            away.clear();
            return whole_answer("not now", "503 Service Unavailable");
          }
          const auto found = files_.find(url);
          return found != files_.end() ? whole_answer(found->second)
                                       : whole_answer("no such file", "404 Not Found");
        }) {
    use_proxy_port(server_.port());
  }
  std::vector<std::string> requests() { return server_.requests(); }

 private:
  const std::map<std::string, std::string> files_;
  scripted_server server_;
};

// Calls grab_files as a page does, until it is over or ten seconds have gone.
inline bool run_job() {
  return comes_true([] { return grab_files() != 0; });
}
