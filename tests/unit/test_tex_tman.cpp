// The texture manager's way from a file to a texture, at once and in the background; pictures of
// the screen.

#include <SDL.h>

#include <cstring>
#include <thread>

#include "corekit/GenC/hl_init.h"
#include "corekit/OOPS_cpp/oglp.h"
#include "corekit/OOPS_cpp/oglp_draw.h"
#include "corekit/OOPS_cpp/tman.h"
#include "corekit/OOPS_cpp/tman_load.h"
#include "corekit/UTL/UTL_cmdline.h"
#include "tests/unit/gl_fixture.h"
#include "tests/unit/test_tex_util.h"

namespace {

constexpr int ref = 500;

int load(const std::string& name, int flags, tex_load_vars& vars) {
  return load_any_into_scratch(name, flags, vars);
}

// The colour that fills the picture, as RRGGBB; -1 for no picture.
int color_of(const std::string& name) {
  tex_load_vars vars{0, ref, 0, name};
  if (!load(name, tex_full_size | tex_rgb, vars)) return -1;
  return scratch_array[0] << 16 | scratch_array[1] << 8 | scratch_array[2];
}

bytes texture_pixels(int channels) {
  const ref_dat_struct& dat = tman.record(ref);
  bytes pixels(static_cast<size_t>(dat.dx * dat.dy) * channels);
  tman.bind_ref(ref, 0, 0);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glGetTexImage(GL_TEXTURE_2D, 0, channels == 4 ? GL_RGBA : GL_RGB, GL_UNSIGNED_BYTE,
                pixels.data());
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
  folder.put("a.dds", "DDS that is none");
  EXPECT_EQ(color_of(folder / "a.bmp"), 0x00FF00) << "one that cannot be read is passed over";
  std::remove((folder / "a.png").c_str());
  EXPECT_EQ(color_of(folder / "a.png"), 0x0000FF);
  std::remove((folder / "a.bmp").c_str());
  EXPECT_EQ(color_of(folder / "a.png"), -1);
  // A dot of a folder is no extension.
  tex_convert(folder, solid + "'#123456'" + no_gamma + "PNG24:@plain.png");
  EXPECT_EQ(color_of(folder / "../" +
                     folder.path().substr(folder.path().rfind('/', folder.path().size() - 2) + 1) +
                     "plain"),
            0x123456);
}

TEST(TmanFiles, PicturesAreReducedAndLaidOut) {
  picture_folder folder;
  tex_convert(folder, "-seed 4 -size 40x12 plasma:" + std::string(no_gamma) + "PNG24:@p.png");
  const bytes whole = tex_decoded(folder, "p.png", 40, 3, "rgb");
  const struct {
    const char* label;
    int res, flags, step, dx, dy;
  } rows[] = {
      {"full size", 5, tex_rgb, 1, 64, 16}, {"half", 4, tex_rgb, 2, 32, 8},
      {"quarter", 3, tex_rgb, 4, 16, 4},    {"exact", 4, tex_rgb | tex_exact_size, 2, 20, 6},
      {"least", 0, tex_rgb, 12, 4, 1},      {"whatever", 0, tex_rgb | tex_full_size, 1, 64, 16}};
  const ren_record before = ren;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    ren.tex_res = row.res;
    std::memset(scratch_array, 99, 64 * 16 * 3);
    tex_load_vars vars{0, ref, row.flags, "p"};
    ASSERT_EQ(load(folder / "p.png", row.flags, vars), 1);
    EXPECT_EQ(vars.dx, row.dx);
    EXPECT_EQ(vars.dy, row.dy);
    const int dx = 40 / row.step, dy = 12 / row.step;
    EXPECT_FLOAT_EQ(vars.scale_s, float(dx) / float(row.dx));
    EXPECT_FLOAT_EQ(vars.scale_t, float(dy) / float(row.dy));
    TEX_image_desc desc{TEX_rgb, 40, 12, 0, 0};
    bytes want = whole;
    TEX_downscale(desc, want.data(), row.step, row.step);
    for (int y = 0; y < row.dy; ++y) {
      for (int x = 0; x < row.dx; ++x) {
        for (int i = 0; i < 3; ++i) {
          const int expected = x < dx && y < dy ? want[(dx * y + x) * 3 + i] : 0;
          ASSERT_EQ(scratch_array[(row.dx * y + x) * 3 + i], expected) << x << " " << y;
        }
      }
    }
  }
  ren = before;

