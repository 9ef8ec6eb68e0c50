// The source tree: where its named places are, which of its files belong on a master, and the walk
// that finds them. Main thread only.
#pragma once

#include <set>
#include <string>
#include <vector>

// --- the four platform folders in the root of the source tree -----------------------------------
extern const std::string ALL_str, APL_str, WIN_str, LIN_str;

// The manifest's platform codes. A file of the neutral folder that only Linux wants has a code of
// its own.
enum platform_code : int {
  platform_all = 0,
  platform_apl = 1,
  platform_win = 2,
  platform_lin = 3,
  platform_all_lin = 6,
};

// --- named places -------------------------------------------------------------------------------
// Full paths, filled by place_names from src_fold; a flag turns 1 when the walk passes the place,
// and is never cleared: what one tree of a program start has shown is known for the next.
extern std::string str_all_fold, str_apl_fold, str_win_fold, str_LIN_fold;
extern std::string str_ins_fold, str_wpn_fold, str_afl_fold, str_acf_fold, str_pfc_fold;
extern std::string str_res_fold, str_out_fold, str_cus_fold, str_glo_fold, str_plug;
extern std::string str_redt, str_orbt, str_erth1, str_erth2, str_mars, str_moon;
extern std::string str_men_file, str_tex_file;
extern std::string str_com_file;  // a sibling product's file, which may never reach a master

extern int found_all_fold, found_apl_fold, found_win_fold, found_LIN_fold;
extern int found_ins_fold, found_wpn_fold, found_afl_fold, found_acf_fold, found_pfc_fold;
extern int found_res_fold, found_out_fold, found_cus_fold, found_glo_fold, found_plug;
extern int found_redt, found_orbt, found_erth1, found_erth2, found_mars, found_moon;
extern int found_men_file, found_tex_file;
extern int found_com_file;

// Derives the paths above from src_fold.
void place_names();

// Ends the build if a place that the install type needs was not passed, or the sibling's file was.
void check_places();

// --- the walk -----------------------------------------------------------------------------------
extern std::vector<std::string> comp_files;  // full source paths to compress, in walk order
extern std::set<std::string> comp_paths;     // folders to make on discs 0 to 2, each with its "/"
extern int num_files_rec;                    // files seen
extern int num_files_use;                    // files kept
extern std::string dst_folder;               // root of the current disc, trailing "/"

// Walks `dir` (full path, trailing "/") and adds to the four results. Ends the build at the first
// thing that may not be in the tree.
void pref_level(const std::string& dir);

// Whether a file of the source tree belongs on the master of this install type. `path` is full, so
// that the named places can be recognised in it. `check_contents` non-zero also looks at the file,
// and refuses an empty one; a link is good at any length.
bool is_good_file(const std::string& path, int is_folder, int check_contents);

// What the walk or the filter would find in `path` wherever it lies, or null: a source tree below
// such a folder would be refused file by file, or lose every file without a word.
const char* path_trouble(const std::string& path);

// Turns a path relative to the source tree, or one of a manifest, into the key that finds the
// file's history: the platform's word in place of the first component. A code without a word leaves
// the path with its leading "/".
void chop_platform(std::string& path, int os);

// Sets dst_folder to the root of disc `disk`, from 0.
void set_dest_dvd(int disk);
// That root, without setting anything.
std::string dest_dvd(int disk);
