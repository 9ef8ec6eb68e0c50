// The texture manager: references, what becomes of a picture, the bind cache, and its alerts.

#include <thread>

#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/OGL_extensions.h"
#include "corekit/draw/oglp_draw.h"
#include "tests/unit/gl_fixture.h"
#include "tests/unit/test_tex_util.h"

class Tman : public gl_fixture {};
class TmanDeathTest : public Tman {};

namespace {

constexpr int spare_ref = 500;
constexpr int scratch_flags = tex_full_size | tex_rgba;

// A picture in scratch_array, every byte `value`.
void scratch(int dx, int dy, int value) {
  scratch_dx = dx;
  scratch_dy = dy;
  std::fill_n(scratch_array, dx * dy * 4, static_cast<unsigned char>(value));
}

void load(int ref, int flags) {
  tman.load_texture(tex_fail_fatal, ref, flags, tex_load_now, "scratch_array:test");
}

GLint bound() {
  GLint id = 0;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &id);
  return id;
}

int textures() {
  int alive = 0;
  for (unsigned id = 1; id < 100; ++id)
    alive += glIsTexture(id);
  return alive;
}

}  // namespace

TEST_F(Tman, PictureBecomesATexture) {
  scratch(64, 20, 200);
  std::fill_n(scratch_array + 64 * 20 * 4, 64 * 20 * 4, static_cast<unsigned char>(99));
  load(spare_ref, scratch_flags);
  const ref_dat_struct& dat = tman.record(spare_ref);
  EXPECT_EQ(dat.dx, 64);
  EXPECT_EQ(dat.dy, 32);
  EXPECT_EQ(dat.scale_t, 20.0f / 32);
  EXPECT_EQ(dat.bytes, 64 * 32 * 4);
  tman.bind_ref(spare_ref, 0, 0);
  std::vector<unsigned char> back(64 * 32 * 4);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back.data());
  EXPECT_EQ(back[64 * 20 * 4 - 1], 200);
  EXPECT_EQ(back[64 * 20 * 4], 0) << "the margin above the picture is empty";
  EXPECT_EQ(back.back(), 0);
  // The same size and flags fill the same texture; others make a new one and delete the old.
  const unsigned first = dat.gl_id;
  const int textures_before = textures();
  scratch(64, 20, 100);
  load(spare_ref, scratch_flags);
  EXPECT_EQ(dat.gl_id, first);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back.data());
  EXPECT_EQ(back[0], 100);
  scratch(32, 20, 50);
  load(spare_ref, scratch_flags);
  tman.bind_ref(spare_ref, 0, 0);
  EXPECT_EQ(bound(), static_cast<GLint>(dat.gl_id));
  EXPECT_EQ(textures(), textures_before) << "the old one is deleted";
  tman.unload_texture(spare_ref);
  EXPECT_EQ(dat.name, "un-inited");
}

TEST_F(Tman, AFileBecomesATexture) {
  const picture_folder folder;
  tex_convert(folder,
              "-seed 4 -size 32x16 plasma:red-blue -define png:exclude-chunks=gAMA,cHRM,sRGB,date "
              "PNG24:@p.png");
  tman.load_texture(tex_fail_fatal, spare_ref, tex_full_size | tex_rgb, tex_load_now,
                    folder / "p.png");
  bytes back(32 * 16 * 3);
  tman.bind_ref(spare_ref, 0, 0);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, back.data());
  EXPECT_EQ(back, tex_decoded(folder, "p.png", 32, 3, "rgb"));
  for (const std::string name : {"q.png", "r.bmp"}) {
    tex_convert(folder, "-size 20x10 xc:red -type TrueColor @" + name);
    tman.load_texture(tex_fail_fatal, spare_ref, tex_full_size | tex_rgb, tex_load_now,
                      folder / name);
    EXPECT_EQ(scratch_dx, 32) << "a row of the texture";
    EXPECT_EQ(scratch_dy, 10) << "rows of the picture";
  }
  tman.load_texture(tex_fail_silent, spare_ref, tex_full_size | tex_rgb, tex_load_now, "missing");
  EXPECT_EQ(tman.record(spare_ref).scale_s, 1) << "the whole of what stands for it";
}

