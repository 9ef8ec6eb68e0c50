// Constants that every module of the family shares: the product's version, the severities of an
// alert, and the build mode.
#pragma once

// The release that this program belongs to, as the manifest and the server list count it.
inline constexpr int skyvane_version = 91001;
inline constexpr char skyvane_version_title[] = "Skyvane 9.10r1";

// 1 in the makers' own build of the runtime, where file names must match to the letter.
inline constexpr int is_build = 0;

// Severities of an alert and of a travelling failure (exce_class).
enum alert_type : int {
  t_alert = 1,  // a message; the program goes on
  t_exit = 2,   // fatal; the program ends with status 1 once the user has read it
};
