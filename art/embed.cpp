// embed-art: turns one PNG file into the raw rows that are compiled into the program.
//
//   embed-art IN.png WIDTH HEIGHT CHANNELS BYTES OUT.raw
//
// 1. read the PNG and check that it has the size and the channels that the program counts on;
// 2. turn it upside down, since the first row of an array is the lowest row of the picture;
// 3. write the rows, and zeros after them up to BYTES.
//
// images.S takes the raw files in. (Arrays spelled out in C++ would take the compiler a minute.)

#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

static int fail(const char* file, const char* what) {
  fprintf(stderr, "embed-art: %s: %s\n", file, what);
  return 1;
}

int main(int argc, char** argv) {
  if (argc != 7) {
    fprintf(stderr, "use: embed-art IN.png WIDTH HEIGHT CHANNELS BYTES OUT.raw\n");
    return 2;
  }
  const char* const in_path = argv[1];
  const char* const out_path = argv[6];
  const int dx = atoi(argv[2]), dy = atoi(argv[3]), channels = atoi(argv[4]);
  const size_t bytes = strtoul(argv[5], nullptr, 10);

  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, in_path)) return fail(in_path, image.message);
  const png_uint_32 want = channels == 4 ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
  if (int(image.width) != dx || int(image.height) != dy || image.format != want) {
    png_image_free(&image);
    return fail(in_path, "not the size, channels or depth that the program counts on");
  }
  if (bytes < size_t(dx) * dy * channels) return fail(in_path, "does not fit into its array");

  std::vector<unsigned char> rows(bytes, 0);
  if (!png_image_finish_read(&image, nullptr, rows.data(), -dx * channels, nullptr))
    return fail(in_path, image.message);

  FILE* out = fopen(out_path, "wb");
  if (!out) return fail(out_path, "cannot be written");
  const bool wrote = fwrite(rows.data(), 1, rows.size(), out) == rows.size();
  if (fclose(out) != 0 || !wrote) return fail(out_path, "cannot be written");
  return 0;
}
