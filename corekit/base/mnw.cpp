// The window record and the frame's requests; the window layer writes them.

#include "corekit/base/mnw.h"

mnw_record mnw;
key_handlers mnw_keys;

int return_hit = 0;
int escape_hit = 0;
int delete_hit = 0;
int frame_soon = frame_when_needed;
