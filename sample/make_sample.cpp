// make-sample DIR: writes DIR/old/ and DIR/new/, two successive versions of a source tree that the
// master builder accepts for the types 0 and 1, and with --third also DIR/newer/.
//
// The trees hold whatever makes an installer's life hard: names of all kinds, links, modes, scenery
// tiles of several sectors, the plug-ins of every platform, files that the builder must leave out.
// Every run on every machine writes the same bytes.

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sample/sample_tree.h"

namespace {

enum class tiles_7z { all, some, none };  // which tiles have an archive beside them

constexpr size_t kb = 1000;

// Sizes that spread around `middle`, the same for the same number.
size_t varied(size_t middle, size_t number) {
  return middle / 2 + middle * (number * 7 % 11) / 10;
}

void text(sample_tree& tree, const std::string& path, size_t size, mode_t mode = 0644) {
  tree.files[path] = {content::text, size, 0, mode, "", false};
}

void data(sample_tree& tree, const std::string& path, size_t size, mode_t mode = 0644) {
  tree.files[path] = {content::data, size, 0, mode, "", false};
}

void script(sample_tree& tree, const std::string& path) {
  tree.files[path] = {content::script, 0, 0, 0755, "", false};
}

void program(sample_tree& tree, const std::string& path, size_t size) {
  tree.files[path] = {content::program, size, 0, 0755, "", false};
}

void tile(sample_tree& tree, const std::string& path, size_t size, bool ready_7z = false) {
  tree.files[path] = {content::tile, size, 0, 0644, "", ready_7z};
}

void symbolic_link(sample_tree& tree, const std::string& path, const std::string& target) {
  tree.files[path] = {content::link, 0, 0, 0777, target, false};
}

// --- the neutral folder -------------------------------------------------------------------------
void add_instructions(sample_tree& tree) {
  const std::string here = "All/Instructions/";
  text(tree, here + "Pilot's Guide.txt", 42 * kb, 0444);
  text(tree, here + "Read me first.txt", 999);
  text(tree,
       here +
           "Fran\xE7"
           "ais \xE0 lire.txt",
       3 * kb);  // Latin-1
  text(tree,
       here +
           "Gr\xC3\xB6\xC3\x9F"
           "en und Gewichte.txt",
       1000);                                               // UTF-8
  text(tree, here + "\xE6\x97\xA5\xE6\x9C\xAC.txt", 1001);  // UTF-8
  text(tree, here + "one byte.txt", 1);
  text(tree, here + "Rock & Roll (it's $5; a+b=c), really!.txt", 500);
  text(tree, here + "no ending", 77);
  symbolic_link(tree, here + "Manual.txt", "Pilot's Guide.txt");
}

void add_small_collections(sample_tree& tree) {
  const char* const airfoils[] = {"Clark Y",     "Heron root", "Heron tip", "Kestrel root",
                                  "Kestrel tip", "flat plate", "thin jet",  "thick prop"};
  for (const char* const name : airfoils)
    text(tree, std::string("All/Airfoils/") + name + ".afl", 4 * kb);
  for (size_t i = 0; i < 24; ++i)
    text(tree, "All/Airfoils/NACA 00" + std::to_string(10 + i) + ".afl", varied(4 * kb, i));
  for (const char* const name : {"Flare", "Gun", "Water bomb", "Drop tank", "Rocket pod"})
    text(tree, std::string("All/Weapons/") + name + ".wpn", 6 * kb);
  text(tree, "All/Output/situations/About situations.txt", 400);
}

void add_aircraft(sample_tree& tree, const std::string& kind, const std::string& name) {
  const std::string here = "All/Aircraft/" + kind + "/" + name + "/";
  data(tree, here + name + ".acf", 38 * kb);
  data(tree, here + name + "_paint.png", 90 * kb);
  text(tree, here + "cockpit/panel layout.txt", 2 * kb);
  data(tree, here + "cockpit/-PANELS-/panel.png", 24 * kb);
  for (size_t i = 0; i < 5; ++i)
    text(tree, here + "objects/part " + std::to_string(i) + ".obj", varied(5 * kb, i));
  text(tree, here + "objects/wheel.obj", 3 * kb);
  for (const char* const livery : {"Red Stripe", "Blue Sky", "Farmer's Choice"})
    data(tree, here + "liveries/" + livery + "/" + name + "_paint.png", 14 * kb);
  data(tree, here + "sounds/engine.wav", 40 * kb);
}

void add_all_aircraft(sample_tree& tree) {
  for (const char* const name : {"Heron 172", "Kestrel Twin", "Little Wren"})
    add_aircraft(tree, "General Aviation", name);
  for (const char* const name : {"Albatross 400", "Condor"})
    add_aircraft(tree, "Heavy Metal", name);
  for (const char* const name : {"Swift", "Moth Float-plane"})
    add_aircraft(tree, "Gliders & Seaplanes", name);
  symbolic_link(tree, "All/Aircraft/Latest", "General Aviation");  // to a folder
}

void add_plugins(sample_tree& tree) {
  const std::string here = "All/Resources/plugins/";
  for (const char* const name : {"KVLM", "KVWidgets"}) {
    const std::string library = here + name;
    data(tree, library + ".framework/Versions/A/" + name, 60 * kb, 0755);
    text(tree, library + ".framework/Versions/A/Resources/Info.plist", 600);
    symbolic_link(tree, library + ".framework/Versions/Current", "A");
    symbolic_link(tree, library + ".framework/" + name, std::string("Versions/Current/") + name);
    symbolic_link(tree, library + ".framework/Resources", "Versions/Current/Resources");
    data(tree, library + ".shlb", 20 * kb);
    data(tree, library + ".dll", 55 * kb);
    data(tree, library + ".so", 50 * kb, 0755);
  }
  data(tree, here + "PluginAdminMac.kvl", 33 * kb);
  data(tree, here + "PluginAdminWin.kvl", 34 * kb);
  data(tree, here + "PluginAdminLin.kvl", 35 * kb);
  text(tree, here + "Commands.txt", 2 * kb);
}

void add_resources(sample_tree& tree) {
  const std::string here = "All/Resources/";
  for (const char* const language : {"English", "French", "German", "Italian", "Spanish"}) {
    text(tree, here + "menus/" + language + "/Skyvane.txt", 5 * kb);
    text(tree, here + "text/" + language + "/Skyvane.txt", 18 * kb);
  }
  for (size_t i = 0; i < 66; ++i)
    data(tree, here + "bitmaps/world/sheet " + std::to_string(i) + ".png", varied(12 * kb, i));
  data(tree, here + "bitmaps/world/great sheet.png", 8000 * kb);
  data(tree, here + "bitmaps/world/night sheet.png", 2500 * kb, 0444);
  for (size_t i = 0; i < 6; ++i)
    data(tree, here + "bitmaps/Earth Orbit Textures/orbit " + std::to_string(i) + ".png", 30 * kb);
  for (size_t i = 0; i < 6; ++i)
    data(tree, here + "default scenery/900 red terrain/red " + std::to_string(i) + ".png", 9 * kb);
  for (const char* const leaf : {"+40-130/+47-122", "+50+000/+50+008", "-40+150/-34+151"}) {
    tile(tree, here + "default scenery/DSF 820 airports/Earth nav data/" + leaf + ".dsf", 30 * kb);
  }
  for (size_t i = 0; i < 44; ++i)
    data(tree, here + "sounds/alert/tone " + std::to_string(i) + ".wav", varied(16 * kb, i));
  data(tree, here + "sounds/weather/rain on the roof.wav", 3000 * kb);
  symbolic_link(tree, here + "sounds/alert/alarm.wav", "../nowhere/alarm.wav");  // dangling
  std::string deep = here + "fonts/";
  for (const char* const level : {"a", "b", "c", "d", "e", "f", "g", "h"})
    deep += std::string(level) + "/";
  text(tree, deep + "at the bottom.txt", 300);
}

// --- scenery ------------------------------------------------------------------------------------
void add_scenery(sample_tree& tree, tiles_7z with_7z) {
  // Tiles by block of ten degrees: an installer offers each block as one sector.
  struct block {
    const char* folder;
    const char* tiles[4];
  };
  const block blocks[] = {
      {"+30-120", {"+34-118", "+34-117", "+33-118", "+30-111"}},
      {"+40-080", {"+42-072", "+41-074", "+40-071", "+49-080"}},
      {"+50+000", {"+51+000", "+52+001", "+50+009", "+59+000"}},
      {"-40+150", {"-34+151", "-38+150", "-40+159", "-31+150"}},
      {"-90-180", {"-90-180", "-81-171", "-85-175", "-90-171"}},
      {"+80+170", {"+89+179", "+80+170", "+85+175", "+81+171"}},
  };
  const std::string terrain = "All/Global Scenery/-global terrain-/Earth nav data/";
  const std::string overlays = "All/Global Scenery/-global overlays-/Earth nav data/";
  size_t number = 0;
  for (const block& one : blocks) {
    for (const char* const name : one.tiles) {
      const bool ready = with_7z == tiles_7z::all || (with_7z == tiles_7z::some && number % 2 == 0);
      const std::string leaf = std::string(one.folder) + "/" + name + ".dsf";
      tile(tree, terrain + leaf, varied(120 * kb, number), ready);
      if (number % 3 == 0) tile(tree, overlays + leaf, varied(20 * kb, number), ready);
      ++number;
    }
  }
  // No global tile, though its name looks like one: it does not hang on the choice of sectors.
  const std::string custom = "All/Custom Scenery/";
  tile(tree, custom + "Demo Valley/Earth nav data/+30-120/+34-118.dsf", 45 * kb);
  for (size_t i = 0; i < 8; ++i)
    text(tree, custom + "Demo Valley/objects/tree " + std::to_string(i) + ".obj", varied(kb, i));
  tile(tree, custom + "DSF 900 Mars World-Wide/Earth nav data/+10+020/+14+027.dsf", 60 * kb);
  tile(tree, custom + "DSF 900 Moon World-Wide/Earth nav data/-10-030/-04-021.dsf", 50 * kb);
}

// --- the platforms ------------------------------------------------------------------------------
void add_platforms(sample_tree& tree) {
  for (const char* const name : {"Skyvane", "Airframe Builder"}) {
    const std::string bundle = std::string("Macintosh/") + name + ".app/Contents/";
    script(tree, bundle + "MacOS/" + name);
    text(tree, bundle + "Info.plist", 1100);
    text(tree, bundle + "PkgInfo", 8);
    data(tree, bundle + "Resources/icon.icns", 45 * kb);
    program(tree, std::string("Windows/") + name + ".exe", 70 * kb);
  }
  text(tree, "Macintosh/Notes for this platform.txt", 700);
  data(tree, "Windows/audio.dll", 28 * kb);
  text(tree, "Windows/Notes for this platform.txt", 800);
  script(tree, "Linux/Skyvane.app");
  script(tree, "Linux/Airframe Builder");
  data(tree, "Linux/libs/libkv.so.1", 64 * kb, 0755);
  symbolic_link(tree, "Linux/libs/libkv.so", "libkv.so.1");
  text(tree, "Linux/Notes for this platform.txt", 900);
}

// --- what may not reach a master ----------------------------------------------------------------
void add_refuse(sample_tree& tree) {
  for (const char* const path :
       {"All/Aircraft/.DS_Store", "All/Aircraft/._Latest", "All/Resources/bitmaps/Thumbs.db",
        "All/Aircraft/Heavy Metal/Condor/Condor.bak", "All/Aircraft/Heavy Metal/Condor/shape.ac",
        "All/Aircraft/Heavy Metal/Condor/cockpit/panel.ovw", "All/Resources/bitmaps/work.psd",
        "All/Resources/sounds/notes._old", "All/Output/situations/Storm.sit",
        "All/Output/Flight over the valley.mov", "All/Output/FMS plans/Round trip.fms",
        "All/Output/Skyvane Pilot.txt", "All/Resources/preferences/Skyvane.prf",
        "All/Resources/serverlist.txt", "All/Resources/fonts/.sandboxinfo",
        "All/Custom Scenery/Demo Valley/Earth nav data/+30-120/+34-118.dsf.txt",
        "All/install_pfc Aircraft/Trainer/Trainer.acf",
        "All/install_pfc Aircraft/Trainer/Trainer_paint.png",
        "Macintosh/Skyvane.app/Contents/MacOS/Skyvane.xSYM"})
    text(tree, path, 600);
  text(tree, "All/Weapons/Nothing yet.wpn", 0);
  text(tree, "All/Resources/fonts/empty.txt", 0);
  tree.folders["All/Custom Scenery/Your own scenery here/"] = 1;
}

sample_tree old_version(tiles_7z with_7z) {
  sample_tree tree;
  add_instructions(tree);
  add_small_collections(tree);
  add_all_aircraft(tree);
  add_plugins(tree);
  add_resources(tree);
  add_scenery(tree, with_7z);
  add_platforms(tree);
  add_refuse(tree);
  return tree;
}

// --- from one version to the next ---------------------------------------------------------------
// An edit names what it expects to find: a slip here would quietly weaken every test of an update.
sample_file& existing(sample_tree& tree, const std::string& path) {
  const auto found = tree.files.find(path);
  if (found != tree.files.end()) return found->second;
  std::fprintf(stderr, "make-sample: no file to edit at %s\n", path.c_str());
  std::exit(1);
}

void change(sample_tree& tree, const std::string& path, size_t size) {
  sample_file& file = existing(tree, path);
  ++file.revision;
  file.size = size;
}

void vanish(sample_tree& tree, const std::string& path) {
  existing(tree, path);
  tree.files.erase(path);
}

void vanish_below(sample_tree& tree, const std::string& folder) {
  std::erase_if(tree.files, [&folder](const auto& one) { return one.first.starts_with(folder); });
}

sample_tree new_version(sample_tree tree) {
  change(tree, "All/Instructions/Pilot's Guide.txt", 44 * kb);
  change(tree,
         "All/Instructions/Fran\xE7"
         "ais \xE0 lire.txt",
         3 * kb);  // same size, other bytes
  change(tree, "All/Aircraft/General Aviation/Heron 172/Heron 172.acf", 39 * kb);
  change(tree, "All/Aircraft/General Aviation/Heron 172/objects/wheel.obj", 2 * kb);
  change(tree, "All/Aircraft/Heavy Metal/Condor/sounds/engine.wav", 41 * kb);
  for (int i = 0; i < 40; i += 4)
    change(tree, "All/Resources/bitmaps/world/sheet " + std::to_string(i) + ".png", 13 * kb);
  change(tree, "All/Resources/bitmaps/world/night sheet.png", 2600 * kb);
  change(tree, "All/Resources/plugins/KVLM.framework/Versions/A/KVLM", 61 * kb);
  change(tree, "All/Resources/plugins/PluginAdminMac.kvl", 34 * kb);
  change(tree, "All/Resources/plugins/KVLM.so", 51 * kb);
  change(tree, "All/Resources/text/English/Skyvane.txt", 19 * kb);
  change(tree, "All/Global Scenery/-global terrain-/Earth nav data/+30-120/+34-118.dsf", 130 * kb);
  change(tree, "Macintosh/Skyvane.app/Contents/MacOS/Skyvane", 0);
  change(tree, "Linux/Skyvane.app", 0);
  change(tree, "Windows/Skyvane.exe", 72 * kb);
  existing(tree, "All/Instructions/Manual.txt").target = "Read me first.txt";
  existing(tree, "All/Aircraft/Latest").target = "Heavy Metal";

  vanish(tree, "All/Airfoils/Clark Y.afl");
  vanish(tree, "All/Weapons/Flare.wpn");
  vanish(tree, "All/Instructions/no ending");
  vanish(tree, "All/Resources/sounds/alert/alarm.wav");
  vanish(tree, "All/Resources/plugins/KVWidgets.shlb");
  vanish_below(tree, "All/Aircraft/General Aviation/Little Wren/");
  vanish_below(tree, "All/Resources/fonts/a/");
  vanish(tree, "All/Global Scenery/-global terrain-/Earth nav data/-90-180/-85-175.dsf");

  add_aircraft(tree, "General Aviation", "Lark");
  text(tree, "All/Instructions/What's New.txt", 2 * kb);
  tile(tree, "All/Global Scenery/-global terrain-/Earth nav data/+00+010/+03+012.dsf", 80 * kb,
       existing(tree, "All/Global Scenery/-global terrain-/Earth nav data/+30-120/+34-118.dsf")
           .ready_7z);
  // A file in the place of a link, and a link in the place of a file.
  vanish(tree, "Linux/libs/libkv.so");
  data(tree, "Linux/libs/libkv.so", 65 * kb, 0755);
  vanish(tree, "All/Airfoils/flat plate.afl");
  symbolic_link(tree, "All/Airfoils/flat plate.afl", "thin jet.afl");
  return tree;
}

// One file comes back as it was, another comes back changed.
sample_tree third_version(sample_tree tree, const sample_tree& old) {
  tree.files["All/Airfoils/Clark Y.afl"] = old.files.at("All/Airfoils/Clark Y.afl");
  tree.files["All/Weapons/Flare.wpn"] = old.files.at("All/Weapons/Flare.wpn");
  change(tree, "All/Weapons/Flare.wpn", 7 * kb);
  // Back to the first state after another one.
  tree.files["Linux/Skyvane.app"] = old.files.at("Linux/Skyvane.app");
  change(tree, "All/Instructions/What's New.txt", 3 * kb);
  return tree;
}

int usage(int status) {
  std::fprintf(status == 0 ? stdout : stderr,
               "Usage: make-sample [--third] [--7z=all|some|none] DIR\n\n"
               "Writes DIR/old and DIR/new, two versions of a small source tree for the master "
               "builder.\n"
               "--third      also writes DIR/newer, in which vanished files return\n"
               "--7z=WHICH   which scenery tiles get a ready .7z beside them; some if not given\n");
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  bool third = false;
  tiles_7z with_7z = tiles_7z::some;
  std::string folder;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--help" || argument == "-h") return usage(0);
    if (argument == "--third") {
      third = true;
    } else if (argument == "--7z=all") {
      with_7z = tiles_7z::all;
    } else if (argument == "--7z=some") {
      with_7z = tiles_7z::some;
    } else if (argument == "--7z=none") {
      with_7z = tiles_7z::none;
    } else if (argument.starts_with("-") || argument.empty() || !folder.empty()) {
      return usage(2);
    } else {
      folder = argument;
    }
  }
  if (folder.empty()) return usage(2);
  if (mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST) {
    std::fprintf(stderr, "make-sample: cannot make the folder %s: %s\n", folder.c_str(),
                 std::strerror(errno));
    return 1;
  }

  const sample_tree old_tree = old_version(with_7z);
  const sample_tree new_tree = new_version(old_tree);
  if (write_sample_tree(old_tree, folder + "/old") != 0) return 1;
  if (write_sample_tree(new_tree, folder + "/new") != 0) return 1;
  if (!third) return 0;
  return write_sample_tree(third_version(new_tree, old_tree), folder + "/newer");
}
