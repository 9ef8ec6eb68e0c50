// Main thread. Writes stg.server_index.

#include "Installer-f/engine/utils_grab_mirrors.h"

#include <algorithm>

#include "Installer-f/engine/utils_servers_list.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/hl_math.h"
#include "corekit/base/xtim.h"

namespace {

constexpr float first_rest = 0.5f, longest_rest = 30;  // seconds
constexpr double for_ever = 1e9;

struct mirror_state {
  float rest = 0;        // seconds; 0 for a mirror that has not failed since it last delivered
  double failed_at = 0;  // frame clock
  double wakes_at() const { return failed_at + rest; }
};

struct mirror_table {
  mirror_state mirrors[server_limit];
  int in_use = no_mirror;  // as stg.server_index was last seen
} table;

int mirror_count() {
  return std::clamp(stg.server_count, 0, server_limit);
}

bool may_be_asked(int mirror, mirror_set not_these) {
  return (not_these >> mirror & 1) == 0 && table.mirrors[mirror].wakes_at() <= xtim.now_sec;
}

// A choice of the user's is followed at once.
void notice_choice() {
  if (stg.server_index == table.in_use) return;
  table.in_use = stg.server_index;
  if (table.in_use >= 0 && table.in_use < server_limit) table.mirrors[table.in_use] = {};
}

}  // namespace

bool mirrors_are_all(mirror_set mirrors) {
  const mirror_set all = (mirror_set{1} << mirror_count()) - 1;
  return (mirrors & all) == all;
}

int mirror_to_ask(mirror_set not_these, bool evenly) {
  notice_choice();
  const int count = mirror_count();
  // A new list may be shorter than the last.
  const int present = std::clamp(stg.server_index, 0, std::max(count - 1, 0));
  if (count > 0 && may_be_asked(present, not_these)) return present;

  int fit[server_limit], fit_count = 0;
  for (int mirror = 0; mirror < count; ++mirror)
    if (may_be_asked(mirror, not_these)) fit[fit_count++] = mirror;
  if (fit_count == 0) return no_mirror;
  stg.server_index = table.in_use =
      fit[evenly ? uniform_server(fit_count) : biased_server(rand_fraction(), fit_count)];
  return stg.server_index;
}

float mirror_rests_for(mirror_set not_these) {
  double wakes_at = for_ever;
  for (int mirror = 0; mirror < mirror_count(); ++mirror) {
    if ((not_these >> mirror & 1) == 0)
      wakes_at = std::min(wakes_at, table.mirrors[mirror].wakes_at());
  }
  return static_cast<float>(std::max(wakes_at - xtim.now_sec, 0.0));
}

void mirror_failed(int mirror, double asked_at) {
  if (mirror < 0 || mirror >= server_limit) return;
  mirror_state& state = table.mirrors[mirror];
  if (state.rest > 0 && asked_at <= state.failed_at) return;
  state.rest = state.rest > 0 ? std::min(state.rest * 2, longest_rest) : first_rest;
  state.failed_at = xtim.now_sec;
}

void mirror_delivered(int mirror) {
  if (mirror >= 0 && mirror < server_limit) table.mirrors[mirror] = {};
}

void mirrors_forget() {
  table = {};
  table.in_use = stg.server_index;
}
