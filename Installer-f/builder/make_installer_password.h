// A password, from the terminal or from a descriptor. Main thread.
#pragma once

#include <string>

// Asks for it on the terminal, where it is not shown. Whatever ends the program meanwhile leaves
// the terminal as it was. False if there is none, or nothing whole was typed.
bool password_from_terminal(const char* prompt, std::string& password);

// The first line that comes from `fd`; nothing behind it is taken. False if there is none.
bool password_from(int fd, std::string& password);

// Overwrites it.
void password_wipe(std::string& password);
