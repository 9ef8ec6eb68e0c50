// The record through which the runtime calls the application; main fills it, once.

#include "corekit/base/hl_app.h"

APP_record APP;
