// The PNG reader and writer.
//
// libpng reports an error by jumping out of the call. So every call that may fail runs in a step
// under `guarded`, and between a step and its guard there are no objects with destructors.
//
// Main thread, or the background load, one at a time. Writes png_mapped_file, and the log.

#include "corekit/draw/TEX_png.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_thread.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/TEX_out.h"
#include "corekit/draw/colr.h"
#include "corekit/files/xmap.h"

namespace {

constexpr UTL_text overrun = "PNG Read Error, overran end of buffer!";
// Named by the call that failed, and never translated.
constexpr char jumped[] = "setjmp(png_ptr->jmpbuf";  // an error of libpng's own
constexpr char no_signature[] = "is_png=!png_sig_cmp(png_io_buf,0,8)";
constexpr char no_struct[] = "png_create_read_struct_2";
constexpr int side_limit = scratch_bytes / 4;
// What libpng may ask for at once: a row takes at most half of it. A chunk of any length that a
// file claims would be taken in whole, and for one of text libpng does no more than warn.
constexpr png_alloc_size_t most_at_once = 64u << 20;

xmap_class* png_mapped_file = nullptr;  // being read; its cursor is libpng's

struct png_job {
  png_structp png = nullptr;
  png_infop info = nullptr;
  const char* fault = nullptr;  // static text; null while all is well
  alert_source source = at_png_jumped;
  char message[160] = {};  // libpng's words
  // reading
  int wanted = 0;  // TEX_format; 0 as the file is
  TEX_image_desc desc;
  // both
  png_bytep* rows = nullptr;
  FILE* out = nullptr;
};

// --- what libpng calls --------------------------------------------------------------------------

[[noreturn]] void my_error(png_structp png, png_const_charp text) {
  png_job& job = *static_cast<png_job*>(png_get_error_ptr(png));
  if (!job.fault) {
    job.fault = jumped;
    job.source = at_png_jumped;
  }
  std::snprintf(job.message, sizeof job.message, "%s", text ? text : "");
  png_longjmp(png, 1);
}

void my_warning(png_structp, png_const_charp text) {
  // The log is the main thread's.
  if (THREAD_is_inited() && !THREAD_is_main_thread()) return;
  xer << "PNG warning! " << (text ? text : "") << "\n";
}

png_voidp my_malloc(png_structp, png_alloc_size_t bytes) {
  return bytes <= most_at_once ? std::malloc(bytes) : nullptr;
}

void my_free(png_structp, png_voidp memory) {
  std::free(memory);
}

void my_readbuf(png_structp png, png_bytep data, size_t bytes) {
  xmap_class& file = *png_mapped_file;
  if (static_cast<size_t>(file.file_end - file.cursor) < bytes) {
    png_job& job = *static_cast<png_job*>(png_get_error_ptr(png));
    job.fault = overrun;
    job.source = at_png_overrun;
    png_longjmp(png, 1);
  }
  std::memcpy(data, file.cursor, bytes);
  file.cursor += bytes;
}

// Runs one step; false if libpng has jumped out of it.
bool guarded(png_job& job, void (*step)(png_job&)) {
  if (setjmp(png_jmpbuf(job.png))) return false;
  step(job);
  return true;
}

// --- reading ------------------------------------------------------------------------------------

void read_size(png_job& job) {
  png_set_user_limits(job.png, side_limit, side_limit);
  png_set_read_fn(job.png, nullptr, my_readbuf);
  png_read_info(job.png, job.info);
  job.desc.width = static_cast<int>(png_get_image_width(job.png, job.info));
  job.desc.height = static_cast<int>(png_get_image_height(job.png, job.info));
}

// Asks for the transformations that lead from what the file holds to what is wanted.
void set_transformations(png_job& job) {
  const png_structp png = job.png;
  const int color = png_get_color_type(png, job.info);
  const bool has_color = color & PNG_COLOR_MASK_COLOR;
  const bool has_alpha =
      (color & PNG_COLOR_MASK_ALPHA) || png_get_valid(png, job.info, PNG_INFO_tRNS);

  double file_gamma = 0;
  if (!png_get_gAMA(png, job.info, &file_gamma)) file_gamma = 1.0 / colr.gamma_target;
  png_set_gamma(png, colr.gamma, file_gamma);
  png_set_expand(png);
  png_set_strip_16(png);

  if (job.wanted == 0) {
    job.wanted = has_alpha ? TEX_rgba : has_color ? TEX_rgb : TEX_alpha;
  }
  if (job.wanted == TEX_alpha) {
    if (has_color) png_set_rgb_to_gray(png, 1, -1.0, -1.0);
  } else if (!has_color) {
    png_set_gray_to_rgb(png);
  }
  if (job.wanted == TEX_rgba) {
    if (!has_alpha) png_set_filler(png, 255, PNG_FILLER_AFTER);
  } else if (has_alpha) {
    png_set_strip_alpha(png);
  }
  png_set_interlace_handling(png);
  png_read_update_info(png, job.info);
  job.desc.format = job.wanted;
}

void read_rows(png_job& job) {
  png_read_image(job.png, job.rows);
}

int give_up(png_job& job, TEX_fault& fault, UTL_text text = nullptr,
            alert_source source = at_png_jumped) {
  fault.text = text ? text : job.fault;
  fault.source = text ? source : job.source;
  if (job.message[0]) fault.detail = std::string("PNG error! ") + job.message;
  png_destroy_read_struct(&job.png, &job.info, nullptr);
  png_mapped_file = nullptr;
  return 0;
}

}  // namespace