// What the driver is asked to keep.
TEST_F(Tman, PixelsAreKeptAsTheFlagsSay) {
  const std::pair<int, int> rows[] = {{tex_rgba | tex_eight_bit, GL_RGBA8},
                                      {tex_rgb | tex_eight_bit, GL_RGB8},
                                      {tex_alpha | tex_eight_bit, GL_ALPHA8},
                                      {tex_rgba | tex_sixteen_bit, GL_RGBA16F_ARB},
                                      {tex_rgba, GL_RGBA}};
  for (const auto& [flags, asked] : rows) {
    scratch(16, 16, 200);
    load(spare_ref, (scratch_flags & ~tex_rgba) | flags);
    tman.bind_ref(spare_ref, 0, 0);
    GLint kept = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &kept);
    EXPECT_EQ(kept, asked) << flags;
    tman.unload_texture(spare_ref);
  }
}

// The smaller levels are means of the picture, whoever makes them.
TEST_F(Tman, SmallerLevelsAreTheDriversOrOurOwn) {
  for (const auto& [option, is_drivers] : {std::pair{"", 1}, {"--no_hw_mipmap", 0}}) {
    SCOPED_TRACE(option);
    cmdline = UTL_cmdline();
    if (*option) cmdline.init_win(option);
    new_driver();
    scratch(8, 2, 0);
    for (int i = 0; i < 8 * 2; ++i)
      std::fill_n(scratch_array + i * 4, 4, static_cast<unsigned char>(i % 8 < 4 ? 100 : 200));
    load(spare_ref, scratch_flags | tex_mipmaps);
    tman.bind_ref(spare_ref, 0, 0);
    GLint by_driver = -1;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, &by_driver);
    EXPECT_EQ(by_driver, is_drivers);
    const std::vector<std::vector<int>> levels = {{100, 100, 200, 200}, {100, 200}, {150}};
    for (size_t level = 0; level < levels.size(); ++level) {
      unsigned char back[8 * 2 * 4] = {};
      glGetTexImage(GL_TEXTURE_2D, static_cast<GLint>(level) + 1, GL_RGBA, GL_UNSIGNED_BYTE, back);
      for (size_t i = 0; i < levels[level].size(); ++i)
        EXPECT_NEAR(back[i * 4], levels[level][i], is_drivers) << level << ' ' << i;
    }
    tman.unload_texture(spare_ref);
  }
  cmdline = UTL_cmdline();
}

TEST_F(Tman, BindCacheNeverNamesADeletedTexture) {
  scratch(8, 8, 255);
  load(spare_ref, scratch_flags);
  for (const int unit : {0, 1}) {
    tman.bind_ref(spare_ref, unit, 0);
    tman.unload_texture(spare_ref);
    scratch(16, 16, 255);
    load(spare_ref, scratch_flags);  // may get the same OpenGL name
    tman.bind_ref(spare_ref, unit, 0);
    OGL_active_unit(unit);
    EXPECT_EQ(bound(), static_cast<GLint>(tman.record(spare_ref).gl_id)) << unit;
    OGL_active_unit(0);
  }
  // Even if OpenGL gives that very name out again, to another unit than the loader binds to.
  tman.bind_ref(spare_ref, 1, 0);
  const unsigned name = tman.record(spare_ref).gl_id;
  tman.unload_texture(spare_ref);
  TEX_bind_ref(name, 1, 0);
  OGL_active_unit(1);
  EXPECT_EQ(bound(), static_cast<GLint>(name));
  OGL_active_unit(0);
  load(spare_ref, scratch_flags);
  tman.bind_ref(spare_ref, 0, 0);
  // The cache does not look, until it is told that something else has bound.
  glBindTexture(GL_TEXTURE_2D, 0);
  tman.bind_ref(spare_ref, 0, 0);
  EXPECT_EQ(bound(), 0);
  tman.reset_bind();
  tman.bind_ref(spare_ref, 0, 0);
  EXPECT_NE(bound(), 0);
}

