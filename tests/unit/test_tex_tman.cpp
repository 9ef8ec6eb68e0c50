// The texture manager's way from a file to a texture.

#include <SDL.h>

#include "corekit/OOPS_cpp/oglp_draw.h"
#include "corekit/OOPS_cpp/tman_load.h"
#include "corekit/UTL/UTL_cmdline.h"
#include "tests/unit/gl_fixture.h"
#include "tests/unit/test_tex_util.h"

namespace {

constexpr int ref = 500;

// The colour that fills the picture, as RRGGBB; -1 for no picture.
int color_of(const std::string& name) {
  tex_load_vars vars{0, ref, 0, name};
  if (!load_any_into_scratch(name, tex_full_size | tex_rgb, vars)) return -1;
  return scratch_array[0] << 16 | scratch_array[1] << 8 | scratch_array[2];
}

bytes texture_pixels() {
  const ref_dat_struct& dat = tman.record(ref);
  bytes pixels(static_cast<size_t>(dat.dx * dat.dy) * 3);
  tman.bind_ref(ref, 0, 0);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
  return pixels;
}

constexpr char no_gamma[] = " -define png:exclude-chunks=gAMA,cHRM,sRGB,date ";

}  // namespace

TEST(TmanFiles, ExtensionsAreTriedInOrder) {
  picture_folder folder;
  const std::string solid = " -size 8x8 xc:";
  tex_convert(folder, solid + "'#ff0000' -alpha off -define dds:compression=none @a.dds");
  tex_convert(folder, solid + "'#00ff00'" + no_gamma + "PNG24:@a.png");
  tex_convert(folder, solid + "'#0000ff' -type TrueColor BMP3:@a.bmp");
  for (const char* name : {"a.dds", "a.png", "a.bmp", "a"})
    EXPECT_EQ(color_of(folder / name), 0xFF0000) << name;
  const char* const no_dds[] = {"unit_tests", "--no_dds"};
  const UTL_cmdline before = cmdline;
  cmdline.init_unix(2, no_dds);
  EXPECT_EQ(color_of(folder / "a.dds"), 0x00FF00);
  cmdline = before;
  folder.file("a.dds", "DDS that is none");
  EXPECT_EQ(color_of(folder / "a.bmp"), 0x00FF00) << "one that cannot be read is passed over";
  std::remove((folder / "a.png").c_str());
  EXPECT_EQ(color_of(folder / "a.png"), 0x0000FF);
  std::remove((folder / "a.bmp").c_str());
  EXPECT_EQ(color_of(folder / "a.png"), -1);
  tex_convert(folder, solid + "'#123456'" + no_gamma + "PNG24:@plain.png");
  EXPECT_EQ(color_of(folder / "./plain"), 0x123456);
}

class TmanTextures : public gl_fixture {
 protected:
  void SetUp() override {
    gl_fixture::SetUp();
    OGL_load_entry_points([](const char* name) -> void* { return SDL_GL_GetProcAddress(name); });
  }
};

TEST_F(TmanTextures, FilesBecomeTextures) {
  picture_folder folder;
  tex_convert(folder,
              "-seed 4 -size 32x16 plasma:red-blue" + std::string(no_gamma) + "PNG24:@p.png");
  tman.load_texture(tex_fail_fatal, ref, tex_full_size | tex_rgb, tex_load_now, folder / "p.png");
  EXPECT_EQ(texture_pixels(), tex_decoded(folder, "p.png", 32, 3, "rgb"));
  EXPECT_EQ(tman.record(ref).bytes, 32 * 16 * 3);
  // The same as DDS stays compressed where the driver takes it, and looks the same where not.
  tex_convert(folder, "@p.png -define dds:compression=dxt1 -define dds:mipmaps=5 @c.dds");
  const bytes want = tex_decoded(folder, "c.dds[0]", 32, 3, "rgb");
  ASSERT_TRUE(ren.s3tc) << "Mesa's software driver has it";
  for (const int s3tc : {1, 0}) {
    ren.s3tc = s3tc;
    tman.load_texture(tex_fail_fatal, ref, tex_full_size | tex_rgb, tex_load_now, folder / "c.png");
    const bytes seen = texture_pixels();
    EXPECT_LE(tex_distance(seen.data(), seen.size(), want), 3) << s3tc;
    EXPECT_EQ(tman.record(ref).format, s3tc ? TEX_dxt1 : TEX_rgb);
    EXPECT_EQ(tman.record(ref).bytes, s3tc ? 8 * 4 * 8 : 32 * 16 * 3);
  }
  tman.unload_texture(ref);
}