int TEX_read_png(xmap_class& file, unsigned char*& pixels, unsigned long format, int width_limit,
                 int pow2, int flip, TEX_image_desc& desc, TEX_fault& fault) {
  if (!file.file_start || file.file_start == file.file_end) return 0;
  png_job job;
  constexpr ptrdiff_t signature = 8;
  if (file.file_end - file.file_start < signature) {
    return give_up(job, fault, overrun, at_png_too_short);
  }
  if (png_sig_cmp(file.file_start, 0, signature) != 0) {
    return give_up(job, fault, no_signature, at_png_signature);
  }

  job.png = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, &job, my_error, my_warning, nullptr,
                                     my_malloc, my_free);
  if (job.png) job.info = png_create_info_struct(job.png);
  if (!job.info) return give_up(job, fault, no_struct, at_png_struct);
  file.cursor = file.file_start;
  png_mapped_file = &file;
  const bool known = format == TEX_alpha || format == TEX_rgb || format == TEX_rgba;
  job.wanted = known ? static_cast<int>(format) : 0;

  if (!guarded(job, read_size)) return give_up(job, fault);
  if (!TEX_size_fits(job.desc.width, job.desc.height)) {
    fault.detail = str_format("%d by %d", job.desc.width, job.desc.height);
    return give_up(job, fault, TEX_bad_size, at_png_size);
  }
  if (!guarded(job, set_transformations)) return give_up(job, fault);
  const size_t row = static_cast<size_t>(job.desc.width) * TEX_pixel_bytes(job.desc.format);
  if (png_get_bit_depth(job.png, job.info) != 8 || png_get_rowbytes(job.png, job.info) != row) {
    return give_up(job, fault, "Illegal bits per pixel", at_png_depth);
  }

  unsigned char* const into = TEX_take_buffer(job.desc, pixels, width_limit, pow2);
  if (!into) return give_up(job, fault, TEX_bad_size, at_png_buffer);
  std::vector<png_bytep> rows(job.desc.height);
  for (int y = 0; y < job.desc.height; ++y)
    rows[flip ? y : job.desc.height - 1 - y] = into + TEX_row_bytes(job.desc) * y;
  job.rows = rows.data();
  if (!guarded(job, read_rows)) {
    if (into != pixels) std::free(into);
    return give_up(job, fault);
  }
  png_destroy_read_struct(&job.png, &job.info, nullptr);
  png_mapped_file = nullptr;
  pixels = into;
  desc = job.desc;
  return 1;
}

int TEX_load_png(const std::string& path, xmap_class* file, unsigned char*& pixels,
                 unsigned long format, int width_limit, int pow2, int flip, TEX_image_desc* desc) {
  TEX_fault fault;
  TEX_image_desc found;
  const int ok = TEX_read_png(*file, pixels, format, width_limit, pow2, flip, found, fault);
  if (fault.text) TEX_report(fault, path);
  if (ok && desc) *desc = found;
  return ok;
}

// --- writing ------------------------------------------------------------------------------------

namespace {

void write_all(png_job& job) {
  constexpr double file_gamma = 1 / 1.8;
  const png_structp png = job.png;
  const int color = job.desc.format == TEX_rgba  ? PNG_COLOR_TYPE_RGB_ALPHA
                    : job.desc.format == TEX_rgb ? PNG_COLOR_TYPE_RGB
                                                 : PNG_COLOR_TYPE_GRAY;
  png_init_io(png, job.out);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
  png_set_compression_level(png, 9);
  png_set_compression_mem_level(png, 8);
  png_set_compression_strategy(png, 0);
  png_set_compression_window_bits(png, 15);
  png_set_compression_method(png, 8);
  png_set_compression_buffer_size(png, 8192);
  png_set_IHDR(png, job.info, static_cast<png_uint_32>(job.desc.width),
               static_cast<png_uint_32>(job.desc.height), 8, color, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_gAMA(png, job.info, file_gamma);
  png_write_info(png, job.info);
  png_write_image(png, job.rows);
  png_write_end(png, job.info);
}

bool write_png(FILE* out, const TEX_image_desc& desc, const unsigned char* pixels) {
  png_job job;
  job.desc = desc;
  job.out = out;
  std::vector<png_bytep> rows(desc.height);
  for (int y = 0; y < desc.height; ++y) {
    rows[desc.height - 1 - y] = const_cast<png_bytep>(pixels + TEX_row_bytes(desc) * y);
  }
  job.rows = rows.data();
  job.png = png_create_write_struct_2(PNG_LIBPNG_VER_STRING, &job, my_error, my_warning, nullptr,
                                      my_malloc, my_free);
  if (job.png) job.info = png_create_info_struct(job.png);
  const bool ok = job.info && guarded(job, write_all);
  png_destroy_write_struct(&job.png, &job.info);
  if (!ok) xer << "PING-FILE ERROR! " << job.message << "\n";
  return ok;
}

}  // namespace

int TEX_save_png(const std::string& path, const TEX_image_desc& desc, const unsigned char* pixels) {
  if (desc.format != TEX_rgb && desc.format != TEX_rgba && desc.format != TEX_alpha) {
    MACIBM_fault(at_png_write_format, "Illegal pixel format for png-write.", path);
    return 0;
  }
  if (desc.width < 1 || desc.height < 1) return 0;
  TEX_out file(path);
  return file.finish(file.stream() && write_png(file.stream(), desc, pixels));
}

int write_png_to_disk(const std::string& path, int dx, int dy, int bytes_per_pixel) {
  if (!check_dxy(path, dx, dy)) return 0;
  const TEX_image_desc desc{bytes_per_pixel == 4 ? TEX_rgba : TEX_rgb, dx, dy, 0, 0};
  return TEX_save_png(path, desc, scratch_array);
}
