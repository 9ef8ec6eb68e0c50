// The flows of the web from their first page to their last, as a user goes through them and as a
// run without a display does: what each page shows, where it leads and what is told, to the letter.

#include <fcntl.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <iterator>
#include <regex>
#include <sstream>
#include <utility>

#include "Installer-f/engine/utils_disc.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_select.h"
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
#include "Installer-f/wizard/main_unattended_list.h"
#include "Installer-f/wizard/main_unattended_progress.h"
#include "Installer-f/wizard/main_wizard.h"
#include "Installer-f/wizard/main_wizard_draw.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/hl_app.h"
#include "gl_fixture.h"
#include "grab_fixture.h"

namespace {

const page_function pages[] = {net_start,
                               net_pick_dest,
                               net_get_updates,
                               net_check_disk,
                               net_run_patch,
                               net_done,
                               demo_start,
                               demo_eula,
                               demo_get_updates,
                               demo_pick_dest,
                               demo_run_patch,
                               demo_done,
                               remove_start,
                               dvd_do_run_sim,
                               wizard_quit,
                               dvd_start,
                               dvd_pick_install,
                               dvd_eula_install,
                               dvd_scenery_install,
                               dvd_run_install,
                               dvd_verify_disk_install,
                               dvd_switch_disk_install,
                               dvd_done_install,
                               dvd_pick_run_sim,
                               dvd_pick_scenery,
                               dvd_scan_scenery,
                               dvd_edit_scenery,
                               dvd_install_scenery,
                               dvd_verify_disk_scenery,
                               dvd_switch_disk_scenery,
                               dvd_done_scenery,
                               dvd_pick_repair,
                               dvd_scan_repair,
                               dvd_confirm_repair,
                               dvd_install_repair,
                               dvd_verify_disk_repair,
                               dvd_switch_disk_repair,
                               dvd_done_repair};
constexpr char names[] =
    "start pick search space transfer done demo licence servers place transfer demo_done "
    "remove run quit disc place licence map install check change installed pick_to_run pick "
    "scan edit install check change installed pick scan confirm repair check change repaired ";
std::string name_of(page_function page) {
  std::istringstream words(names);
  std::string word;
  for (const page_function known : pages)
    if (words >> word && known == page) return word;
  return page ? "?" : "-";
}

// What the user does on the pages that wait for one, in order: a button, or something else.
struct deed {
  std::string press;
  std::function<void()> act = nullptr;
};
std::vector<deed> deeds;
size_t done_deeds;
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
  if (done_deeds == deeds.size()) {
    hand.quit = true;
    return hand;
  }
  const deed& now = deeds[done_deeds++];
  if (now.act) now.act();
  hand.next = now.press == "next";
  hand.back = now.press == "back";
  const auto named = std::find(screen.button_names.begin(), screen.button_names.end(), now.press);
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
  return 1;
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
    root = scratch_folder();
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
    std::string text = std::regex_replace(bytes_of(out), std::regex(root), "~/");
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
  std::string walk(page_function start, std::vector<deed> script) {
    return told([&] {
      deeds = std::move(script);
      stand_in = &the_user;
      engine_ask.modified = select_alert;
      install_name = no_install_name;
      wizard_serve(start, "The installer", "program");
      stg = stg_record();
      turn();
      if (done_deeds != deeds.size()) std::puts("deeds are left");
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
  const deed pick = {"", [&] { dest_dir_path = two; }};
  const deed take_back = {"",
                          [&] { std::ofstream(two + "Airfoils/changed") << "content of changed"; }};
  EXPECT_EQ(
      walk(net_start, {{"next"}, {"next"}, pick, {"next"}, {"back"}, {"next"}, take_back}),
      R"(start: Skyvane 9 Web Updater | I will guide you through..9 to the latest version. | <- >pick options
pick: Pick Destination | You have more than one c..ou would like to update. | ~/One/ | ~/Two/ | Is the copy of Skyvane 9.. missing from this list? | <start >- options
pick: Pick Destination | You have more than one c..ou would like to update. | ~/One/ | ~/Two/ | Is the copy of Skyvane 9.. missing from this list? | <start >search options
search goes on: Search for Updates |  | <pick >space kill leave
space: Check Disk Space | You are about to downloa.. data to update to Rel9. | Disk space needed to ins..pace to update Skyvane 9 | <search >transfer mirrors
search goes on: Search for Updates |  | <pick >space kill leave
space: Check Disk Space | You are about to downloa.. data to update to Rel9. | Disk space needed to ins..pace to update Skyvane 9 | <search >transfer mirrors
asked about ~/Two/Airfoils/changed
transfer goes on: Installing |  | <- >done mirrors
done: Finshed Web Update (+) | I have finished updating ~/Two/. | <- >quit [Fly Skyvane Now>run]
= 0
)");
  unregister_skyvane(one);
  EXPECT_EQ(
      walk(net_start, {{"next"}, {""}}),
      R"(start: Skyvane 9 Web Updater | I will guide you through..9 to the latest version. | <- >search options
search goes on: Search for Updates |  | <pick >space kill leave
space goes on: Check Disk Space |  | <search >done mirrors
done: Finshed Web Update (+) | This copy of Skyvane (~/..) is already up to date. | <- >quit [Fly Skyvane Now>run]
= 0
)") << "the only one, and nothing is left to do";
  cmd_line_path = root + "config/";
  EXPECT_EQ(
      walk(net_start, {{"next"}}),
      R"(start: Skyvane 9 Web Updater | You selected the folder ..the Skyvane application. | <- >- options
= 0
)") << "no copy";
  cmd_line_path.clear();
  unregister_skyvane(two);
  EXPECT_EQ(
      walk(net_start, {{"next"}, {"back"}, {""}}),
      R"(start: Skyvane 9 Web Updater | You do not appear to have Skyvane 9 installed. | <- >pick options
pick: Pick Destination | You do not appear to hav..ou would like to update. | Is the copy of Skyvane 9.. missing from this list? | <start >- options
start: Skyvane 9 Web Updater | You do not appear to have Skyvane 9 installed. | <- >pick options
= 0
)") << "none is known";
}

TEST_F(Flows, TheDemoByHand) {
  publish({{"Resources/a", "lost"}, {"Resources/b", "there"}});
  const mirror_process m(files_);
  demo_dest.parent_dir = root;
  const auto named = [](const char* name) {
    return deed{"", [=] { demo_dest.install_folder = name; }};
  };
  const deed accept = {"", [] { accept_eula_demo = 1; }};
  EXPECT_EQ(
      walk(demo_start, {{"next"},
                        {"next"},
                        accept,
                        {"next"},
                        named(""),
                        named("config"),
                        named("My demo"),
                        {"next"},
                        {""}}),
      R"(demo: Welcome | I will guide you through..e web demo of Skyvane 9. | <- >licence options
licence: End User License Agreement (EULA) | Use Skyvane for whatever..sion from Tessaron Labs. | I accept this agreement. | <demo >- framed
licence: End User License Agreement (EULA) | Use Skyvane for whatever..sion from Tessaron Labs. | I accept this agreement. | <demo >servers framed
servers goes on: Check Servers |  | <licence >place
place: Pick Install Destination. | I will create the folder..' in the directory '~/'. | Disk space needed to ins..  demo at this location. | <licence >transfer
place: Pick Install Destination. | Please pick a name for y..kyvane 9 installation... | <licence >-
place: Pick Install Destination. | The folder 'config' alre..all name or destination. | <licence >-
place: Pick Install Destination. | I will create the folder..' in the directory '~/'. | Disk space needed to ins..  demo at this location. | <licence >transfer
transfer goes on: Installing |  | <- >demo_done mirrors
demo_done: Finshed Web Demo Install (+) | I have finished installi..web demo at: ~/My demo/. | <- >quit [Fly Skyvane 9 Now>run]
= 0
)");
  EXPECT_EQ(bytes_of(root + "My demo/Resources/a"), "content of a");
  std::filesystem::remove(root + "My demo/Resources/b");
  EXPECT_EQ(
      walk(demo_start, {accept, {"next"}, {"next"}, named("My demo"), {"next"}, {""}}),
      R"(demo: Welcome | I will guide you through.. demo copy of Skyvane 9? | <- >licence options
licence: End User License Agreement (EULA) | Use Skyvane for whatever..sion from Tessaron Labs. | I accept this agreement. | <demo >servers framed
servers goes on: Check Servers |  | <licence >place
place: Pick Install Destination. | I will create the folder..' in the directory '~/'. | Disk space needed to ins..  demo at this location. | <licence >transfer
place: Pick Install Destination. | I will go on with the in..' in the directory '~/'. | Disk space needed to ins..  demo at this location. | <licence >transfer kill leave
transfer goes on: Installing |  | <- >demo_done mirrors
demo_done: Finshed Web Demo Install (+) | I have finished installi..web demo at: ~/My demo/. | <- >quit [Fly Skyvane 9 Now>run]
= 0
)") << "gone on with";
  // Left in the midst of it, and given up.
  dest_dir_path = root + "My demo/";
  const deed begun = {"", [] { demo_install_is_running = 1; }};
  EXPECT_EQ(
      walk(demo_start, {accept, begun, {"next"}, {"next"}, {""}}),
      R"(demo: Welcome | I will guide you through.. demo copy of Skyvane 9? | <- >licence options
licence: End User License Agreement (EULA) | Use Skyvane for whatever..sion from Tessaron Labs. | I accept this agreement. | <demo >servers framed
servers goes on: Check Servers |  | <licence >place
Are you sure you want to..y of the Skyvane 9 demo.
place: Pick Install Destination. | I will create the folder..' in the directory '~/'. | Disk space needed to ins..  demo at this location. | <licence >transfer
= 0
)");
  EXPECT_FALSE(std::filesystem::exists(root + "My demo"));
}

TEST_F(Flows, NoRoom) {
  publish({{"Resources/lost", "lost"}}, 0, 2'000'000'000);
  cmd_line_path = copy("One");
  const mirror_process m(files_);
  EXPECT_EQ(
      walk(net_start, {{"next"}, {"next"}, {"back"}, {""}}),
      R"(start: Skyvane 9 Web Updater | I will guide you through..9 to the latest version. | <- >search options
search goes on: Search for Updates |  | <pick >space kill leave
space: Check Disk Space | There is a newer version..pace on your hard drive. | Disk space needed to ins..update Skyvane 9./~/One/ | <search >- mirrors
search goes on: Search for Updates |  | <pick >space kill leave
space: Check Disk Space | There is a newer version..pace on your hard drive. | Disk space needed to ins..update Skyvane 9./~/One/ | <search >- mirrors
= 0
)");
  demo_dest.parent_dir = root;
  EXPECT_EQ(
      walk(demo_start, {{"", [] { accept_eula_demo = 1; }}, {"next"}, {"next"}, {""}}),
      R"(demo: Welcome | I will guide you through.. demo copy of Skyvane 9? | <- >licence options
licence: End User License Agreement (EULA) | Use Skyvane for whatever..sion from Tessaron Labs. | I accept this agreement. | <demo >servers framed
servers goes on: Check Servers |  | <licence >place
place: Pick Install Destination. | I will create the folder..' in the directory '~/'. | Disk space needed to ins..al scenery./~/Rel9 Demo/ | <licence >-
= 0
)");
}

const std::vector<Flows::shipped> disc_files = {
    {"Resources/a", "lost"},
    {"Airfoils/b", "lost"},
    {"Instructions/i", "lost"},
    {"Output/o", "lost"},
    {"Global Scenery/-global terrain-/+30-120/+34-118.dsf", "lost"},
    {"Global Scenery/-global terrain-/+40-120/+44-118.dsf", "lost"}};

TEST_F(Flows, TheDiscByHand) {
  publish(disc_files, 1);
  dvd_path = root + "disc/";
  dvd_dest.parent_dir = root;
  const deed accept = {"", [] { accept_eula = 1; }};
  const deed less = {"", [] { stg.sector_selected[sector_cell(6, 13)] = 0; }};
  EXPECT_EQ(
      walk(dvd_start, {{"next"},
                       accept,
                       {"next"},
                       {"next"},
                       less,
                       {"next"},
                       {"back"},
                       {"Add Or Remove Scenery"},
                       {"next"},
                       less,
                       {"back"},
                       {"back"},
                       {"Repair Skyvane"},
                       {"next"},
                       {"next"},
                       {"back"},
                       {"Run Skyvane Now"},
                       {""}}),
      R"(disc: Skyvane 9 Installer | Welcome to the Skyvane 9..oess of installing Rel9. | <- >place options
place: Pick Install Destination. | I will create the folder..' in the directory '~/'. | Disk space needed to ins..vane 9 at this location. | <disc >licence
licence: End User License Agreement (EULA) | Use Skyvane for whatever..sion from Tessaron Labs. | I accept this agreement. | <place >map framed
map: Select Scenery | Please pick the scenery ..lect regions to install. | Disk space needed to ins..th the selected scenery. | <licence >install kill leave
map: Select Scenery | Please pick the scenery ..lect regions to install. | Disk space needed to ins..th the selected scenery. | <licence >install
install goes on: Installing Skyvane | I am installing Skyvane in ~/Rel9/. | <map >installed kill
installed: Finished Installing Skyvane (+) | Installation was successful. | <disc >quit [Run Skyvane Now>run]
disc: Skyvane 9 Installer | You already have Skyvane..at would you like to do? | <- >- [Run Skyvane Now>pick_to_run] [Add Or Remove Scenery>pick] [Repair Skyvane>pick] [Install A Second Copy of Skyvane>place] options
pick: Select Skyvane 9 to Add or Remove Scenery | Please pick which copy o.. like to add scenery to. | ~/Rel9/ | Is the copy of Skyvane 9.. missing from this list? | <disc >scan
scan goes on: Scanning Skyvane 9 for Installed Scenery | I am scanning ~/Rel9/ to..oaded from the internet. | <- >edit kill leave
edit: Select Scenery | Click on the world map t..you will see only ocean. | Disk space needed to ins..to install this scenery. | <pick >install
pick: Select Skyvane 9 to Add or Remove Scenery | Please pick which copy o.. like to add scenery to. | ~/Rel9/ | Is the copy of Skyvane 9.. missing from this list? | <disc >scan
disc: Skyvane 9 Installer | You already have Skyvane..at would you like to do? | <- >- [Run Skyvane Now>pick_to_run] [Add Or Remove Scenery>pick] [Repair Skyvane>pick] [Install A Second Copy of Skyvane>place] options
pick: Repair Skyvane 9 | Please pick which copy o..ou would like to repair. | ~/Rel9/ | Is the copy of Skyvane 9.. missing from this list? | <disc >scan
scan goes on: Scanning Skyvane for Problems | I am scanning ~/Rel9/ fo..he updates from the web. | <- >confirm kill leave
confirm: Confirm Repairs | I need to install approx..begin repairing Skyvane. | Disk space needed to ins..ir this copy of Skyvane. | <pick >repair
repair goes on: Repairing Skyvane | I am repairing ~/Rel9/. | <confirm >repaired kill
repaired: Finished Repairing Skyvane. (+) | I have finished repairin..return to the main menu. | <disc >quit [Run Skyvane Now>run]
disc: Skyvane 9 Installer | You already have Skyvane..at would you like to do? | <- >- [Run Skyvane Now>pick_to_run] [Add Or Remove Scenery>pick] [Repair Skyvane>pick] [Install A Second Copy of Skyvane>place] options
I can not start Skyvane, because there is no program to run here: ~/Rel9/Skyvane.app
This copy may be incomplete, or it may be for another operating system. 
pick_to_run goes on: Run Skyvane |  | <disc >disc
disc: Skyvane 9 Installer | You already have Skyvane..at would you like to do? | <- >- [Run Skyvane Now>pick_to_run] [Add Or Remove Scenery>pick] [Repair Skyvane>pick] [Install A Second Copy of Skyvane>place] options
= 0
)");
}

TEST_F(Flows, TheDiscsThatAreWanted) {
  publish({{"Resources/a", "lost"}, {"Airfoils/b", "there"}, {"Resources/z", "lost", 1}}, 1);
  dvd_path = root + "disc/";
  copy("One");
  EXPECT_EQ(
      walk(dvd_start, {{"Repair Skyvane"}, {"next"}, {"next"}, {""}, {"back"}, {""}}),
      R"(disc: Skyvane 9 Installer | You already have Skyvane..at would you like to do? | <- >- [Run Skyvane Now>pick_to_run] [Repair Skyvane>pick] [Install A Second Copy of Skyvane>place] options
pick: Repair Skyvane 9 | Please pick which copy o..ou would like to repair. | ~/One/ | Is the copy of Skyvane 9.. missing from this list? | <disc >scan
scan goes on: Scanning Skyvane for Problems | I am scanning ~/One/ for..he updates from the web. | <- >confirm kill leave
confirm: Confirm Repairs | I need to install approx..begin repairing Skyvane. | Disk space needed to ins..ir this copy of Skyvane. | <pick >repair
repair goes on: Repairing Skyvane | I am repairing ~/One/. | <confirm >check kill
check goes on: Repairing Skyvane - Checking DVD |  | <- >change kill
change: Repairing Skyvane - Please Change DVDs | Please insert DVD number 2 and click continue. | <confirm >check kill
Are you sure you want to..ter to complete repairs.
confirm: Confirm Repairs | I need to install approx..begin repairing Skyvane. | Disk space needed to ins..ir this copy of Skyvane. | <pick >repair
= 0
)");
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
  web("Four", {"--uninstall"});
  web("config", {});
  EXPECT_EQ(all, R"(
Skyvane 9 Web Updater
Search for Updates
Check Disk Space
You have modified this file, and it would be kept: ~/One/Airfoils/changed
~/One/: 2 files would be fetched (2 KB to download), 1 deleted, and 1 that you have modified kept. Nothing was done.
= 10
start: "program": "The installer", "log": ""}
page: "kind": "choice", "title": "Skyvane 9 Web Updater"}
page: "kind": "job", "title": "Search for Updates"}
page: "kind": "choice", "title": "Check Disk Space"}
modified: "path": "~/One/Airfoils/changed", "action": "replace"}
file: "action": "fetch", "path": "Resources/old", "bytes": N}
file: "action": "fetch", "path": "Airfoils/changed", "bytes": N}
file: "action": "delete", "path": "Output/dropped", "bytes": N}
file: "action": "fetch", "path": "Instructions/lost", "bytes": N}
plan: "fetch": 3, "delete": 1, "keep": 0, "replace": 1, "download_bytes": 3000, "installed_bytes": 6000}
end: "result": "would", "status": 10, "copy": "~/One/", "release": "Rel9", "checked": 5, "fetched": 0, "deleted": 0, "kept": 0, "replaced": 1, "missing": 0, "bytes": N, "seconds": N}
= 10

