// What a manifest path says of its file. No globals are written.

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/hl_string.h"

int is_global_scenery_f(std::string_view path) {
  constexpr std::string_view suffix = ".dsf";
  if (path.size() <= suffix.size()) return 0;
  const std::string_view tail = path.substr(path.size() - suffix.size());
  for (size_t i = 0; i < suffix.size(); ++i) {
    const char c = tail[i];
    if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != suffix[i]) return 0;
  }
  return str_holds(path, "Global Scenery/") || str_holds(path, "/-global overlays-/") ||
         str_holds(path, "/-global terrain-/") || str_holds(path, "/default scenery/DSF 820");
}

int find_sector(int32_t& lon_index, int32_t& lat_index, std::string_view path) {
  if (path.ends_with('/')) path.remove_suffix(1);
  const std::string_view name = path_leaf(path);
  const int lat = str_to_int(name.substr(0, 3));
  const int lon = name.size() > 3 ? str_to_int(name.substr(3, 4)) : 0;
  // Truncating, not rounding down: a corner just outside the first row or column still falls in it.
  const int lat_at = (lat + 90) / 10;
  const int lon_at = (lon + 180) / 10;
  if (lat_at < 0 || lat_at >= sector_rows || lon_at < 0 || lon_at >= sector_columns) return 0;
  lat_index = lat_at;
  lon_index = lon_at;
  return 1;
}

const char* suffix_for_file(int index) {
  return str_holds(sim_info[index].current().path, "Global Scenery") ? ".7z" : ".zip";
}
