// The scenes of the wizard's pages: each page, in a state that is the same on every machine.
//
// Main thread. Writes the wizard's and the engine's state.

#include <sys/statvfs.h>

#include <algorithm>
#include <string>

#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_demo.h"
#include "Installer-f/wizard/main_dvd.h"
#include "Installer-f/wizard/main_dvd_job.h"
#include "Installer-f/wizard/main_dvd_repair.h"
#include "Installer-f/wizard/main_dvd_scenery.h"
#include "Installer-f/wizard/main_net.h"
#include "corekit/net/http.h"
#include "gallery/gallery_scenes.h"

namespace {

constexpr uint64_t disk_bytes = 500'000'000'000, free_bytes = 80'000'000'000;
constexpr float fits_kb = 9e6f, too_large_kb = 90e6f;  // of a job

}  // namespace

// What a page says of the disk is said of this one, whatever disk the gallery runs on.
extern "C" int statvfs(const char*, struct statvfs* out) noexcept {
  constexpr unsigned long block = 4096;
  *out = {};
  out->f_bsize = out->f_frsize = block;
  out->f_blocks = disk_bytes / block;
  out->f_bfree = out->f_bavail = free_bytes / block;
  return 0;
}

namespace {

const std::string copies = "/home/pilot/";

void reset() {
  stg = stg_record();
  next = transfer_record();
  sim_info.clear();
  all_skyroots.clear();
  set_install_filter(1, 1);
  dest_dir_path.clear();
  cmd_line_path.clear();
  dvd_path.clear();
  install_name = "Skyvane 9.12";
  accept_eula_demo = demo_install_is_running = accept_eula = dvd_install_is_running = 0;
  repair_is_running = scenery_install_is_running = num_install_errors = 0;
  demo_dest = new_copy_choice();
  dvd_dest = new_copy_choice();
  for (int i = 0; i < server_limit; ++i)
    server_desc[i] = "Mirror " + std::to_string(i + 1);
  server_desc[1] = "A mirror with a name that is too long for its line";
  // Nothing answers there, and at once.
  http._proxy_host = "127.0.0.1";
  http._proxy_port_int = 9;
}

// The page, come to by its flow's first one, which makes the list of steps.
void turn(page_function first, page_function page) {
  reset();
  g_wizard = first;
  pass_frame();
  g_wizard = page;
}

void add_file(const char* path, float raw_kb, int column = -1, int row = -1) {
  file_version_struct& file = sim_info.emplace_back().versions.emplace_back();
  file.path = path;
  file.sig_want = "00112233445566778899aabbccddeeff";
  file.raw_kb = raw_kb;
  file.zip_kb = raw_kb / 3;
  file.is_global = column >= 0;
  if (column < 0) return;
  file.lon_index = column;
  file.lat_index = row;
}

void list_copies(int count) {
  all_skyroots.clear();
  for (int i = 1; i <= count; ++i)
    all_skyroots.push_back(copies + "Skyvane " + std::to_string(i) + "/");
  if (count > 3) {
    all_skyroots[2] = copies +
                      "a folder with a name that is so long that the path of the copy has no room "
                      "on one line/and neither has it on two, so that something in its middle must "
                      "be left out/Skyvane 3/";
  }
}

void list_mirrors(int count) {
  stg.server_count = count;
}

// --- a page that says what it is told -----------------------------------------------------------

wizard_screen said;
const wizard_page plain = {page_job, [](int, wizard_screen& screen) {
                             screen = said;
                             return 0;
                           }};

wizard_screen& say(const char* title, const char* text) {
  turn(net_start, net_start);
  wizard_set_steps({{"Welcome", net_start}, {"Install Updates", plain}, {"Finish", net_done}});
  said = wizard_screen();
  said.title = title;
  said.text = text;
  g_wizard = plain;
  return said;
}

void say_progress(float progress) {
  wizard_screen& screen = say("Installing", "About 12 minutes left in the install.");
  screen.progress = progress;
  screen.progress_text = "Downloading and installing Eagle.acf, currently 40% done with that file.";
  screen.back = net_start;
}

// --- the map ------------------------------------------------------------------------------------

void open_map() {
  turn(dvd_start, dvd_pick_scenery);
  pass_frame();
  dest_dir_path = copies + "Skyvane 1/";
  g_wizard = dvd_edit_scenery;
}

// Sectors on offer round the whole edge and in a block, of which some are chosen.
void offer_sectors() {
  for (int column = 0; column < sector_columns; ++column) {
    for (int row = 0; row < sector_rows; ++row) {
      const bool edge =
          column == 0 || row == 0 || column == sector_columns - 1 || row == sector_rows - 1;
      const bool block = column > 10 && column < 22 && row > 6 && row < 15;
      const int cell = sector_cell(column, row);
      stg.sector_available[cell] = edge || block;
      stg.sector_selected[cell] = stg.sector_available[cell] && (column + row) % 3 == 0;
    }
  }
  add_file("All/Global Scenery/a.dsf", 123456, 18, 13);
  add_file("All/Global Scenery/b.dsf", 2345, 17, 13);
  stg.todo_raw_kb = fits_kb;
}

// --- the flows ----------------------------------------------------------------------------------

void open_demo(page_function page) {
  turn(demo_start, page);
}

void open_dest(const std::string& parent, const std::string& name) {
  open_demo(demo_pick_dest);
  demo_dest.parent_dir = parent;
  demo_dest.install_folder = name;
  demo_dest.named = 1;
  demo_dest.proposed = "another";
  add_file("All/Resources/a.txt", fits_kb);
}

void open_check(float kb) {
  turn(net_start, net_check_disk);
  dest_dir_path = copies + "Skyvane 1/";
  add_file("All/Resources/a.txt", kb);
}

void open_done(page_function page) {
  turn(net_start, page);
  dest_dir_path = copies + "Skyvane 1/";
}

void open_disc(const char* disc) {
  turn(dvd_start, dvd_start);
  g_wizard = dvd_start;
  dvd_path = disc;
  stg.directory_state = manifest_loaded;
  stg.has_sim_files = stg.has_global_files = 1;
}

void open_disc_page(page_function first, page_function page) {
  turn(dvd_start, first);
  pass_frame();
  dest_dir_path = copies + "Skyvane 1/";
  add_file("All/Resources/a.txt", fits_kb);
  g_wizard = page;
}

}  // namespace

