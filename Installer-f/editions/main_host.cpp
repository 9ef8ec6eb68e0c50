// The host name of the product's web server: a setting of the build, in a file of its own so that
// the end-to-end tests can link another.

#include "Installer-f/settings/main_stg.h"
#include "corekit/base/hl_app.h"

const char* const product_web_host = SKYVANE_WEB_HOST;

const char* APP_web_host() {
  return product_web_host;
}
