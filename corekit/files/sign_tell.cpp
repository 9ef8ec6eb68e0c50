// What the user is told of a statement that has expired. Main thread.

#include <ctime>
#include <set>

#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/sign.h"

void sign_tell_expired(const sign_statement& statement, int window) {
  static std::set<std::string> told;
  const time_t now = time(nullptr);
  if (!sign_has_expired(statement, now) || !told.insert(statement.kind).second) return;
  xer << "WARNING: what is signed as " << statement.kind << " has expired on " << statement.expires
      << '\n';
  __MACIBM_alert(window, "What I have found may be out of date.",
                 str_fill(UTL_translate_string("It was to be replaced by %s, and today is %s."),
                          {statement.expires, sign_day(now)}),
                 "Somebody may be keeping a newer release from you. I will go on all the same.", "",
                 t_alert, at_outdated);
}
