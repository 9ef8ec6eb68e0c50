// The gallery's page: sections one below the other, each on a panel with a heading.
#pragma once

#include <string>

inline constexpr float section_left = 20, section_dx = 746;  // of the panels, units
inline constexpr float section_rim = 20;                     // from a panel's edge to its contents

// A section's contents hang from `top`, which is below its heading, and may take its `dy`. They
// begin at `content_left`. Called once a frame while any of the section is in the window.
inline constexpr float content_left = section_left + section_rim;
struct gallery_section {
  const char* heading;
  float dy;
  void (*draw)(float top);
};

// What the toolkit draws without being asked back.
void draw_glyphs(float top);
void draw_texts(float top);
void draw_colours(float top);
void draw_strips(float top);
void draw_boxes(float top);
// Widgets, alive: what they edit lasts until the program ends.
void draw_actions(float top);
void draw_values(float top);
void draw_choices(float top);
// The compiled-in pictures, pixel by pixel.
void draw_elements_picture(float top);
void draw_interface_picture(float top);
void draw_map_picture(float top);
void draw_background_picture(float top);

// Writes what the window's back buffer holds, in colour or, which takes a third of the room, in
// grey; false if it cannot be written.
bool write_window(const std::string& path, bool grey);
// Writes a picture of each dialog that no page of the installer opens into an existing folder;
// false if one cannot be written.
bool write_dialogs(const std::string& folder);
