// Main thread. Reads the arguments and the present language.

#include "Installer-f/wizard/main_unattended_options.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <string_view>
#include <vector>

#include "corekit/Platform/PLT_text.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"

namespace {

struct option_row {
  std::string_view name;
  std::string_view value;  // what stands behind its "="; empty for an option that takes none. A
                           // setting's "A-B" is held to: it would become another number
};

// The run's own first: of two that are as near, the first one is named.
constexpr option_row options[] = {
    {"--unattended", ""},
    {"--accept_eula", ""},
    {"--allow_unsigned", ""},
    {"--dest", "FOLDER"},
    {"--name", "NAME"},
    {"--platform", "mac|windows|linux"},
    {"--copy", "FOLDER"},
    {"--do", "install|scenery|repair"},
    {"--sectors", "all|none|LIST"},
    {"--on_modified", "keep|overwrite|cancel"},
    {"--give_up_after", "SECONDS"},
    {"--check", ""},
    {"--list", ""},
    {"--uninstall", ""},
    {"--quiet", ""},
    {"--json", ""},
    {"--timestamps", ""},
    {"--log", "FILE"},
    {"--help", ""},
    {"-h", ""},
    {"--version", ""},
    {"--scale", "1 to 4"},
    {"--missing_strings", ""},
    {"--check_layout", ""},
    {"--list_texts", "FILE"},
    {"--md5", "NAME"},
    {"--pref:_stream_count", "NUMBER"},
    {"--pref:_log_actions", "0|1"},
    {"--pref:_proxy_host", "HOST"},
    {"--pref:_proxy_port", "PORT"},
    {"--pref:_proxy_port_int", "0-65535"},
    {"--pref:_get_beta", "0|1"},
    {"--pref:_lang", "NUMBER"},
    {"--pref:_col_res_req", "NUMBER"},
    {"--pref:_set_res", "NUMBER"},
    {"--pref:_alias_req", "NUMBER"},
    {"--pref:_keylist_up", "NUMBER"},
    {"--pref:_sec_mon_inuse", "NUMBER"},
    {"--pref:_prefs_found", "NUMBER"},
    // Of the simulator's family: here they change nothing, or little.
    {"--no_sound", ""},
    {"--no_vbos", ""},
    {"--no_fbos", ""},
    {"--no_pbos", ""},
    {"--no_sprites", ""},
    {"--no_pixel_counters", ""},
    {"--no_aniso_filtering", ""},
    {"--no_hw_mipmap", ""},
    {"--no_fshaders", ""},
    {"--no_vshaders", ""},
    {"--no_glsl", ""},
    {"--no_threaded_ogl", ""},
    {"--no_sblend", ""},
    {"--no_dds", ""},
    {"--use_vbos", ""},
    {"--use_sprites", ""},
    {"--use_fshaders", ""},
    {"--use_vshaders", ""},
    {"--use_glsl", ""},
    {"--use_threaded_ogl", ""},
    {"--use_pixel_counters", ""},
    {"--use_fprogs", ""},
    {"--use_vprogs", ""},
    {"--force_run", ""},
    {"--fps_test", "NUMBER"},
    {"--require_fps", "NUMBER"},
    {"--cmnds", "PATH"},
};

// How many letters one has to put in, take out or change to make the one of the other, dashes
// aside.
size_t distance(std::string_view a, std::string_view b) {
  const auto bare = [](std::string_view text) {
    return text.substr(std::min(text.find_first_not_of('-'), text.size()));
  };
  a = bare(a);
  b = bare(b);
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j)
    row[j] = j;
  for (size_t i = 0; i < a.size(); ++i) {
    size_t before = row[0]++;
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t change = before + (a[i] != b[j] ? 1 : 0);
      before = row[j + 1];
      row[j + 1] = std::min({change, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row[b.size()];
}

const option_row* find_option(std::string_view name) {
  const auto found = std::find_if(std::begin(options), std::end(options),
                                  [&](const option_row& row) { return row.name == name; });
  return found != std::end(options) ? found : nullptr;
}

const option_row& nearest_option(std::string_view name) {
  return *std::min_element(std::begin(options), std::end(options),
                           [&](const option_row& a, const option_row& b) {
                             return distance(name, a.name) < distance(name, b.name);
                           });
}

std::string form_of(const option_row& row) {
  std::string form(row.name);
  if (!row.value.empty()) form.append("=").append(row.value);
  return form;
}

// Whether a setting's value is among the numbers that its row names. Any is where it names none.
bool is_in_range(std::string_view value, const option_row& row) {
  const size_t sign = row.value.find('-');
  if (!row.name.starts_with("--pref:") || sign == row.value.npos) return true;
  const auto number = [](std::string_view text) {
    int read = -1;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), read);
    return code == std::errc() && end == text.data() + text.size() ? read : -1;
  };
  return number(value) >= number(row.value.substr(0, sign)) &&
         number(value) <= number(row.value.substr(sign + 1));
}

std::string wrong_argument(std::string_view argument) {
  const size_t equals = argument.find('=');
  const std::string_view name = argument.substr(0, equals);
  const std::string quoted = "'" + std::string(argument) + "'";
  const option_row* const row = find_option(name);
  if (!row) {
    const std::string head =
        str_fill(argument.starts_with('-') ? tr("There is no option %s.") : tr("%s is no option."),
                 {quoted});
    return head + " " + str_fill(tr("Did you mean %s?"), {form_of(nearest_option(name))});
  }
  if (row->value.empty() && equals != argument.npos)
    return str_fill(tr("%s takes no value, and here it is %s."), {std::string(name), quoted});
  if (!row->value.empty() && equals == argument.npos)
    return str_fill(tr("%s means %s."), {quoted, form_of(*row)});
  if (!row->value.empty() && !is_in_range(argument.substr(equals + 1), *row)) {
    return str_fill(tr("%s wants %s, not '%s'."), {std::string(name), std::string(row->value),
                                                   std::string(argument.substr(equals + 1))});
  }
  return "";
}

}  // namespace

std::string unattended_wrong_argument(int argc, const char* const* argv) {
  // "-path FOLDER", first, is how a program of the family hands over its folder.
  const int first = argc > 2 && std::string_view(argv[1]) == "-path" ? 3 : 1;
  for (int i = first; i < argc; ++i) {
    std::string wrong = wrong_argument(argv[i]);
    if (wrong.empty()) continue;
    const bool wants_value = find_option(argv[i]) != nullptr;
    const bool has_word = i + 1 < argc && *argv[i + 1] && *argv[i + 1] != '-';
    if (!wants_value || !has_word) return wrong;
    return str_fill(tr("%s wants its value behind \"=\": %s"),
                    {argv[i], std::string(argv[i]) + "=" + argv[i + 1]});
  }
  return "";
}

std::string unattended_wrong_name(const std::string& name) {
  const std::string stored = PLT_is_utf8(name) ? name : PLT_utf8_from_latin1(name);
  if (name.empty() || name.find('/') != name.npos || name == "." || name == "..") {
    return tr("the name of a folder");
  }
  if (std::any_of(name.begin(), name.end(),
                  [](unsigned char c) { return c < 0x20 || c == 0x7F; })) {
    return tr("a name in one line");
  }
  if (stored.size() <= NAME_MAX) return "";
  return str_fill(tr("a name of at most %d bytes"), {std::to_string(NAME_MAX)});
}
