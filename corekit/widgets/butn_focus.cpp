// The keyboard focus: the ring of this frame's widgets, the way of a key into a widget's queue, and
// out of it.
//
//   frame n      widgets register as they are drawn, in order
//   frame n + 1  keys come: each is matched against the ring of frame n and queued;
//                the ring is emptied; the widgets are drawn, register, and drain their queues
//
// Main thread. Writes focus_ring, focus_id, wind_focus and the queues that widgets register.

#include <algorithm>

#include "corekit/base/mnw.h"
#include "corekit/widgets/butn.h"

std::vector<focus_info_t> focus_ring;
int focus_id = 0;
int wind_focus = 0;

namespace {

constexpr int vkey_tab = 9;

// Text is ISO Latin-1, so the accented letters of the upper half have pictures.
bool has_picture(int ch) {
  return (ch >= 0x20 && ch <= 0x7E) || (ch >= 0xA0 && ch <= 0xFF);
}

// The accept bit of a key: by its virtual key if that says enough, else by its character.
int class_of_key(int ch, int vkey) {
  switch (vkey) {
    case vkey_tab:
      return accept_tab;
    case 13:
    case 187:
      return accept_return;  // Return and Enter
    case 8:
    case 46:
      return accept_delete;  // Backspace and Delete
    case 27:
      return accept_escape;
    default:
      break;
  }
  if (vkey >= 33 && vkey <= 40) return accept_moves;
  if (ch == '+' || ch == '-') return accept_signs;
  if (ch >= '0' && ch <= '9') return accept_digits;
  if ((ch >= 'A' && ch <= 'Z') || (ch >= 'a' && ch <= 'z')) return accept_letters;
  return has_picture(ch) ? accept_printable : accept_nonprintable;
}

// Makes room in a full queue by dropping its oldest key: keys for a widget that is never drawn
// again would otherwise stay for ever, and a page that blocks for long can collect many.
void drop_oldest(const focus_info_t& ring) {
  for (int* queue : {ring.chars, ring.vkeys, ring.flags, ring.ids})
    std::copy(queue + 1, queue + *ring.count, queue);
  --*ring.count;
}

void queue_key(const focus_info_t& ring, int ch, int vkey, int flags) {
  if (ring.capacity < 1) return;
  if (*ring.count >= ring.capacity) drop_oldest(ring);
  const int at = (*ring.count)++;
  ring.chars[at] = ch;
  ring.vkeys[at] = vkey;
  ring.flags[at] = flags;
  ring.ids[at] = focus_id;
}

}  // namespace

void BTN_begin_focus_ring() {
  focus_ring.clear();
  wind_focus = 0;
}

int BTN_register_focus(int id, int* chars, int* vkeys, int* flags, int* ids, int* count,
                       int capacity, int accept, int take_focus) {
  focus_ring.push_back({id, chars, vkeys, flags, ids, count, capacity, accept});
  if (take_focus) focus_id = id;
  return id == focus_id;
}

int BTN_register_queue(int id, BTN_key_queue& queue, int accept, int take_focus) {
  return BTN_register_focus(id, queue.chars, queue.vkeys, queue.flags, queue.ids, &queue.count,
                            key_queue_size, accept, take_focus);
}

int BTN_dispatch_to_focus(int ch, int vkey, int flags) {
  if (mnw.win_id == win_alert) return 0;
  const bool tab = vkey == vkey_tab, up = flags & key_up;

  const auto focused =
      focus_id == 0 ? focus_ring.end()
                    : std::find_if(focus_ring.begin(), focus_ring.end(),
                                   [](const focus_info_t& ring) { return ring.id == focus_id; });
  if (focused == focus_ring.end()) {
    focus_id = 0;
    if (!tab || up || focus_ring.empty()) return 0;
    focus_id = focus_ring.front().id;
    return 1;
  }

  if (tab && !(focused->accept & accept_tab)) {
    if (up) return 0;
    const size_t count = focus_ring.size();
    const size_t at = static_cast<size_t>(focused - focus_ring.begin());
    focus_id = focus_ring[(at + (flags & key_shift ? count - 1 : 1)) % count].id;
    return 1;
  }

  if (!(focused->accept & class_of_key(ch, vkey))) return 0;
  queue_key(*focused, ch, vkey, flags);
  return 1;
}

int BTN_take_key(BTN_key_queue& queue, int id, int* at, BTN_key* key) {
  while (*at < queue.count) {
    const int i = (*at)++;
    // An emptied slot keeps its place until the whole queue is empty.
    if (queue.ids[i] != id || (queue.chars[i] == 0 && queue.vkeys[i] == 0)) continue;
    *key = {queue.chars[i], queue.vkeys[i], queue.flags[i]};
    queue.chars[i] = queue.vkeys[i] = queue.flags[i] = queue.ids[i] = 0;
    if (key->flags & key_up) continue;
    return 1;
  }
  if (std::all_of(queue.ids, queue.ids + queue.count, [](int slot) { return slot == 0; })) {
    queue.count = 0;
  }
  return 0;
}

void BTN_focus_any() {
  focus_id = focus_ring.empty() ? 0 : focus_ring.front().id;
}

void BTN_unfocus_any() {
  focus_id = 0;
}

void BTN_window_has_focus() {
  wind_focus = 1;
}

int BTN_no_focus_yet() {
  return !wind_focus && focus_id == 0;
}
