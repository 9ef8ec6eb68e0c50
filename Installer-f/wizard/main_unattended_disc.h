// What a run without a display answers on the pages of the disc flows. Pure readers of the command
// line's texts, apart from unattended_take_copy.
#pragma once

#include <string>

#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_wizard.h"

// The first page of the flow that --do names: install, scenery or repair. Null for any other word.
page_function unattended_flow(const std::string& word);

// Reads --sectors: "all", "none", or a list of 10-degree sectors by their south-west corners, such
// as "+30-120,+40-110". Returns what is wrong with it, or empty with `selected` filled.
std::string unattended_read_sectors(const std::string& text, int (&selected)[sector_count]);

// The first of the wanted sectors that the manifest does not offer, as "+30-120"; empty if it
// offers them all.
std::string unattended_missing_sector(const int (&wanted)[sector_count],
                                      const int (&available)[sector_count]);

// Makes the copy at `folder` one of those that the pages list, as "Find It" does. Returns what is
// wrong with it, or empty. Main thread.
std::string unattended_take_copy(const std::string& folder);
