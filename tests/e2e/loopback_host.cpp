// The product's web server of the end-to-end tests, in place of the built-in host.

#include "Installer-f/settings/main_stg.h"

const char* const product_web_host = "127.0.0.2";
