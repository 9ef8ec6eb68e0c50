// Any thread: constants.

#include "corekit/base/hl_alert_source.h"

#include <iterator>

namespace {

struct alert_row {
  alert_source source;
  alert_quote quote;
};

// In the order of the names.
constexpr alert_row rows[] = {
    {at_no_copy_there, {"Installer-f/main", 342}},
    {at_disc_manifest_archive, {"Installer-f/main", 383}},
    {at_nothing_to_start, {"Installer-f/main", 402}},
    {at_no_temporary_folder, {"Installer-f/main", 1180}},
    {at_stray_exception, {"Installer-f/main", 1214}},
    {at_stray_throw, {"Installer-f/main", 1217}},
    {at_copy_in_use, {"Installer-f/main_patch", 118}},
    {at_foreign_list, {"Installer-f/utils", 1172}},
    {at_no_beta, {"Installer-f/utils", 1188}},
    {at_untrusted_list, {"Installer-f/utils", 1194}},
    {at_untrusted_manifest, {"Installer-f/utils", 1198}},
    {at_outdated, {"Installer-f/utils", 1201}},
    {at_manifest_archive, {"Installer-f/utils", 1203}},
    {at_file_archive, {"Installer-f/utils", 2288}},
    {at_path_without_file, {"Installer-f/utils", 2410}},
    {at_folder_not_made, {"Installer-f/utils_dirs", 96}},
    {at_file_not_deleted, {"Installer-f/utils_dirs", 173}},
    {at_new_format, {"Installer-f/utils_manifest", 355}},
    {at_manifest_missing, {"Installer-f/utils_manifest", 386}},
    {at_manifest_names_folder, {"Installer-f/utils_manifest", 412}},
    {at_manifest_too_long, {"Installer-f/utils_manifest", 437}},
    {at_build_tree_type, {"Installer-f/make_installer", 111}},
    {at_build_md5, {"Installer-f/make_installer", 211}},
    {at_build_type, {"Installer-f/make_installer", 307}},
    {at_build_done, {"Installer-f/make_installer", 308}},
    {at_thread_exception, {"Thread/hl_thread", 203}},
    {at_thread_throw, {"Thread/hl_thread", 206}},
    {at_thread_call_not_done, {"Thread/hl_thread", 249}},
    {at_thread_create, {"UTL/UTL_thread", 71}},
    {at_section_kind_init, {"UTL/UTL_thread", 112}},
    {at_section_kind_set, {"UTL/UTL_thread", 113}},
    {at_section_init, {"UTL/UTL_thread", 114}},
    {at_section_kind_destroy, {"UTL/UTL_thread", 115}},
    {at_section_destroy, {"UTL/UTL_thread", 121}},
    {at_section_lock, {"UTL/UTL_thread", 127}},
    {at_section_unlock, {"UTL/UTL_thread", 133}},
    {at_queue_lock, {"UTL/UTL_queue", 31}},
    {at_queue_unlock, {"UTL/UTL_queue", 36}},
    {at_queue_wait, {"UTL/UTL_queue", 51}},
    {at_queue_init, {"UTL/UTL_queue", 70}},
    {at_queue_condition_init, {"UTL/UTL_queue", 71}},
    {at_queue_destroy, {"UTL/UTL_queue", 77}},
    {at_queue_condition_destroy, {"UTL/UTL_queue", 78}},
    {at_queue_signal, {"UTL/UTL_queue", 88}},
    {at_plain_too_long, {"corekit/GenH/hl_string", 137}},
    {at_random_range, {"GenH/hl_math", 61}},
    {at_path_too_long, {"Files/io_utils", 51}},
    {at_ouf_type, {"Files/io_utils_ouf", 32}},
    {at_ouf_not_saved, {"Files/io_utils_ouf", 46}},
    {at_list_no_folder, {"Files/io_utils_tree", 112}},
    {at_delete_no_folder, {"Files/io_utils_tree", 217}},
    {at_map_absolute_path, {"OOPS_cpp/xmap", 99}},
    {at_map_bad_dirchar, {"OOPS_cpp/xmap", 105}},
    {at_map_read, {"OOPS_cpp/xmap", 143}},
    {at_map_check_type, {"OOPS_cpp/xmap", 156}},
    {at_map_swap_size, {"OOPS_cpp/xmap", 210}},
    {at_http_slots, {"OOPS_cpp/http", 398}},
    {at_http_server_slash, {"OOPS_cpp/http", 411}},
    {at_http_file_slash, {"OOPS_cpp/http", 419}},
    {at_udp_nonblocking, {"Sockets/PCSBSocketUDP", 40}},
    {at_gl_procs, {"OGL/OGL_extensions", 19}},
    {at_gl_forced, {"OGL/OGL_extensions", 318}},
    {at_gl_too_old, {"OGL/OGL_extensions", 327}},
    {at_gl_software, {"OGL/OGL_extensions", 341}},
    {at_text_charset, {"OOPS_cpp/oglp", 1377}},
    {at_picture_size, {"TEX/TEX_utils", 61}},
    {at_picture_format, {"TEX/TEX_utils", 245}},
    {at_bmp_kind, {"TEX/TEX_bmp", 96}},
    {at_bmp_depth, {"TEX/TEX_bmp", 98}},
    {at_bmp_compressed, {"TEX/TEX_bmp", 100}},
    {at_bmp_header_cut, {"TEX/TEX_bmp", 134}},
    {at_bmp_cut, {"TEX/TEX_bmp", 148}},
    {at_bmp_size, {"TEX/TEX_bmp", 163}},
    {at_dds_write_format, {"TEX/TEX_dds", 97}},
    {at_png_jumped, {"TEX/TEX_png", 71}},
    {at_png_overrun, {"TEX/TEX_png", 92}},
    {at_png_too_short, {"TEX/TEX_png", 168}},
    {at_png_signature, {"TEX/TEX_png", 171}},
    {at_png_struct, {"TEX/TEX_png", 177}},
    {at_png_size, {"TEX/TEX_png", 186}},
    {at_png_depth, {"TEX/TEX_png", 191}},
    {at_png_buffer, {"TEX/TEX_png", 195}},
    {at_png_write_format, {"TEX/TEX_png", 288}},
    {at_texture_load_time, {"OOPS_cpp/tman", 151}},
    {at_texture_manual_ref, {"OOPS_cpp/tman", 155}},
    {at_texture_release_manual, {"OOPS_cpp/tman", 203}},
    {at_texture_never_reffed, {"OOPS_cpp/tman", 207}},
    {at_texture_ref_negative, {"OOPS_cpp/tman", 211}},
    {at_texture_unload_dynamic, {"OOPS_cpp/tman", 225}},
    {at_texture_missing_ref, {"OOPS_cpp/tman", 253}},
    {at_texture_filter, {"OOPS_cpp/tman", 402}},
    {at_texture_colour, {"OOPS_cpp/tman", 408}},
    {at_texture_manual_size, {"OOPS_cpp/tman", 429}},
    {at_texture_manual_range, {"OOPS_cpp/tman", 445}},
    {at_texture_size, {"OOPS_cpp/tman", 455}},
    {at_texture_missing, {"OOPS_cpp/tman", 512}},
    {at_frame0_type, {"OOPS_cpp/butn", 301}},
    {at_frame0_x, {"OOPS_cpp/butn", 302}},
    {at_frame0_y, {"OOPS_cpp/butn", 303}},
    {at_frame1_type, {"OOPS_cpp/butn", 317}},
    {at_frame2_type, {"OOPS_cpp/butn", 331}},
    {at_entry_too_long, {"OOPS_cpp/butn", 512}},
    {at_sliders, {"OOPS_cpp/butn", 731}},
    {at_select_open_save, {"OOPS_cpp/butn", 861}},
    {at_select_file_type, {"OOPS_cpp/butn", 862}},
    {at_select_too_long, {"OOPS_cpp/butn", 871}},
    {at_picked_folder, {"OOPS_cpp/butn", 901}},
    {at_folder_name, {"OOPS_cpp/butn", 951}},
    {at_url_too_long, {"GenC/hl_mnw", 412}},
    {at_scenery_textures, {"GenC/hl_mnw", 507}},
    {at_aircraft_textures, {"GenC/hl_mnw", 512}},
    {at_some_textures, {"GenC/hl_mnw", 517}},
    {at_menu_file, {"GenC/hl_mnw", 913}},
    {at_no_graphics, {"corekit/GenC/hl_init", 1574}},
    {at_no_language, {"corekit/GenC/hl_init", 1651}},
};

constexpr bool is_in_order() {
  for (int i = 0; i < static_cast<int>(std::size(rows)); ++i)
    if (rows[i].source != i) return false;
  return std::size(rows) == alert_source_count;
}
static_assert(is_in_order());

}  // namespace

alert_quote quote_of(alert_source source) {
  return rows[source].quote;
}
