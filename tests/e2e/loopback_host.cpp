// The product's web server of the end-to-end tests, in place of the built-in host.

#include "Installer-f/settings/main_stg.h"
#include "corekit/base/hl_app.h"

const char* const product_web_host = "127.0.0.2";

const char* APP_web_host() {
  return product_web_host;
}
