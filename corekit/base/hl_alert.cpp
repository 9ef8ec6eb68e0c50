// The alert: a failure record made of a caller's words. Any thread.

#include "corekit/base/hl_alert.h"

#include "corekit/base/mnw.h"

void MACIBM_fault(alert_source source, const std::string& line_1, const std::string& line_2,
                  const std::string& line_3, const std::string& line_4) {
  __MACIBM_alert(win_main, line_1, line_2, line_3, line_4, t_exit, source);
}

void __MACIBM_alert(int window, const alert_line& line_1, const alert_line& line_2,
                    const alert_line& line_3, const alert_line& line_4, int type,
                    alert_source source) {
  const alert_quote quote = quote_of(source);
  __MACIBM_alert(window, line_1, line_2, line_3, line_4, type, quote.file, quote.line);
}

void __MACIBM_alert(int window, const alert_line& line_1, const alert_line& line_2,
                    const alert_line& line_3, const alert_line& line_4, int type, const char* file,
                    int source_line) {
  exce_class failure(line_1, line_2, line_3, line_4, file, source_line, type);
  failure.window = window;
  report_from_anywhere(failure);
}