Skyvane 9 Web Updater
Search for Updates
Check Disk Space
Kept, because you have modified it: ~/One/Airfoils/changed
5 files checked
2 files fetched
1 files deleted
1 files kept, because you have modified them
0 files replaced or deleted, though you had modified them
N bytes moved
N seconds
Finshed Web Update: I have finished updating ~/One/.
= 0

Skyvane 9 Web Updater
Search for Updates
Check Disk Space
You have modified this file, and it would be kept: ~/One/Airfoils/changed
~/One/: 0 files would be fetched (0 KB to download), 0 deleted, and 1 that you have modified kept. Nothing was done.
= 0
start: "program": "The installer", "log": ""}
page: "kind": "choice", "title": "Skyvane 9 Web Updater"}
page: "kind": "job", "title": "Search for Updates"}
page: "kind": "choice", "title": "Check Disk Space"}
modified: "path": "~/Two/Airfoils/changed", "action": "replaced"}
error: "text": "Overwritten, though you have modified it: ~/Two/Airfoils/changed"}
message: "text": "5 files checked"}
message: "text": "3 files fetched"}
message: "text": "1 files deleted"}
message: "text": "0 files kept, because you have modified them"}
message: "text": "1 files replaced or deleted, though you had modified them"}
message: "text": "N bytes moved"}
message: "text": "N seconds"}
message: "text": "Finshed Web Update: I have finished updating ~/Two/."}
end: "result": "done", "status": 0, "copy": "~/Two/", "release": "Rel9", "checked": 5, "fetched": 3, "deleted": 1, "kept": 0, "replaced": 1, "missing": 0, "bytes": N, "seconds": N}
= 0
TIME Kept, because you have modified it: ~/Three/Airfoils/changed
= 0

