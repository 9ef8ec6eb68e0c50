// Aids to diagnosis.
#pragma once

// First thing at start-up: a connection closed by its peer must not end the program, so SIGPIPE is
// ignored.
void UTL_debug_init();
