// The languages that the user has told his system.
#pragma once

#include <string>
#include <vector>

// Language codes of ISO 639 in lower case, such as "pt", the one he likes best first; empty when
// his locale names none ("C", "POSIX"). Any thread that starts no other while the environment
// changes.
std::vector<std::string> PLT_user_languages();
