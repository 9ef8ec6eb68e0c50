// The way to the web. Main thread.
#pragma once

#include <string>

// Opens `url` (at most 499 characters) in the user's browser; without a window only logs it.
void go_to_URL(const std::string& url);
