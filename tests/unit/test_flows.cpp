// The flows of the web from their first page to their last, as a user goes through them and as a
// run without a display does: what each page shows, where it leads and what is told, to the letter.

#include <fcntl.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <iterator>
#include <regex>
#include <sstream>
#include <utility>

#include "Installer-f/engine/utils_copies.h"
#include "Installer-f/engine/utils_disc.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_trouble.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/wizard/main_app.h"
#include "Installer-f/wizard/main_ask.h"
#include "Installer-f/wizard/main_demo.h"
#include "Installer-f/wizard/main_dest.h"
#include "Installer-f/wizard/main_dvd.h"
#include "Installer-f/wizard/main_dvd_pages.h"
#include "Installer-f/wizard/main_dvd_repair.h"
#include "Installer-f/wizard/main_dvd_scenery.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_map.h"
#include "Installer-f/wizard/main_net.h"
#include "Installer-f/wizard/main_remove.h"
#include "Installer-f/wizard/main_unattended.h"
#include "Installer-f/wizard/main_unattended_end.h"
#include "Installer-f/wizard/main_unattended_list.h"
#include "Installer-f/wizard/main_unattended_progress.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "Installer-f/wizard/main_wizard.h"
#include "Installer-f/wizard/main_wizard_draw.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/hl_app.h"
#include "gl_fixture.h"
#include "grab_fixture.h"

