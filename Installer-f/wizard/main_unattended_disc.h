// The sectors that the command line of a run without a display names.
#pragma once

#include <string>

#include "Installer-f/settings/main_stg.h"

// Reads --sectors: "all", "none", or a list of 10-degree sectors by their south-west corners, such
// as "+30-120,+40-110". Returns what is wrong with it, or empty with `selected` filled.
std::string unattended_read_sectors(const std::string& text, int (&selected)[sector_count]);

// What a sector is called: its south-west corner, as "+30-120".
std::string unattended_sector_name(int column, int row);

// The first of the wanted sectors that the manifest does not offer, as "+30-120"; empty if it
// offers them all.
std::string unattended_missing_sector(const int (&wanted)[sector_count],
                                      const int (&available)[sector_count]);
