// Keys of the end-to-end tests, in place of those that are built in.

#include "corekit/files/sign.h"

const char* const sign_built_in_keys = SIGNED_KEYS;