namespace {

const struct {
  page_function page;
  const char* name;
} pages[] = {{net_start, "start"},
             {net_pick_dest, "pick"},
             {net_get_updates, "search"},
             {net_check_disk, "space"},
             {net_run_patch, "transfer"},
             {net_done, "done"},
             {demo_start, "demo"},
             {demo_eula, "licence"},
             {demo_get_updates, "servers"},
             {demo_pick_dest, "place"},
             {demo_run_patch, "transfer"},
             {demo_done, "demo_done"},
             {remove_start, "remove"},
             {dvd_do_run_sim, "run"},
             {wizard_quit, "quit"},
             {dvd_start, "disc"},
             {dvd_pick_install, "place"},
             {dvd_eula_install, "licence"},
             {dvd_scenery_install, "map"},
             {dvd_run_install, "install"},
             {dvd_verify_disk_install, "check"},
             {dvd_switch_disk_install, "change"},
             {dvd_done_install, "installed"},
             {dvd_pick_run_sim, "pick_to_run"},
             {dvd_pick_scenery, "pick"},
             {dvd_scan_scenery, "scan"},
             {dvd_edit_scenery, "edit"},
             {dvd_install_scenery, "install"},
             {dvd_verify_disk_scenery, "check"},
             {dvd_switch_disk_scenery, "change"},
             {dvd_done_scenery, "installed"},
             {dvd_pick_repair, "pick"},
             {dvd_scan_repair, "scan"},
             {dvd_confirm_repair, "confirm"},
             {dvd_install_repair, "repair"},
             {dvd_verify_disk_repair, "check"},
             {dvd_switch_disk_repair, "change"},
             {dvd_done_repair, "repaired"}};
std::string name_of(page_function page) {
  for (const auto& known : pages)
    if (known.page == page) return known.name;
  return page ? "?" : "-";
}

// What is to be told, under its name in flows.txt.
std::string written(const std::string& name) {
  const std::string all = content_of(TESTS_FOLDER "/unit/flows.txt");
  const std::string head = "#### " + name + "\n";
  const size_t at = all.find(head);
  if (at == all.npos) return "nothing is written of " + name;
  return all.substr(at + head.size(), all.find("#### ", at + 1) - at - head.size());
}

// What the user does on the pages that wait for one, in order, each after a "/": presses the button
// of that name, or something else that a test gives the name to.
std::string deeds;
std::map<std::string, std::function<void()>> acts;
std::string last_record;

std::string root;  // of the copies, which is told as "~/"
// What is long in the middle is left out.
std::string both_ends(std::string text) {
  constexpr size_t kept = 24;
  text = std::regex_replace(text, std::regex(root), "~/");
  if (text.size() > 2 * kept + 2) text.replace(kept, text.size() - 2 * kept, "..");
  std::replace(text.begin(), text.end(), '\n', '/');
  return text;
}

// All of a page's record on one line.
void note_record(page_function page, const wizard_screen& screen, int result) {
  std::string line = name_of(page) + (result ? " goes on" : "") + ": " + screen.title;
  if (screen.outcome) line += screen.outcome == outcome_good ? " (+)" : " (-)";
  line += " | " + both_ends(screen.text);
  for (const std::string& note : wizard_notes)
    line += " | " + both_ends(note.substr(note.find("\nDisk space") + 1));
  line += " | <" + name_of(screen.back) + " >" + name_of(screen.next);
  for (size_t i = 0; i < screen.button_names.size(); ++i)
    line += " [" + screen.button_names[i] + ">" + name_of(screen.button_pages[i]) + "]";
  const std::pair<bool, const char*> marks[] = {
      {screen.prefs_enabled != 0, "options"}, {screen.show_servers != 0, "mirrors"},
      {screen.kill_proc != nullptr, "kill"},  {screen.leave_proc != nullptr, "leave"},
      {screen.text_is_framed, "framed"},      {screen.copy_is_busy, "busy"}};
  for (const auto& [is_set, mark] : marks)
    if (is_set) line += std::string(" ") + mark;
  if (line != last_record) std::puts(line.c_str());
  std::fflush(stdout);
  last_record = line;
}

wizard_press press(page_function page, int, const wizard_screen& screen, int result) {
  wizard_press hand;
  const bool waits =
      page->kind == page_choice || page->kind == page_disc || page->kind >= page_last;
  if (result || (waits && screen.progress < 0)) note_record(page, screen, result);
  if ((result && screen.next) || !waits || screen.progress >= 0) return hand;
  if (deeds.empty()) {
    hand.quit = true;
    return hand;
  }
  const std::string now = deeds.substr(1, deeds.find('/', 1) - 1);
  deeds.erase(0, now.size() + 1);
  if (acts.contains(now)) acts[now]();
  hand.next = now == "next";
  hand.back = now == "back";
  const auto named = std::find(screen.button_names.begin(), screen.button_names.end(), now);
  if (named != screen.button_names.end())
    hand.extra = static_cast<int>(named - screen.button_names.begin());
  return hand;
}
int answer_modified(const std::string& path, int gone) {
  std::printf("asked about %s%s\n", path.c_str(), gone ? ", gone" : "");
  return answer_keep;
}
int give_up(const std::string& question) {
  std::puts(both_ends(question).c_str());
  if (!deeds.starts_with("/no/")) return 1;
  deeds.erase(0, 3);
  return 0;
}
constexpr wizard_stand_in the_user = {press, answer_modified, give_up};

// A mirror in a process of its own: a process that is forked beside a thread may never get a lock
// that the thread held.
class mirror_process {
 public:
  explicit mirror_process(const std::map<std::string, std::string>& files) {
    int to_us[2], port = 0;
    EXPECT_EQ(pipe(to_us), 0);
    child_ = fork();
    if (child_ == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      const mirror served(files);
      while (write(to_us[1], &http._proxy_port_int, sizeof port) > 0)
        pause();
    }
    EXPECT_EQ(read(to_us[0], &port, sizeof port), static_cast<ssize_t>(sizeof port));
    use_proxy_port(port);
  }
  ~mirror_process() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }

 private:
  pid_t child_ = -1;
};

class Flows : public Grab {
 public:
  struct shipped {
    std::string path,
        is;  // in a copy: there, old, changed, lost; dropped by the release; "nowhere" to be had
    int disk = 0;
  };

