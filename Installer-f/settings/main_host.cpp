// The host name of the product's web server: a setting of the build, in a file of its own so that
// the end-to-end tests can link another.

#include "Installer-f/settings/main_stg.h"

const char* const product_web_host = SKYVANE_WEB_HOST;
