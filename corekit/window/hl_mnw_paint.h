// How the frame is asked to paint. For the files of the frame only.
#pragma once

// What the window shows has become wrong, and what is drawn of the next picture belongs to another
// window: the next frames come soon.
void frame_hurry();

// Whether what is drawn reaches the back buffer. Off, the driver drops every polygon before it
// costs anything. What is no polygon may still reach the back buffer, which is painted over whole
// before it is next shown. A change of window puts it on again, since a dialog may come up in the
// midst of a frame that was not to be painted.
void paint_frames(bool on);