 protected:
  Flows() {
    root = new_folder();
    dest_dir_path.clear();
    cmd_line_path.clear();
    dvd_path.clear();
    setenv("XDG_CONFIG_HOME", (root + "config").c_str(), 1);
    setenv("XDG_STATE_HOME", (root + "state").c_str(), 1);
    unsetenv("http_proxy");
    mkdir((root + "config").c_str(), 0755);
    files_["http://" + std::string(product_web_host) + "/serverlist9.txt"] =
        "I\n820 version\nSERVERS\nFINAL Rel9\nSERVER mirror\n/\nA mirror\nENDOFLIST\n";
  }

  // A release whose files have two versions each, but for what is gone: the mirror's, and the
  // discs'.
  void publish(const std::vector<shipped>& rows, int disks = 0, long raw_kb = 2) {
    rows_ = rows;
    std::string manifest = "I\n900 version\nINSTALLER\n";
    for (const shipped& file : rows) {
      const size_t slash = file.path.rfind('/') + 1;
      const std::string name = file.path.substr(slash), content = "content of " + name;
      manifest += "DISK " + std::to_string(file.disk) + "\nDIR All/" + file.path.substr(0, slash) +
                  "\nFILE 0 0 90500 1 2 " + sig_of("old " + content) + " " + name +
                  "\nFILE 0 0 91001 1 " + std::to_string(raw_kb) + " " +
                  (file.is == "dropped" ? "GONE" : sig_of(content)) + " " + name + "\n";
      if (file.is == "nowhere" || file.is == "dropped") continue;
      const std::string archive = archive_of(name, content);
      files_["http://mirror/Rel9/All/" + file.path + ".zip"] = archive;
      if (file.disk >= disks) continue;
      put_at("disc/Rel9/All/" + file.path + ".zip", archive);
      if (file.path.find("Global") == file.path.npos) continue;
      put_at("made/" + name, content);
      const std::string pack = "cd '" + root + "made' && 7z a -t7z '" + root + "disc/Rel9/All/" +
                               file.path + ".7z' '" + name + "' >/dev/null";
      EXPECT_EQ(std::system(pack.c_str()), 0);
    }
    files_["http://mirror/Rel9/directory.txt.zip"] = archive_of("directory.txt", manifest);
    put_at("disc/Rel9/directory.txt.zip", files_["http://mirror/Rel9/directory.txt.zip"]);
    put_at("disc/dvd_version.txt", "I\n900 version\nDVD\nVERSION Rel9\n");
  }
  std::string sig_of(const std::string& content) {
    std::string sig;
    std::ofstream(temp_path + "some") << content;
    calc_file_md5(temp_path + "some", sig);
    return sig;
  }
  void put_at(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(root + path).parent_path());
    std::ofstream(root + path) << content;
  }
  // A copy with each file in its state, on the list of copies.
  std::string copy(const std::string& name, bool listed = true) {
    dest_dir_path = root + name + "/";
    for (const char* const folder : {"Airfoils", "Instructions", "Output", "Resources"})
      std::filesystem::create_directories(dest_dir_path + folder);
    for (const shipped& file : rows_) {
      const std::string content = "content of " + file.path.substr(file.path.rfind('/') + 1);
      if (file.is == "there") put(file.path, content);
      if (file.is == "old" || file.is == "dropped") put(file.path, "old " + content);
      if (file.is == "changed") put(file.path, "the user's own");
    }
    if (listed) register_new_skyvane();
    return std::exchange(dest_dir_path, "");
  }

  // What is known of the copies.
  static std::string noted() {
    std::string all;
    for (const copy_facts& copy : copies_on_list())
      all += both_ends(copy.path) + ' ' + copy.release + ' ' + copy.edition + ' ';
    return all;
  }

  // What a process says and ends with; times, sizes and places, which are others in each run, left
  // out.
  std::string told(const std::function<int()>& body) {
    const std::string out = root + "out";
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
      const int to = open(out.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_APPEND, 0644);
      dup2(to, STDOUT_FILENO);
      dup2(to, STDERR_FILENO);
      alarm(60);
      const int status = body();
      std::fflush(nullptr);
      std::_Exit(status);
    }
    int status = 0;
    waitpid(child, &status, 0);
    std::string text = std::regex_replace(content_of(out), std::regex(root), "~/");
    const struct {
      const char *found, *put;
    } rows[] = {{R"((^|\n)[^\n]*( % |"progress"|There is no log)[^\n]*)", ""},
                {R"x(\{"event": "(\w+)", "time": "[^"]*"(, )?)x", "$1: "},
                {R"(Disk size: .*\nFree disk space: .*\n)", ""},
                {R"x(("(bytes|seconds)": )[0-9.]+)x", "$1N"},
                {R"([0-9.]+ (seconds|bytes moved))", "N $1"},
                {R"((127.0.0.1:)[0-9]+)", "$1N"},
                {R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[-+]\d{4} )", "TIME "},
                {R"(    (Output/of mine|Resources/)[^\n]*\n)", "."},
                {R"(Resources/[0-9]+\n    http[^\n]*\n)", "."},
                // Which are shown depends on how soon they are done.
                {R"(\n(Installing|Scanning|Repairing)[^\n]*)", ""},
                {R"(\npage: "kind": "(transfer|install)[^\n]*)", ""},
                {R"(\n\n)", "\n"}};
    for (const auto& row : rows)
      text = std::regex_replace(text, std::regex(row.found), row.put);
    return text + (WIFEXITED(status) ? "= " + std::to_string(WEXITSTATUS(status)) : "killed") +
           "\n";
  }

  static void turn() {
    while (!app_done) {
      xtim.xtim_update();
      APP_update();
    }
    grab_kill();
    install_files_kill();
    checksum_directory_kill();
  }
  // A user's walk from the start page.
  std::string walk(page_function start, const std::string& script) {
    return told([&] {
      deeds = script;
      stand_in = &the_user;
      engine_ask.modified = select_alert;
      install_name = no_install_name;
      wizard_serve(start, "The installer", "program");
      stg = stg_record();
      turn();
      if (!deeds.empty()) std::puts("deeds are left");
      return 0;
    });
  }
  // A run without a display.
  std::string run(page_function start, std::vector<std::string> arguments) {
    return told([&] {
      std::vector<const char*> argv = {"program"};
      for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());
      const int argc = static_cast<int>(argv.size());
      cmdline = UTL_cmdline();
      cmdline.init_unix(argc, argv.data());
      engine_ask.modified = select_alert;
      install_name = no_install_name;
      wizard_serve(start, "The installer", "program");
      stg = stg_record();
      stg.stream_count = 1;  // in the manifest's order
      if (const int refused = unattended_begin(argc, argv.data())) return refused;
      if (cmdline.has_option("--list")) return unattended_list();
      if (cmdline.has_option("--uninstall")) g_wizard = remove_start;
      turn();
      return unattended_end();
    });
  }

  std::map<std::string, std::string> files_;
  std::vector<shipped> rows_;
};