Skyvane 9 Web Updater
Search for Updates
Check Disk Space
Cancelled, because you have modified it: ~/Four/Airfoils/changed
Check Disk Space: the wizard came back to this page.
Check Disk Space: You are about to download 3 KB of compressed data to update to Rel9.
Disk space needed to install: 6 KB.
You have enough free disk space to update Skyvane 9
= 2

Remove Skyvane 9
~/Four/: 3 files to delete, as some release has shipped them.
= 10

Remove Skyvane 9
1 files are not of any release, or changed by you, and stay:
    Airfoils/changed
Remove Skyvane 9: ~/Four/: 3 files deleted. The folder stays.
= 0

Skyvane 9 Web Updater
Skyvane 9 Web Updater: You selected the folder path:
~/config/
But it does not appear to be an installed copy of Skyvane 9.
Please be sure to select the folder that contains the Skyvane application.
This page wants --copy=FOLDER.
= 2
)");
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
  EXPECT_EQ(all, R"x(start: "program": "The installer", "log": ""}
page: "kind": "choice", "title": "Welcome"}
page: "kind": "choice", "title": "End User License Agreement (EULA)"}
error: "text": "End User License Agreement (EULA): Use Skyvane for whatever you like.\u000aYou agree to not make copies of Skyvane.\u000aYou agree to not distribute the artwork from Skyvane, OR ANY DERIVATIVE OF THAT ARTWORK, without permission from Tessaron Labs.\u000aI accept this agreement."}
error: "text": "This page wants --accept_eula."}
end: "result": "refused", "status": 2, "copy": "", "release": "", "checked": 0, "fetched": 0, "deleted": 0, "kept": 0, "replaced": 0, "missing": 0, "bytes": N, "seconds": N}
= 2