  // A keyed picture loses the key colour to transparency.
  tex_convert(folder, "-size 4x4 xc:'#ff00ff' -fill '#ff40ff' -draw 'point 0,0'" +
                          std::string(no_gamma) + "PNG24:@key.png");
  tex_load_vars vars{0, ref, 0, "key"};
  ASSERT_EQ(load(folder / "key.png", tex_rgb_keyed | tex_full_size, vars), 1);
  EXPECT_EQ(vars.format, TEX_rgba);
  EXPECT_EQ(scratch_array[3], 0);
  EXPECT_EQ(scratch_array[12 * 4 + 3], 255) << "the other colour";
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
  EXPECT_EQ(texture_pixels(3), tex_decoded(folder, "p.png", 32, 3, "rgb"));
  EXPECT_EQ(tman.record(ref).bytes, 32 * 16 * 3);

  // The same as DDS stays compressed where the driver takes it, and looks the same where not.
  tex_convert(folder, "@p.png -define dds:compression=dxt1 -define dds:mipmaps=5 @c.dds");
  const bytes want = tex_decoded(folder, "c.dds[0]", 32, 3, "rgb");
  ASSERT_TRUE(ren.s3tc) << "Mesa's software driver has it";
  for (const int s3tc : {1, 0}) {
    for (const int flags : {int{tex_rgb}, tex_rgb | tex_mipmaps, int{tex_rgba}}) {
      ren.s3tc = s3tc;
      tman.load_texture(tex_fail_fatal, ref, tex_full_size | flags, tex_load_now, folder / "c.png");
      const ref_dat_struct& dat = tman.record(ref);
      const bytes seen = texture_pixels(3);
      EXPECT_LE(tex_distance(seen.data(), seen.size(), want), 3) << s3tc << " " << flags;
      const bool alpha = (flags & tex_color_mask) == tex_rgba;
      EXPECT_EQ(dat.format, !s3tc   ? (alpha ? TEX_rgba : TEX_rgb)
                            : alpha ? TEX_dxt1_alpha
                                    : TEX_dxt1);
      const int top = s3tc ? 8 * 4 * 8 : 32 * 16 * (alpha ? 4 : 3);
      EXPECT_EQ(dat.bytes, flags & tex_mipmaps ? int(top * 1.33) : top);
      GLint width = 0;
      glGetTexLevelParameteriv(GL_TEXTURE_2D, 5, GL_TEXTURE_WIDTH, &width);
      EXPECT_EQ(width, flags & tex_mipmaps ? 1 : 0);
    }
  }
  tman.unload_texture(ref);
}

