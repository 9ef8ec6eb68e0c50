// Main thread. Edits the true settings among stg's fields, and the proxy of http.

#include "Installer-f/wizard/main_prefs.h"

#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_string.h"
#include "corekit/draw/oglp.h"
#include "corekit/files/pref.h"
#include "corekit/net/http.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

namespace {

constexpr int proxy_limit = 65;

// In the order of mnw.language, each by its own name: whoever cannot read the present one finds the
// way back.
constexpr char languages[] =
    "English-Fran\xE7"
    "ais-Deutsch-Italiano-Espa\xF1ol-Portugu\xEAs";
constexpr int language_count = 6;

// The whole interface changes at once, this dialog included.
void edit_language() {
  const bool is_listed = mnw.language > 0 && mnw.language < language_count;
  int language = is_listed ? mnw.language : 0;
  if (!BTN_textlist(200, 228, &language, languages, tr("Language:"))) return;
  mnw.language = language;
  MACIBM_setupforlang();
  MACIBM_startwind(win_prefs, 0);  // for its title
}

// There is no cancel: every edit takes effect at once. What is being fetched is not started anew.
void edit_general() {
  int system = stg.new_copy_os - 1;
  BTN_textlist(200, 310, &system, tr("Macintosh-Windows-Linux"),
               tr("Operating System to download Skyvane for:|(Install and copy the entire Skyvane "
                  "folder to another computer if you like)"));
  stg.new_copy_os = system + 1;

  BTN_bool(30, 265, &stg.log_actions,
           tr("|log installer actions... turn this on to output the installer file downloads and "
              "stuff to the file log.txt."),
           0);
  BTN_bool(30, 190, &stg.beta_flag,
           tr("|get the new beta as a demo if available.  Leave this off unless you want to "
              "participate in the Skyvane beta program!"),
           0);
  int by_hand = stg.stream_count != 0;
  BTN_bool(30, 150, &by_hand,
           tr("|manually set the number of download streams... typically leave this OFF, and the "
              "installer will find the best number of streams for you."),
           0);
  if (by_hand) {
    // The words of the box before it reach up to the number.
    BTN_int_range(400, 150, &stg.stream_count, 1, 1, 4, "|" + tr("streams"));
  } else {
    stg.stream_count = 0;
  }
}

void edit_proxy() {
  BTN_enterstring(85, 40, &http._proxy_host, proxy_limit, tr("-proxy host"), 455, 1);
  BTN_enterstring(85, 20, &http._proxy_port, proxy_limit, tr("-proxy port"), 455, 1);
  // An empty port leaves the number as it was.
  if (!http._proxy_port.empty()) http._proxy_port_int = str_to_int(http._proxy_port);
}

}  // namespace

void handle_prefs() {
  MACIBM_startwind(win_prefs, 0);
  while (mnw.win_id == win_prefs) {
    MACIBM_plot_behind();
    BTN_fillwin(1, inner_none);
    float x = 0, y = 0;
    BTN_subwin(0, box_group, -1, -1, -1, 70,
               tr("Proxy (if you are behind a firewall with a Proxy)"), &x, &y);
    BTN_subwin(0, box_group, -1, y, -1, -1, tr("General Preferences"), &x, &y);
    edit_general();
    edit_language();
    edit_proxy();
    MACIBM_event_proc();
    if (escape_hit && mnw.win_id == win_prefs) MACIBM_handleclick(1);
  }
}

void wizard_prefs_io(scan_class& scan) {
  scan.int_io(&stg.stream_count, "_stream_count");
  scan.int_io(&stg.log_actions, "_log_actions");
  scan.string_io(&http._proxy_host, "_proxy_host");
  scan.string_io(&http._proxy_port, "_proxy_port");
  scan.int_io(&http._proxy_port_int, "_proxy_port_int");
  scan.int_io(&stg.beta_flag, "_get_beta");
  scan.int_io(&mnw.language, "_lang");
}
