// Which mirror is asked next, and which are left alone for a while.
//
// A mirror that fails rests for half a second, and twice as long each time that it fails again, up
// to half a minute; the others are asked meanwhile. One that delivers is as good as new, and so is
// one that the user picks from the list. Main thread; times are the frame clock's.
#pragma once

#include <cstdint>

inline constexpr int no_mirror = -1;

// A set of mirrors, a bit for each index.
using mirror_set = uint32_t;
// Whether `mirrors` holds every mirror of the list.
bool mirrors_are_all(mirror_set mirrors);

// The mirror in use, stg.server_index, if it is not resting and not among `not_these`. Else another
// such one, drawn with the bias of the list or evenly, which stg.server_index is moved to.
// no_mirror when there is none at present.
int mirror_to_ask(mirror_set not_these, bool evenly = false);
// Seconds until mirror_to_ask may give one, at least 0; a large number when nothing but the user
// can change that.
float mirror_rests_for(mirror_set not_these);

// A request that was made at `asked_at` has failed. Requests that were under way together count as
// one failure.
void mirror_failed(int mirror, double asked_at);
void mirror_delivered(int mirror);
void mirrors_forget();  // what is known of all of them, as a list has been read or a job begins