TEST_F(Tman, MissingPicturesDrawGray) {
  const auto miss = [](tex_fail_mode mode) {
    tman.load_texture(mode, spare_ref, scratch_flags, tex_load_now, "missing.png");
  };
  miss(tex_fail_silent);
  clear();
  OGL_2dquad_d(spare_ref, 49, 1, 10, 10, 0, 0, 10, 10, 1, 1, 5);
  EXPECT_TRUE(pixel_is(15, 15, 128, 128, 128));
  EXPECT_EQ(tman.record(spare_ref).bytes, 0);
  tman.unload_texture(spare_ref);
  EXPECT_TRUE(glIsTexture(tman.record(t_blank_gray).gl_id));
  scratch(8, 8, 99);
  load(spare_ref, scratch_flags);
  const int alive = textures();
  miss(tex_fail_silent);
  EXPECT_EQ(textures(), alive - 1) << "what was there is given back";
  tman.unload_texture(spare_ref);
  // One that waits for its load shows the blank as well.
  tman.load_texture(tex_fail_fatal, spare_ref, scratch_flags, tex_load_scenery, "later.png");
  EXPECT_EQ(tman.record(spare_ref).load_time, tex_load_scenery);
  EXPECT_EQ(tman.record(spare_ref).format, 0);
  tman.bind_ref(spare_ref, 0, 0);
  EXPECT_EQ(bound(), static_cast<GLint>(tman.record(t_blank_gray).gl_id));
}

// What no caller may ask for, and a picture that the program cannot do without.
TEST_F(TmanDeathTest, MistakesEndTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // the driver has threads
  const auto ask = [](int ref, int flags, int when = tex_load_now, const char* name = "gone.png") {
    tman.load_texture(tex_fail_fatal, ref, flags, static_cast<tex_load_time>(when), name);
  };
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"an invalid texture load_time!", [&] { ask(spare_ref, scratch_flags, tex_load_none + 1); }},
      {"an invalid texture load_time!", [&] { ask(spare_ref, scratch_flags, tex_load_now - 1); }},
      {"too low or high a manual_ref!", [&] { ask(-1, scratch_flags); }},
      {"too low or high a manual_ref!", [&] { ask(1 << 20, scratch_flags); }},
      {"an invalid filter type!", [&] { ask(spare_ref, tex_flags_end); }},
      {"an invalid filter type!", [&] { ask(spare_ref, -1); }},
      {"BAD color enum for tman", [&] { ask(spare_ref, tex_full_size); }},
      {"BAD color enum for tman", [&] { ask(spare_ref, tex_depth + 1); }},
      {"a texture that you do not have!", [&] { ask(spare_ref, scratch_flags); }},
      {"release a manual texture", [] { tman.release_texture(spare_ref); }},
  };
  for (const auto& [text, mistake] : rows) {
    SCOPED_TRACE(text);
    EXPECT_EXIT(
        {
          ogl_inited = 0;  // so that the alert is written, not drawn
          mistake();
        },
        testing::ExitedWithCode(1), text);
  }
}

// A map of depths is compared with, not mixed.
TEST_F(Tman, DepthsAreCompared) {
  scratch(16, 16, 200);
  load(spare_ref, tex_full_size | tex_depth);
  tman.bind_ref(spare_ref, 0, 0);
  const std::pair<GLenum, GLint> rows[] = {
      {GL_TEXTURE_MIN_FILTER, GL_NEAREST},
      {GL_TEXTURE_MAG_FILTER, GL_NEAREST},
      {GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE},
  };
  for (const auto& [name, value] : rows) {
    GLint is = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, name, &is);
    EXPECT_EQ(is, value) << name;
  }
}

