// Web pages, in the user's own browser. Main thread.

#include "corekit/base/hl_url.h"

#include "corekit/Platform/PLT_window.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/mnw.h"

namespace {

constexpr size_t url_limit = 499;

}  // namespace

void go_to_URL(const std::string& url) {
  if (url.size() > url_limit) {
    __MACIBM_alert(win_main, "String too long!", url.substr(0, url_limit), "", "", t_exit,
                   at_url_too_long);
  }
  xer << "Web page: " << url << '\n';
  if (!ogl_inited) return;
  if (!PLT_open_url(url)) xer << "WARNING: no browser could be started.\n";
}