Welcome
End User License Agreement (EULA)
Check Servers
Pick Install Destination.
~/New/: 4 files would be fetched (4 KB to download), 0 deleted, and 0 that you have modified kept. Nothing was done.
= 10

Welcome
End User License Agreement (EULA)
Check Servers
Pick Install Destination.
Finshed Web Demo Install: I have finished installing the Skyvane 9 web demo at: ~/New/.
= 0

Welcome
End User License Agreement (EULA)
Check Servers
Pick Install Destination.
Pick Install Destination. The folder 'New' already exists in the dir '~/'.
Please change the install name or destination.
This page wants --dest=FOLDER, --name=NAME.
= 2
~/One/	Rel9	linux	?
~/New/	Rel9	linux	demo
= 0
start: "program": "The installer", "log": ""}
copy: "path": "~/One/", "release": "Rel9", "platform": "linux", "edition": null}
copy: "path": "~/New/", "release": "Rel9", "platform": "linux", "edition": "demo"}
end: "result": "done", "status": 0, "copy": "", "release": "", "checked": 0, "fetched": 0, "deleted": 0, "kept": 0, "replaced": 0, "missing": 0, "bytes": N, "seconds": N}
= 0
)x");
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
  EXPECT_EQ(all, R"x(start: "program": "The installer", "log": ""}
page: "kind": "choice", "title": "Skyvane 9 Web Updater"}
page: "kind": "job", "title": "Search for Updates"}
page: "kind": "choice", "title": "Check Disk Space"}
message: "text": "2 files checked"}
message: "text": "0 files fetched"}
message: "text": "0 files deleted"}
message: "text": "0 files kept, because you have modified them"}
message: "text": "0 files replaced or deleted, though you had modified them"}
message: "text": "N bytes moved"}
message: "text": "N seconds"}
error: "text": "Finshed Web Update: There were problems updating Skyvane.  You can try this updater again using a different server."}
missing: "path": "Resources/x", "answers": [{"text": "http://mirror/Rel9/All/Resources/x.zip: the server answered 404 Not Found (by the proxy 127.0.0.1:N)", "mirror": "mirror", "address": "http://mirror/Rel9/All/Resources/x.zip", "answer": "the server answered 404 Not Found (by the proxy 127.0.0.1:N)", "final": true}]}
error: "text": "1 files could not be had from any mirror:\u000aResources/x\u000a    http://mirror/Rel9/All/Resources/x.zip: the server answered 404 Not Found (by the proxy 127.0.0.1:N)"}
end: "result": "failed", "status": 1, "copy": "~/One/", "release": "Rel9", "checked": 2, "fetched": 0, "deleted": 0, "kept": 0, "replaced": 0, "missing": 1, "bytes": N, "seconds": N}
= 1

