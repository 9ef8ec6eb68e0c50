// Where an alert says that it comes from.
//
// A fatal alert ends with "(FILE line N)". File and line are part of its text: users have read them
// to the makers for as long as there are releases, and they lead nowhere in these sources. Here
// each pair has a name, by which the caller gives it, so that a search for the quoted words ends at
// the name, and one for the name at the caller.
#pragma once

enum alert_source : int {
  // The start, and the wizard
  at_no_copy_there,
  at_disc_manifest_archive,
  at_nothing_to_start,
  at_no_temporary_folder,
  at_stray_exception,
  at_stray_throw,
  at_copy_in_use,
  // The engine: server list and transfer
  at_foreign_list,
  at_no_beta,
  at_untrusted_list,
  at_untrusted_manifest,
  at_outdated,
  at_manifest_archive,
  at_file_archive,
  at_path_without_file,
  // its folders
  at_folder_not_made,
  at_file_not_deleted,
  // its manifest
  at_new_format,
  at_manifest_missing,
  at_manifest_names_folder,
  at_manifest_too_long,
  // The master builder
  at_build_tree_type,
  at_build_md5,
  at_build_type,
  at_build_done,
  // Base: threads
  at_thread_exception,
  at_thread_throw,
  at_thread_call_not_done,
  at_thread_create,
  at_section_kind_init,
  at_section_kind_set,
  at_section_init,
  at_section_kind_destroy,
  at_section_destroy,
  at_section_lock,
  at_section_unlock,
  at_queue_lock,
  at_queue_unlock,
  at_queue_wait,
  at_queue_init,
  at_queue_condition_init,
  at_queue_destroy,
  at_queue_condition_destroy,
  at_queue_signal,
  // text and numbers
  at_plain_too_long,
  at_random_range,
  // Files
  at_path_too_long,
  at_ouf_type,
  at_ouf_not_saved,
  at_list_no_folder,
  at_delete_no_folder,
  at_map_absolute_path,
  at_map_bad_dirchar,
  at_map_read,
  at_map_check_type,
  at_map_swap_size,
  // Net
  at_http_slots,
  at_http_server_slash,
  at_http_file_slash,
  at_udp_nonblocking,
  // Draw: the driver
  at_gl_procs,
  at_gl_forced,
  at_gl_too_old,
  at_gl_software,
  // text
  at_text_charset,
  // pictures
  at_picture_size,
  at_picture_format,
  at_bmp_kind,
  at_bmp_depth,
  at_bmp_compressed,
  at_bmp_header_cut,
  at_bmp_cut,
  at_bmp_size,
  at_dds_write_format,
  at_png_jumped,
  at_png_overrun,
  at_png_too_short,
  at_png_signature,
  at_png_struct,
  at_png_size,
  at_png_depth,
  at_png_buffer,
  at_png_write_format,
  // textures
  at_texture_load_time,
  at_texture_manual_ref,
  at_texture_release_manual,
  at_texture_never_reffed,
  at_texture_ref_negative,
  at_texture_unload_dynamic,
  at_texture_missing_ref,
  at_texture_filter,
  at_texture_colour,
  at_texture_manual_size,
  at_texture_manual_range,
  at_texture_size,
  at_texture_missing,
  // Widgets
  at_frame0_type,
  at_frame0_x,
  at_frame0_y,
  at_frame1_type,
  at_frame2_type,
  at_entry_too_long,
  at_sliders,
  at_select_open_save,
  at_select_file_type,
  at_select_too_long,
  at_picked_folder,
  at_folder_name,
  // Window
  at_url_too_long,
  at_scenery_textures,
  at_aircraft_textures,
  at_some_textures,
  at_menu_file,
  at_no_graphics,
  at_no_language,

  alert_source_count
};

struct alert_quote {
  const char* file;
  int line;
};
alert_quote quote_of(alert_source source);