// One by one by a worker; what is wanted at once has the worker end first, and the rest comes
// whole.
TEST_F(Tman, SceneryIsLoadedInTheBackground) {
  struct finisher_class : tman_force_finish_obj {
    std::thread worker;
    int times = 0;
    void force_finish() override {
      ++times;
      worker.join();
      tman.load_scenery_async_finalize();
    }
  } finisher;
  const picture_folder folder;
  constexpr int first = spare_ref, count = 4;
  for (int i = 0; i < count; ++i) {
    const std::string name = std::to_string(i) + ".png";
    tex_convert(folder, "-size 8x8 xc:red PNG24:@" + name);
    tman.load_texture(tex_fail_fatal, first + i, scratch_flags, tex_load_scenery, folder / name);
  }
  const auto start = [&finisher] {
    EXPECT_EQ(tman.load_scenery_async_register(&finisher), 1);
    finisher.worker = std::thread([] { tman.load_scenery_async_work(); });
  };
  const auto loaded = [](int ref) { return tman.record(ref).load_time == tex_load_now; };
  start();
  EXPECT_EQ(tman.load_scenery_async_register(&finisher), 0) << "one at a time";
  finisher.worker.join();
  EXPECT_FALSE(loaded(first)) << "the main thread's half is missing";
  tman.load_scenery_async_finalize();
  EXPECT_TRUE(loaded(first));
  EXPECT_EQ(tman.num_remaining_async_texes(), count - 1);
  start();
  tman.force_load_tex(first + 3);
  EXPECT_EQ(finisher.times, 1);
  EXPECT_TRUE(loaded(first + 1) && !loaded(first + 2) && loaded(first + 3));
  tman.load_all_scenery_texes();
  EXPECT_EQ(tman.num_remaining_async_texes(), 0);
  EXPECT_EQ(tman.load_scenery_async_register(&finisher), 0) << "nothing waits";
  for (int i = 0; i < count; ++i) {
    clear();
    OGL_2dquad_d(first + i, 49, 1, 10, 10, 0, 0, 10, 10, 1, 1, 5);
    EXPECT_TRUE(pixel_is(15, 15, 255, 0, 0)) << i;
  }
  constexpr int unread = first + count;
  tman.load_texture(tex_fail_silent, unread, scratch_flags, tex_load_scenery, folder / "0.png");
  EXPECT_EQ(tman.load_scenery_async_register(nullptr), 1);
  tman.load_scenery_async_finalize();
  EXPECT_EQ(tman.record(unread).gl_id, tman.record(t_blank_gray).gl_id) << "not the last one read";
}

// By name: one record for all users. It goes when the last has let go and the unused are purged.
TEST_F(Tman, UsersOfAPictureAreCounted) {
  const picture_folder folder;
  for (const char* name : {"a.png", "b.png", "c.png", "d.png"})
    tex_convert(folder, std::string("-size 8x8 xc:red PNG24:@") + name);
  const auto use = [&folder](const char* name, tex_load_time when = tex_load_now) {
    return tman.load_texture(tex_fail_fatal, 0, scratch_flags, when, folder / name);
  };
  const int total = tman.total_texes(), loaded = tman.loaded_texes(), vram = tman.tot_vram();
  const int a = use("a.png"), b = use("b.png"), later = use("c.png", tex_load_scenery);
  EXPECT_EQ(use("a.png"), a);
  EXPECT_NE(a, b);
  EXPECT_NE(later, b);
  EXPECT_EQ(tman.total_texes(), total + 3);
  EXPECT_EQ(tman.loaded_texes(), loaded + 2);
  EXPECT_EQ(tman.tot_vram(), vram + 2 * 8 * 8 * 4);
  tman.release_texture(a);
  tman.purge_unused_texes();
  EXPECT_EQ(tman.record(a).name, folder / "a.png") << "one user is left";
  tman.release_texture(a);
  EXPECT_EQ(tman.loaded_texes(), loaded + 2) << "it stays for one who comes back";
  tman.purge_unused_texes();
  EXPECT_EQ(tman.loaded_texes(), loaded + 1);
  EXPECT_EQ(use("d.png"), a) << "the record is free";
  EXPECT_EQ(use("b.png"), b);
  EXPECT_EQ(use("c.png"), later) << "which has waited, and is now wanted";
  EXPECT_EQ(tman.record(later).load_time, tex_load_now);
  for (const int ref : {a, b, b, later, later})
    tman.release_texture(ref);
  tman.purge_unused_texes();
  EXPECT_EQ(tman.loaded_texes(), loaded);
  EXPECT_EQ(tman.tot_vram(), vram);
  EXPECT_EQ(tman.load_texture(tex_fail_fatal, spare_ref, 0, tex_load_now, ""), 0);
}

