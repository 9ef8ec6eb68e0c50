// What makes a program one of the three editions. Each is linked with one edition_*.cpp.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

struct edition_record {
  page_function start_page;
  const char* title;
  const char* program;  // the name of its file
};
extern const edition_record edition;