TEST_F(Flows, TheUpdateByHand) {
  publish({{"Resources/there", "there"},
           {"Resources/old", "old"},
           {"Airfoils/changed", "changed"},
           {"Output/dropped", "dropped"},
           {"Instructions/lost", "lost"}});
  const std::string one = copy("One"), two = copy("Two");
  const mirror_process m(files_);
  acts = {{"pick", [&] { dest_dir_path = two; }},
          {"take back", [&] { std::ofstream(two + "Airfoils/changed") << "content of changed"; }}};
  EXPECT_EQ(walk(net_start, "/next/next/pick/next/back/next/take back"), written("the update"));
  EXPECT_EQ(noted(), "~/One/   ~/Two/ Rel9  ");
  unregister_skyvane(one);
  EXPECT_EQ(walk(net_start, "/next/"), written("the update of what is current"))
      << "the only one, and nothing is left to do";
  cmd_line_path = root + "config/";
  EXPECT_EQ(walk(net_start, "/next"), written("the update of no copy")) << "no copy";
  cmd_line_path.clear();
  unregister_skyvane(two);
  EXPECT_EQ(walk(net_start, "/next/back/"), written("the update with no copy known"))
      << "none is known";
}

TEST_F(Flows, TheDemoByHand) {
  EXPECT_EQ(accept_eula_demo, 0);
  publish({{"Resources/a", "lost"}, {"Resources/b", "there"}});
  const mirror_process m(files_);
  demo_dest.parent_dir = root;
  acts["accept"] = [] { accept_eula_demo = 1; };
  for (const char* const name : {"no name", "config", "My demo"})
    acts[name] = [=] { demo_dest.install_folder = name == std::string("no name") ? "" : name; };
  EXPECT_EQ(walk(demo_start, "/next/next/accept/next/no name/config/My demo/next/"),
            written("the demo"));
  EXPECT_EQ(content_of(root + "My demo/Resources/a"), "content of a");
  EXPECT_EQ(noted(), "~/My demo/ Rel9 demo ");
  std::filesystem::remove(root + "My demo/Resources/b");
  EXPECT_EQ(walk(demo_start, "/accept/next/next/My demo/next/"), written("the demo gone on with"));
  // Another program has put it on the list meanwhile.
  std::filesystem::remove(root + "My demo/Resources/b");
  unregister_skyvane(root + "My demo/");
  acts["listed"] = [] {
    dest_dir_path = root + "My demo/";
    register_new_skyvane();
    dest_dir_path.clear();
  };
  const auto past_welcome = [](const std::string& told) { return told.substr(told.find('\n')); };
  EXPECT_EQ(past_welcome(walk(demo_start, "/accept/next/listed/next/My demo/next/")),
            past_welcome(written("the demo gone on with")));
  // Left in the midst of it, and given up.
  dest_dir_path = root + "My demo/";
  acts["begin"] = [] { demo_install_is_running = 1; };
  EXPECT_EQ(walk(demo_start, "/accept/begin/next/next/no/"), written("the demo not given up"));
  EXPECT_EQ(walk(demo_start, "/accept/begin/next/next/"), written("the demo given up"));
  EXPECT_FALSE(std::filesystem::exists(root + "My demo"));
}

