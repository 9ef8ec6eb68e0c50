// Scenes: what the window shows in a state that is made on purpose, while somebody does something
// there.
#pragma once

#include <string>
#include <vector>

struct gallery_scene {
  const char* name;  // of its picture
  void (*open)();    // makes the state, and turns to a page or opens a dialog
  const char* does;  // what the user does then: words with blanks between, see gallery_scenes.cpp
  void (*then)();    // changes the state behind the first frame; null for nothing
};

// Plays each scene, or those that `only` names, with commas between, and writes its last picture
// into the folder as NAME.png. False if one cannot be written.
bool write_scenes(const std::vector<gallery_scene>& scenes, const std::string& only,
                  const std::string& folder);
// A frame before the scene begins, for `open`.
void pass_frame();
// What a frame draws in a scene without a dialog; the page's, if nothing else is said in `open`.
extern void (*scene_frame)();

// The scenes of the wizard's pages; of widgets and dialogs; of dialogs that no page opens.
std::vector<gallery_scene> page_scenes();
std::vector<gallery_scene> state_scenes();
std::vector<gallery_scene> dialog_scenes();
// Goes into a folder of this run with the files that scenes of the browser show, so that their
// paths are the same on every machine.
void enter_shelf();
