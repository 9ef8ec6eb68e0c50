// One stream of the network transfer, for grab_files alone. Main thread.
#pragma once

// Moves stream `s` by one step on its file, next.stream_file[s], which is below the file count.
// True when it is finished with that file.
bool stream_step(int s);

// Streams that a speed in kilobytes per second deserves; `manual` above 0 overrides. More than
// stream_limit means as many as there are.
int wanted_streams(float rate, int manual);

// After a finished file: starts one more stream, stops stream `s`, or has it take its next file, as
// the measured speed asks for.
void settle_stream_count(int s);