TEST_F(Tman, LoadsAreToldOfOnceASecond) {
  static std::string told;
  tman_announce = [](const std::string& text) { told += text; };
  xtim.now_sec = 1000;
  for (const auto& [at, name] :
       {std::pair{0.0, "a"}, {0.9, "b"}, {1.0, "c"}, {1.5, "scratch_array:d"}}) {
    xtim.now_sec = 1000 + at;
    tman.load_texture(tex_fail_silent, spare_ref, scratch_flags, tex_load_now, name);
  }
  xtim.now_sec = 2000;
  tman.load_texture(tex_fail_silent, t_back_tile + 15, scratch_flags, tex_load_now, "e");
  tman.load_texture(tex_fail_silent, 312, scratch_flags, tex_load_now, "g");
  tman.load_texture(tex_fail_silent, spare_ref, scratch_flags, tex_load_scenery, "f");
  EXPECT_EQ(told, "Loading bitmap a.Loading bitmap c.");
  xtim = xtim_class();
}

// Blocks go to the driver as they are where they may, and look the same where they are decoded.
TEST_F(Tman, CompressedPicturesLookTheSameEitherWay) {
  const picture_folder folder;
  const std::string dds = " -define dds:compression=", none = " -define dds:mipmaps=0 @";
  tex_convert(folder, "-seed 4 -size 32x16 plasma:red-blue PNG24:@p.png");
  tex_convert(folder, "@p.png" + dds + "dxt1" + none + "one.dds");
  tex_convert(folder, "@p.png" + dds + "dxt1 -define dds:mipmaps=5 @levels.dds");
  tex_convert(folder, "@p.png -alpha on" + dds + "dxt5" + none + "five.dds");
  tex_convert(folder, "@p.png -crop 32x14+0+0" + dds + "dxt1" + none + "odd.dds");
  tex_convert(folder, "@p.png" + dds + "none" + none + "plain.dds");
  const std::tuple<const char*, int, int> rows[] = {
      {"one.dds", tex_rgb, 1},   {"one.dds", tex_rgba, 1},
      {"one.dds", tex_alpha, 0}, {"one.dds", tex_rgb | tex_mipmaps, 0},
      {"five.dds", tex_rgba, 1}, {"five.dds", tex_rgb, 0},
      {"odd.dds", tex_rgb, 0},   {"levels.dds", tex_rgb | tex_mipmaps, 1},
      {"plain.dds", tex_rgb, 0},
  };
  const int by_driver = glExt.s3tc_avail;
  ASSERT_EQ(by_driver, 1);
  for (const auto& [file, flags, stays] : rows) {
    SCOPED_TRACE(file + std::string(" ") + std::to_string(flags));
    bytes seen[2];
    for (const int may : {0, 1}) {
      glExt.s3tc_avail = may;
      tman.load_texture(tex_fail_fatal, spare_ref, tex_full_size | flags, tex_load_now,
                        folder / file);
      tman.bind_ref(spare_ref, 0, 0);
      GLint compressed = -1;
      glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_COMPRESSED, &compressed);
      EXPECT_EQ(compressed, may && stays);
      seen[may].resize(32 * 16 * 4);
      glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, seen[may].data());
      GLint smallest = 0;
      glGetTexLevelParameteriv(GL_TEXTURE_2D, 5, GL_TEXTURE_WIDTH, &smallest);
      EXPECT_EQ(smallest, flags & tex_mipmaps ? 1 : 0);
      tman.unload_texture(spare_ref);
    }
    EXPECT_LE(tex_distance(seen[0].data(), seen[0].size(), seen[1]), 3);
  }
  glExt.s3tc_avail = by_driver;
}