Skyvane 9 Web Updater
Search for Updates
Check Disk Space
23 files checked
0 files fetched
0 files deleted
0 files kept, because you have modified them
0 files replaced or deleted, though you had modified them
N bytes moved
N seconds
Finshed Web Update: There were problems updating Skyvane.  You can try this updater again using a different server.
22 files could not be had from any mirror:
Resources/x
    http://mirror/Rel9/All/Resources/x.zip: the server answered 404 Not Found (by the proxy 127.0.0.1:N)
...................and 2 more, which are in the log
= 1

Remove Skyvane 9
22 files are not of any release, or changed by you, and stay:
....................and 2 more, which are in the log
Remove Skyvane 9: ~/One/: 1 files deleted. The folder stays.
= 0

Skyvane 9 Web Updater
Search for Updates
Search for Updates: Another installer or updater is at work on ~/One/.
I will go on as soon as it has finished.  You can also go back, or quit.
= 4

Skyvane 9 Web Updater
Search for Updates
Given up: no progress for N seconds.
http://www.skyvane.example/serverlist9.txt: the connection was refused (by the proxy 127.0.0.1:N)
= 3
start: "program": "The installer", "log": ""}
page: "kind": "choice", "title": "Skyvane 9 Web Updater"}
page: "kind": "job", "title": "Search for Updates"}
trouble: "text": "http://www.skyvane.example/serverlist9.txt: the connection was refused (by the proxy 127.0.0.1:N)", "mirror": "www.skyvane.example", "address": "http://www.skyvane.example/serverlist9.txt", "answer": "the connection was refused (by the proxy 127.0.0.1:N)", "final": false}
error: "text": "Given up: no progress for N seconds.\u000ahttp://www.skyvane.example/serverlist9.txt: the connection was refused (by the proxy 127.0.0.1:N)"}
end: "result": "given_up", "status": 3, "copy": "~/One/", "release": "", "checked": 0, "fetched": 0, "deleted": 0, "kept": 0, "replaced": 0, "missing": 0, "bytes": N, "seconds": N}
= 3
)x");
}