TEST_F(TmanTextures, BackgroundLoads) {
  picture_folder folder;
  for (const char* name : {"a", "b", "c"}) {
    tex_convert(folder,
                "-size 8x8 xc:'#804020'" + std::string(no_gamma) + "PNG24:@" + name + ".png");
  }
  const auto later = [&folder](const char* name, tex_fail_mode mode = tex_fail_fatal) {
    return tman.load_texture(mode, 0, tex_full_size | tex_rgb, tex_load_scenery,
                             folder / (name + std::string(".png")));
  };
  struct finisher : tman_force_finish_obj {
    std::thread worker;
    int finished = 0;
    void run() {
      worker = std::thread([] { tman.load_scenery_async_work(); });
    }
    void force_finish() override {
      ++finished;
      worker.join();
      tman.load_scenery_async_finalize();
    }
  } job;
  EXPECT_EQ(tman.load_scenery_async_register(&job), 0) << "nothing waits";
  const int a = later("a"), b = later("b"), c = later("c"), none = later("none", tex_fail_scene);
  EXPECT_EQ(tman.num_remaining_async_texes(), 4);

  // In turn.
  ASSERT_EQ(tman.load_scenery_async_register(&job), 1);
  EXPECT_EQ(tman.load_scenery_async_register(&job), 0) << "one at a time";
  job.run();
  job.worker.join();
  EXPECT_EQ(tman.record(a).load_time, tex_load_scenery) << "before the OpenGL half";
  tman.load_scenery_async_finalize();
  EXPECT_EQ(tman.record(a).load_time, tex_load_now);
  EXPECT_EQ(tman.record(a).dx, 8);
  EXPECT_EQ(tman.num_remaining_async_texes(), 3);

  // A load that cannot wait ends the job first; also when it is the job's own texture.
  ASSERT_EQ(tman.load_scenery_async_register(&job), 1);
  job.run();
  tman.load_texture(tex_fail_fatal, ref, tex_full_size | tex_rgb, tex_load_now, folder / "a.png");
  EXPECT_EQ(job.finished, 1);
  EXPECT_EQ(tman.record(b).load_time, tex_load_now);
  EXPECT_EQ(texture_pixels(3)[0], 0x80);
  ASSERT_EQ(tman.load_scenery_async_register(&job), 1);
  job.run();
  tman.force_load_tex(c);
  EXPECT_EQ(job.finished, 2);
  EXPECT_EQ(tman.record(c).load_time, tex_load_now);

  // A record that is freed meanwhile stays free.
  const int d = later("a");
  EXPECT_EQ(d, a) << "loaded already, so shared";
  ASSERT_EQ(tman.load_scenery_async_register(&job), 1);
  job.run();
  job.worker.join();
  tman.release_texture(none);
  tman.purge_unused_texes();
  tman.load_scenery_async_finalize();
  EXPECT_EQ(tman.record(none).name, "un-inited");
  EXPECT_EQ(tman.has_scene_load_fail(), 0);

  // All at once.
  tman.reset_scene_load_fail();
  const int e = later("none", tex_fail_scene);
  tman.load_all_scenery_texes();
  EXPECT_EQ(tman.num_remaining_async_texes(), 0);
  EXPECT_EQ(tman.record(e).load_time, tex_load_now);
  EXPECT_EQ(tman.has_scene_load_fail(), 1);
  tman.reset_scene_load_fail();
  tman.force_load_tex(777);  // free: nothing to load
  EXPECT_EQ(tman.record(777).load_time, tex_load_none);
}

TEST_F(TmanTextures, ScreenshotsAreNumbered) {
  picture_folder folder;
  char before[4096];
  ASSERT_TRUE(getcwd(before, sizeof before));
  ASSERT_EQ(chdir(folder.path().c_str()), 0);
  folder.put("screenshot_2.png", "the user's");
  glDrawBuffer(GL_FRONT);
  glClearColor(0, 1, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  OGL_fillrect(49, 1, 0, 0, 800, 10);
  glDrawBuffer(GL_BACK);
  OGL_screenshot(1);
  OGL_screenshot(1);
  ASSERT_EQ(chdir(before), 0);
  EXPECT_TRUE(tex_is_there(folder / "screenshot_1.png"));
  EXPECT_TRUE(tex_is_there(folder / "screenshot_3.png"));
  EXPECT_EQ(tex_file(folder / "screenshot_2.png").size(), 10u);
  const bytes shot = tex_decoded(folder, "screenshot_3.png", 800, 3, "rgb");
  ASSERT_EQ(shot.size(), 800u * 600 * 3);
  const auto at = [&shot](int x, int y) {
    return bytes(&shot[(y * 800 + x) * 3], &shot[(y * 800 + x) * 3] + 3);
  };
  EXPECT_EQ(at(5, 5), (bytes{255, 255, 255})) << "the lowest row comes out lowest";
  EXPECT_EQ(at(5, 595), (bytes{0, 255, 0}));
}
