// Warnings about a master that is well formed and yet will not install as the makers think.
//
// Two files may end at one installed place, since a file's platform folder is not part of it: the
// second to arrive overwrites the first. A file that moves to another platform's folder, or changes
// only the case of its name, leaves a "GONE" for the place where it still is. And an archive of the
// kind that installers do not look for is never found.
//
// Main thread. State of the tree being built, started anew by note_installed_places.

#include "Installer-f/builder/make_installer_places.h"

#include <iterator>
#include <string>
#include <unordered_map>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_tree.h"
#include "Installer-f/engine/utils_decide.h"
#include "corekit/base/hl_string.h"

namespace {

// Who brings something to an installed place: by platform, index of bld.comp_files plus 1.
struct place_users {
  size_t by_platform[3] = {};
};

std::unordered_map<std::string, place_users> places;  // by installed place
int tiles_without_7z;
int others_with_7z;

// Bits of the platforms that want a file.
unsigned wanted_by(int os) {
  constexpr unsigned apl = 1, win = 2, lin = 4;
  switch (os) {
    case platform_all:
      return apl | win | lin;
    case platform_apl:
      return apl;
    case platform_win:
      return win;
    case platform_lin:
    case platform_all_lin:
      return lin;
    default:
      return 0;
  }
}

// Two of the platforms do not tell the case of letters.
std::string place_of(std::string_view path) {
  std::string place(installed_part(path));
  for (char& c : place)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return place;
}

// Two files of one platform at one place, though on some platforms only.
void warn_of_meeting(const std::string& first, const std::string& second) {
  const bool only_case = installed_part(first) != installed_part(second);
  builder_warning("two files of this release install to the same place" +
                  std::string(only_case ? " where the case of letters does not count" : "") + ": " +
                  first + " and " + second);
}

}  // namespace

void note_installed_places() {
  places.clear();
  tiles_without_7z = 0;
  others_with_7z = 0;
  for (size_t i = 0; i < bld.comp_files.size(); ++i) {
    const source_file& file = bld.comp_files[i];
    place_users& users = places[place_of(file.relative)];
    size_t other = 0;
    for (size_t platform = 0; platform < std::size(users.by_platform); ++platform) {
      if ((wanted_by(file.os) & (1u << platform)) == 0) continue;
      if (other == 0) other = users.by_platform[platform];
      users.by_platform[platform] = i + 1;
    }
    if (other != 0) warn_of_meeting(bld.comp_files[other - 1].relative, file.relative);
  }
}

void warn_if_still_shipped(std::string_view path, int os) {
  const auto found = places.find(place_of(path));
  if (found == places.end()) return;
  for (size_t platform = 0; platform < std::size(found->second.by_platform); ++platform) {
    const size_t user = found->second.by_platform[platform];
    if (user == 0 || (wanted_by(os) & (1u << platform)) == 0) continue;
    builder_warning("listed as gone, though this release installs a file there, " +
                    bld.comp_files[user - 1].relative +
                    ": installers may delete it again: " + std::string(path));
    return;
  }
}

void note_archive_kind(std::string_view relative, bool is_7z) {
  const bool is_tile = str_holds(relative, "Global Scenery");
  if (is_tile && !is_7z) ++tiles_without_7z;
  if (!is_tile && is_7z) ++others_with_7z;
}

void warn_of_archive_kinds() {
  if (tiles_without_7z > 0) {
    builder_warning(
        str_format("%d files below Global Scenery have no .7z beside them: installers "
                   "do not find them on a disc",
                   tiles_without_7z));
  }
  if (others_with_7z > 0) {
    builder_warning(
        str_format("%d files outside Global Scenery have a .7z beside them: installers "
                   "do not find them at all",
                   others_with_7z));
  }
}
