// The public keys of those who may sign a release: a setting of the build, in a file of its own so
// that the end-to-end tests can link others.

#include "corekit/files/sign.h"

const char* const sign_built_in_keys = SKYVANE_SIGNING_KEYS;
