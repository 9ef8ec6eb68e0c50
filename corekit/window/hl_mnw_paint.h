// How the frame is asked to paint. For the files of the frame only.
#pragma once

// What the window shows has become wrong, and what is drawn of the next picture belongs to another
// window: the next frames come soon, and the first whole picture is shown whatever it is like.
// `begins`: a dialog comes up, which draws itself from its start.
void frame_hurry(bool begins);