std::vector<gallery_scene> page_scenes() {
  return {
      // The whole frame, and its buttons.
      {"welcome", [] { open_demo(demo_start); }, "", nullptr},
      {"welcome_next_over", [] { open_demo(demo_start); }, "720,20", nullptr},
      {"welcome_next_held", [] { open_demo(demo_start); }, "720,20 press", nullptr},
      {"welcome_quit_focus", [] { open_demo(demo_start); }, "tab", nullptr},
      {"welcome_options_focus", [] { open_demo(demo_start); }, "tab tab 140,20", nullptr},
      {"welcome_again", [] { open_demo(demo_start); }, "", [] { list_copies(1); }},
      {"licence", [] { open_demo(demo_eula); }, "", nullptr},
      {"licence_accepted", [] { open_demo(demo_eula); }, "300,104 click tab tab", nullptr},
      {"looking_for_list", [] { open_demo(demo_get_updates); }, "", nullptr},
      {"list_refused", [] { open_demo(demo_get_updates); }, "",
       [] {
         list_mirrors(1);
         stg.directory_state = manifest_refused;
       }},

      // A new copy.
      {"place", [] { open_dest(copies, "Skyvane 9 Demo"); }, "", nullptr},
      {"place_on_desktop", [] { open_dest(copies, "Skyvane 9 Demo"); }, "",
       [] { demo_dest.desktop_f = copies; }},
      {"place_too_small", [] { open_dest(copies, "Skyvane 9 Demo"); }, "300,206",
       [] { stg.todo_raw_kb = too_large_kb; }},
      {"place_taken", [] { open_dest("/", "proc"); }, "500,203 click end", nullptr},
      {"place_without_name", [] { open_dest(copies, ""); }, "tab", nullptr},

      // The transfer.
      {"busy", [] { say("Search for Updates", "I am looking for a server.").is_busy = true; }, "",
       nullptr},
      {"progress_0", [] { say_progress(0); }, "", nullptr},
      {"progress_3", [] { say_progress(0.03f); }, "", nullptr},
      {"progress_50", [] { say_progress(0.5f); }, "600,20", nullptr},
      {"progress_100", [] { say_progress(1); }, "600,20 press", nullptr},
      {"mirrors",
       [] {
         say_progress(0.25f);
         said.show_servers = 1;
       },
       "100,120",
       [] {
         list_mirrors(3);
         stg.server_index = 1;
       }},
      {"mirrors_many",
       [] {
         say_progress(0.25f);
         said.show_servers = 1;
       },
       "100,120 wheel=-2",
       [] {
         list_mirrors(10);
         stg.beta_flag = 1;
         stg.server_index = 2;
       }},
      {"long_text",
       [] {
         std::string text;
         for (int i = 0; i < 60; ++i)
           text += "Line " + std::to_string(i) + " of a document that is longer than its frame.\n";
         say("A document", text.c_str()).text_is_framed = true;
       },
       "500,300 wheel=-4", nullptr},
      {"extra_buttons",
       [] {
         wizard_screen& screen = say("A choice", "What would you like to do?");
         screen.button_names = {"The first", "The second", "The third"};
         screen.button_pages = {net_start, net_start, net_start};
       },
       "500,325 press", nullptr},

      // The update.
      {"update", [] { open_done(net_start); }, "", nullptr},
      {"update_no_copy", [] { turn(net_start, net_start); }, "", nullptr},
      {"update_foreign_folder",
       [] {
         reset();
         cmd_line_path = "/proc/self/";
         g_wizard = net_start;
       },
       "", nullptr},
      {"copies_none", [] { turn(net_start, net_pick_dest); }, "605,403", nullptr},
      {"copies_one", [] { turn(net_start, net_pick_dest); }, "", [] { list_copies(1); }},
      {"copies_two", [] { turn(net_start, net_pick_dest); }, "300,405 click tab",
       [] { list_copies(2); }},
      {"copies_twelve", [] { turn(net_start, net_pick_dest); }, "500,300 wheel=-1 300,380 click",
       [] { list_copies(12); }},
      {"space", [] { open_check(fits_kb); }, "", [] { list_mirrors(1); }},
      {"space_short", [] { open_check(too_large_kb); }, "", nullptr},
      {"update_done", [] { open_done(net_done); }, "", nullptr},
      {"update_done_over", [] { open_done(net_done); }, "500,350", nullptr},
      {"update_failed", [] { open_done(net_done); }, "690,20", [] { stg.extract_failed = 1; }},
      {"demo_done", [] { open_done(demo_done); }, "tab", nullptr},
      {"demo_failed", [] { open_done(demo_done); }, "", [] { stg.extract_failed = 1; }},

      // The discs.
      {"disc_wanted", [] { turn(dvd_start, dvd_start); }, "", nullptr},
      {"disc_welcome", [] { open_disc("/disc/"); }, "", nullptr},
      {"disc_menu", [] { open_disc("/disc/"); }, "500,300", [] { list_copies(2); }},
      {"disc_scenery_only", [] { open_disc("/disc/"); }, "", [] { stg.has_sim_files = 0; }},
      {"disc_foreign", [] { open_disc("/disc/"); }, "",
       [] { stg.directory_state = manifest_refused; }},
      {"disc_run", [] { open_disc_page(dvd_start, dvd_pick_run_sim); }, "", [] { list_copies(2); }},
      {"disc_change", [] { open_disc_page(dvd_start, dvd_switch_disk_install); }, "", nullptr},
      {"disc_done", [] { open_disc_page(dvd_start, dvd_done_install); }, "", nullptr},
      {"disc_done_errors", [] { open_disc_page(dvd_start, dvd_done_install); }, "",
       [] { num_install_errors = 2; }},
      {"repair_pick", [] { open_disc_page(dvd_start, dvd_pick_repair); }, "",
       [] { list_copies(2); }},
      {"repair_confirm", [] { open_disc_page(dvd_pick_repair, dvd_confirm_repair); }, "", nullptr},
      {"repair_done", [] { open_disc_page(dvd_pick_repair, dvd_done_repair); }, "", nullptr},
      {"repair_errors", [] { open_disc_page(dvd_pick_repair, dvd_done_repair); }, "",
       [] { num_install_errors = 1; }},
      {"scenery_done", [] { open_disc_page(dvd_pick_scenery, dvd_done_scenery); }, "", nullptr},
      {"scenery_errors", [] { open_disc_page(dvd_pick_scenery, dvd_done_scenery); }, "",
       [] {
         num_install_errors = 1;
         stg.todo_install_count = stg.todo_delete_count = 1;
       }},

      // The map.
      {"map", open_map, "", offer_sectors},
      {"map_focus", open_map, "tab", offer_sectors},
      {"map_focus_west", open_map, "tab left shift+left shift+up", offer_sectors},
      {"map_drag", open_map, "430,300 press 520,340", offer_sectors},
      {"map_all", open_map, "530,130 click", offer_sectors},
      {"map_none", open_map, "680,130 click 680,130 press", offer_sectors},
      {"map_too_large", open_map, "",
       [] {
         offer_sectors();
         stg.todo_raw_kb = too_large_kb;
       }},
  };
}