TEST_F(Flows, ARunIsToldWhatIsWrongWithItsAnswers) {
  std::string all;
  for (const char* const argument :
       {"--nothing", "--dest=", "--dest=/a\nb", "--name=a/b", "--on_modified=maybe",
        "--platform=beos", "--give_up_after=0", "--give_up_after=1x", "--do=install",
        "--sectors=all", "--uninstall"})
    all += run(demo_start, {"--unattended", argument});
  for (const char* const argument : {"--do=nothing", "--sectors=+30"})
    all += run(dvd_start, {"--unattended", argument});
  EXPECT_EQ(all, R"(There is no option '--nothing'. Did you mean --log=FILE?
Nothing was done. "--help" explains every option.
= 2
--dest wants a folder.
= 2
--dest wants a folder with a path in one line, not '/a
b'.
= 2
--name wants the name of a folder, not 'a/b'.
= 2
--on_modified wants keep|overwrite|cancel, not 'maybe'.
= 2
--platform wants mac|windows|linux, not 'beos'.
= 2
--give_up_after wants a number above 0, not '0'.
= 2
--give_up_after wants a number above 0, not '1x'.
= 2
--do is an option of skyvane-disc-installer.
= 2
--sectors is an option of skyvane-disc-installer.
= 2

Remove Skyvane 9
--uninstall wants the copy named: --copy=FOLDER
This page wants --copy=FOLDER.
= 2
--do wants install|scenery|repair, not 'nothing'.
= 2
--sectors wants all, none or a list such as +30-120,+40-110, and there is no sector '+30'.
= 2
)");
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
  EXPECT_EQ(all, R"(
Skyvane 9 Installer
Pick Install Destination.
End User License Agreement (EULA)
Select Scenery
Finished Installing Skyvane: Installation was successful.
= 0

Skyvane 9 Installer
Select Skyvane 9 to Add or Remove Scenery
Select Scenery
Finished With Add/Remove Scenery: I have successfully added and removed scenery to match your choices on the map.
= 0

Skyvane 9 Installer
Select Skyvane 9 to Add or Remove Scenery
Select Scenery
These discs have no scenery for +50-120.
Select Scenery: Click on the world map to select what scenery you would like to install.  Scenery that you deselect will be removed; scenery that you select will be installed.  If you fly into an area with no scenery installed, you will see only ocean.
Disk space needed to install: 0 KB.
You have enough free disk space to install this scenery.
This page wants --sectors=LIST.
= 2

Skyvane 9 Installer
Repair Skyvane 9
Confirm Repairs
Finished Repairing Skyvane. I have finished repairing ~/New/ - click Go Back to return to the main menu.
= 0

Skyvane 9 Installer
There is no installed copy at ~/disc/.
Skyvane 9 Installer: You already have Skyvane 9 installed on this computer.  What would you like to do?
This page wants --do=install, --copy=FOLDER.
= 2
)");
}