TEST_F(Flows, NoRoom) {
  publish({{"Resources/lost", "lost"}}, 0, 2'000'000'000);
  cmd_line_path = copy("One");
  const mirror_process m(files_);
  EXPECT_EQ(walk(net_start, "/next/next/back/"), written("no room for the update"));
  demo_dest.parent_dir = root;
  acts["accept"] = [] { accept_eula_demo = 1; };
  EXPECT_EQ(walk(demo_start, "/accept/next/next/"), written("no room for the demo"));
}

const std::vector<Flows::shipped> disc_files = {
    {"Resources/a", "lost"},
    {"Airfoils/b", "lost"},
    {"Instructions/i", "lost"},
    {"Output/o", "lost"},
    {"Global Scenery/-global terrain-/+30-120/+34-118.dsf", "lost"},
    {"Global Scenery/-global terrain-/+40-120/+44-118.dsf", "lost"}};

TEST_F(Flows, SceneryStaysUnlessItIsDeselected) {
  const std::string& old = disc_files[4].path;
  publish({{old, "old"}, {disc_files[5].path, "there"}, {"Resources/a", "there"}}, 1);
  const std::string url = "http://mirror/Rel9/All/" + old + ".zip";
  files_[std::regex_replace(url, std::regex(" "), "%20")] = files_[url];
  const std::string one = copy("One");
  const mirror_process m(files_);
  walk(net_start, "/next/next/");
  EXPECT_EQ(content_of(one + old), "content of +34-118.dsf");
  EXPECT_EQ(content_of(one + disc_files[5].path), "content of +44-118.dsf");
  std::filesystem::remove(one + old);
  dvd_path = root + "disc/";
  acts = {{"one more", [] { stg.sector_selected[sector_cell(6, 12)] = 1; }},
          {"not that", [] { stg.sector_selected[sector_cell(6, 13)] = 0; }}};
  walk(dvd_start, "/Add Or Remove Scenery/next/one more/next/");
  EXPECT_TRUE(file_exists(one + old) && file_exists(one + disc_files[5].path));
  walk(dvd_start, "/Add Or Remove Scenery/next/not that/next/");
  EXPECT_TRUE(file_exists(one + old) && !file_exists(one + disc_files[5].path));
}

TEST_F(Flows, TheDiscByHand) {
  EXPECT_EQ(accept_eula, 0);
  publish(disc_files, 1);
  dvd_path = root + "disc/";
  dvd_dest.parent_dir = root;
  acts = {{"accept", [] { accept_eula = 1; }},
          {"less", [] { stg.sector_selected[sector_cell(6, 13)] = 0; }}};
  EXPECT_EQ(walk(dvd_start,
                 "/next/accept/next/next/less/next/back/Add Or Remove Scenery/next/less"
                 "/back/back/Repair Skyvane/next/next/back/Run Skyvane Now/"),
            written("the disc"));
  EXPECT_EQ(noted(), "~/Rel9/ Rel9 full ");
}

TEST_F(Flows, TheDiscsThatAreWanted) {
  publish({{"Resources/a", "lost"}, {"Airfoils/b", "there"}, {"Resources/z", "lost", 1}}, 1);
  dvd_path = root + "disc/";
  copy("One");
  EXPECT_EQ(walk(dvd_start, "/Repair Skyvane/next/next//back/"),
            written("the discs that are wanted"));
  std::filesystem::remove(root + "One/Resources/a");
  acts = {{"take it out", [] { dvd_path.clear(); }}, {"put in another", [] { dvd_path = root; }}};
  EXPECT_EQ(walk(dvd_start, "/Repair Skyvane/next/take it out/next/back/put in another/next/"),
            written("a disc that is not in"));
  publish({disc_files.back()}, 1);
  EXPECT_EQ(walk(dvd_start, ""), written("a disc of scenery alone"));
}

// The way back out of a job asks first, and leads to it again when the user thinks better of it.
TEST_F(Flows, TheDiscsJobsGoOn) {
  publish({disc_files[0], {"Resources/z", "lost", 1}, {disc_files[5].path, "lost", 1}}, 1);
  dvd_path = root + "disc/";
  dvd_dest.parent_dir = root;
  acts = {{"accept", [] { accept_eula = 1; }},
          {"one", [] { stg.sector_selected[sector_cell(6, 13)] = 1; }}};
  std::string all = walk(dvd_start, "/next/accept/next/next/next/back/no/back/");
  copy("One");
  all += walk(dvd_start, "/Repair Skyvane/next/next/back/no/back/");
  copy("One");
  all += walk(dvd_start, "/Add Or Remove Scenery/next/one/next/back/no/back/");
  EXPECT_EQ(all, written("the disc's jobs go on"));
}

// A file that the disc does not have, and the user gives up: a first install asks once more.
TEST_F(Flows, TheDiscIsGivenUpAtAnError) {
  auto files = disc_files;
  for (shipped& file : files)
    if (file.path != "Resources/a" && !str_holds(file.path, "+34")) file.is = "nowhere";
  publish(files, 1);
  dvd_path = root + "disc/";
  dvd_dest.parent_dir = root;
  acts = {{"accept", [] { accept_eula = 1; }},
          {"one", [] { stg.sector_selected[sector_cell(6, 12)] = 1; }},
          {"all", [] {
             for (const int row : {12, 13})
               stg.sector_selected[sector_cell(6, row)] = 1;
           }}};
  std::string all = walk(dvd_start, "/next/accept/next/next/next/");
  copy("One");
  all += walk(dvd_start, "/Repair Skyvane/next/next/back/Add Or Remove Scenery/next/one/next/");
  std::filesystem::remove_all(root + "One/Global Scenery");
  all += walk(dvd_start, "/Add Or Remove Scenery/next/all/next/back/Add Or Remove Scenery/next/");
  EXPECT_EQ(all, written("the disc given up at an error"));
}

// Only a copy that is listed is a choice; a sole copy is started unseen, if there is what to start.
TEST_F(Flows, PickingACopy) {
  publish(disc_files, 1);
  dvd_path = root + "disc/";
  const std::string one = copy("One"), two = copy("Two");
  acts = {{"one that was never made", [] { dest_dir_path = root + "never made/"; }},
          {"two", [&] { dest_dir_path = two; }}};
  std::string all;
  for (const std::string button : {"Repair Skyvane", "Add Or Remove Scenery", "Run Skyvane Now"})
    all += walk(dvd_start, "/one that was never made/" + button + "/two/");
  unregister_skyvane(two);
  put_at("One/Skyvane.app/Contents/MacOS/Skyvane", "#!/bin/true");
  all += walk(dvd_start, "/Run Skyvane Now/");
  chmod((one + "Skyvane.app/Contents/MacOS/Skyvane").c_str(), 0755);
  all += walk(dvd_start, "/Run Skyvane Now/");
  EXPECT_EQ(all, written("picking a copy"));
}

TEST_F(Flows, RunsWithoutADisplay) {
  publish({{"Resources/there", "there"},
           {"Resources/old", "old"},
           {"Airfoils/changed", "changed"},
           {"Output/dropped", "dropped"},
           {"Instructions/lost", "lost"}});
  const mirror_process m(files_);
  std::string all;
  const auto web = [&](const std::string& name, std::vector<std::string> more) {
    if (!std::filesystem::exists(root + name)) copy(name, name == "One");
    more.insert(more.begin(), {"--unattended", "--copy=" + root + name});
    all += run(net_start, more);
  };
  web("One", {"--check"});
  web("One", {"--check", "--json", "--on_modified=overwrite"});
  web("One", {});
  web("One", {"--check"});
  web("Two", {"--json", "--on_modified=overwrite"});
  web("Three", {"--quiet", "--timestamps"});
  web("Four", {"--on_modified=cancel"});
  web("Four", {"--uninstall", "--check"});
  web("Four", {"--uninstall", "--check", "--json"});
  web("Four", {"--uninstall"});
  web("config", {});
  EXPECT_EQ(all, written("runs of the updater"));
  all.clear();
  const auto demo = [&](std::vector<std::string> more) {
    more.insert(more.end(), {"--unattended", "--dest=" + root, "--name=New"});
    all += run(demo_start, more);
  };
  demo({"--json"});
  demo({"--check"});
  demo({"--accept_eula"});
  demo({"--accept_eula"});
  all += run(net_start, {"--list"}) + run(net_start, {"--list", "--json"});
  EXPECT_EQ(all, written("runs of the demo"));
}

TEST_F(Flows, RunsThatFail) {
  std::vector<shipped> many = {{"Resources/there", "there"}, {"Resources/x", "nowhere"}};
  publish(many);
  const std::string one = copy("One");
  const auto web = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"--unattended", "--copy=" + one});
    return run(net_start, more);
  };
  std::string all;
  {
    const mirror_process m(files_);
    all = web({"--json"});
    for (int i = 10; i < 31; ++i)
      many.push_back({"Resources/" + std::to_string(i), "nowhere"});
    publish(many);
  }
  {
    const mirror_process m(files_);
    for (int i = 10; i < 32; ++i)
      put_at("One/Output/of mine " + std::to_string(i), "");
    all += web({});
    all += web({"--uninstall"});
    std::filesystem::create_directories(root + "One/Resources");
    const int other = open(one.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX), 0);
    all += web({});
    close(other);
  }
  use_proxy_port(closed_port());
  all += web({"--give_up_after=0.5"});
  all += web({"--json", "--give_up_after=0.5"});
  int port = 0;
  const int silent = bound_socket(&port);
  listen(silent, 1);
  use_proxy_port(port);
  all += web({"--give_up_after=0.5"});
  close(silent);
  EXPECT_EQ(all, written("runs that fail"));
}

