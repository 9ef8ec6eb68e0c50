// One stream of the network transfer, for utils_grab alone. Main thread.
//
//   state       is left                                        for
//   resting     when a mirror may be asked                     fetching
//   fetching    when the archive is there; on a failure        unpacking; resting
//   unpacking   when the worker is done; on a mirror's fault   the next file; resting
#pragma once

enum stream_state { stream_resting, stream_fetching, stream_unpacking };

// Where stream `s` stands with the file next.stream_file[s].
stream_state stream_where(int s);
// Seconds until a resting stream may find a mirror.
float stream_rests_for(int s);

// Moves stream `s` by one step on its file, next.stream_file[s], which is below the file count.
// True when it is finished with that file.
bool stream_step(int s);

// Takes back what the workers have finished; each stream acts on its own at its next step.
void stream_collect_unpacked();

// Waits for the workers, books what they have put into its place, and forgets where every stream
// stands. What their HTTP slots hold is dropped.
void stream_stop_all();

// Streams that a speed in kilobytes per second deserves; `manual` above 0 overrides. More than
// stream_limit means as many as there are.
int wanted_streams(double rate, int manual);

// After a finished file: starts one more stream, stops stream `s`, or has it take its next file, as
// the measured speed asks for.
void settle_stream_count(int s);