TEST(FlowsProgress, WhatIsPrintedOfIt) {
  stg = stg_record();
  stg.todo_raw_kb = 2000;
  stg.todo_zip_kb = 1500;
  next = transfer_record();
  xtim.now_sec = 10;
  testing::internal::CaptureStdout();
  for (const page_kind kind : {page_job, page_install, page_transfer}) {
    progress_begin();
    for (const float at : {-1.0f, 0.0f, 0.049f, 0.05f, 0.05f, 0.5f, 1.0f}) {
      wizard_screen screen;
      screen.progress = at;
      next.done_raw_kb = 2000 * static_cast<double>(at);
      next.done_zip_kb = 1500 * static_cast<double>(at);
      progress_show(kind, screen);
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), R"(  0 %  0.0 MB of 2.0 MB
  5 %  0.1 MB of 2.0 MB
 50 %  1.0 MB of 2.0 MB
100 %  2.0 MB of 2.0 MB
  0 %  0.0 MB of 1.5 MB  0 kB/s  0:00:00 left
  5 %  0.1 MB of 1.5 MB  7 kB/s  0:03:10 left
 50 %  0.8 MB of 1.5 MB  75 kB/s  0:00:10 left
100 %  1.5 MB of 1.5 MB  150 kB/s  0:00:00 left
)");
}

}  // namespace