TEST_F(Flows, ARunIsToldWhatIsWrongWithItsAnswers) {
  std::string all;
  for (const char* const argument :
       {"--nothing", "--dest=", "--dest=/a\nb", "--name=a/b", "--on_modified=maybe",
        "--platform=beos", "--give_up_after=0", "--give_up_after=1x", "--do=install",
        "--sectors=all", "--uninstall", "--pref:_proxy_host=proxy.example"})
    all += run(demo_start, {"--unattended", argument});
  for (const char* const argument : {"--do=nothing", "--sectors=+30"})
    all += run(dvd_start, {"--unattended", argument});
  EXPECT_EQ(all, written("runs that are refused"));
  const std::string longest = "--copy=/" + std::string(497, 'c');
  EXPECT_EQ(run(demo_start, {"--check", longest, "--name=/"}).find("shorter"), std::string::npos);
  EXPECT_NE(run(demo_start, {"--check", longest + "c", "--name=/"}).find("at most 499"),
            std::string::npos);
}

TEST_F(Flows, DiscRunsWithoutADisplay) {
  publish(disc_files, 1);
  dvd_path = root + "disc/";
  std::string all = run(dvd_start, {"--unattended", "--accept_eula", "--dest=" + root, "--name=New",
                                    "--sectors=+30-120"});
  for (const char* const more : {"--sectors=+40-120", "--sectors=+50-120"})
    all += run(dvd_start, {"--unattended", "--do=scenery", "--copy=" + root + "New/", more});
  for (const char* const name : {"New", "disc"})
    all += run(dvd_start, {"--unattended", "--do=repair", "--copy=" + root + name});
  const std::string found = copy("Not listed", false);
  all += run(dvd_start, {"--unattended", "--do=repair", "--copy=" + found});
  EXPECT_EQ(all, written("runs of the disc installer"));
}

