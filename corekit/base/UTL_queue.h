// The message queue: first in, first out, without a limit, of single machine words.
//
// It is the only way in which data passes between threads. Who owns what a word points to changes
// with the word: the writer lets go at the write, the reader takes over at the read, and the
// queue's lock is the memory barrier between them.
#pragma once

#include <cstdint>
#include <ctime>

// A message: a pointer or a number. 0 cannot be told from an empty queue, so it is never data, but
// a stop order or a bare signal to a reader that waits for ever. Signed, so that the other stop
// order, all bits set, reads -1.
using UTL_message = intptr_t;

struct UTL_message_queue;

inline constexpr int queue_poll = 0;  // time-out of a read that does not wait
inline constexpr int queue_wait_forever = -1;

// Makes a queue and stores it through `queue`; its maker destroys it.
void UTL_message_queue_create(UTL_message_queue** queue);

// Frees the queue. Words still in it are dropped unread: what they point to is the caller's affair.
// No thread may be inside a call on it.
void UTL_message_queue_destroy(UTL_message_queue* queue);

// Appends a word. Never waits for a reader. Any thread.
void UTL_message_queue_write(UTL_message_queue* queue, UTL_message word);

// Takes the oldest word; each word goes to one reader. `timeout` is queue_poll, queue_wait_forever
// or milliseconds (any other negative one polls). 0 when none came in time. Any thread.
UTL_message UTL_message_queue_read(UTL_message_queue* queue, int timeout);

// The moment `timeout` milliseconds (not below 0) after `now`.
timespec UTL_message_deadline(const timespec& now, int timeout);