TEST(FlowsProgress, AFullDiskIsToldToScripts) {
  cmdline.init_win("--json");
  say_begin();
  trouble_note(trouble_here("/some/file", ENOSPC));
  testing::internal::CaptureStdout();
  end_tell_failure();
  const std::string said = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(str_holds(said, "\"event\": \"error\"")) << said;
  EXPECT_TRUE(str_holds(said, "\"event\": \"trouble\"")) << said;
  cmdline = UTL_cmdline();
  say_begin();
}

TEST(FlowsProgress, WhatIsPrintedOfIt) {
  stg = stg_record();
  stg.todo_raw_kb = 2000;
  stg.todo_zip_kb = 1500;
  next = transfer_record();
  xtim.now_sec = 10;
  testing::internal::CaptureStdout();
  const auto show = [](page_kind kind) {
    progress_begin();
    for (const float at : {-1.0f, 0.0f, 0.049f, 0.05f, 0.05f, 0.5f, 1.0f}) {
      wizard_screen screen;
      screen.progress = at;
      next.done_raw_kb = 2000 * static_cast<double>(at);
      next.done_zip_kb = 1500 * static_cast<double>(at);
      progress_show(kind, screen);
    }
  };
  for (const page_kind kind : {page_job, page_install, page_transfer})
    show(kind);
  cmdline.init_win("--json");
  say_begin();
  for (const page_kind kind : {page_install, page_transfer})
    show(kind);
  cmdline = UTL_cmdline();
  say_begin();
  EXPECT_EQ(std::regex_replace(testing::internal::GetCapturedStdout(),
                               std::regex(R"("time": "[^"]*")"), R"("time": T)"),
            written("progress"));
}

}  // namespace
