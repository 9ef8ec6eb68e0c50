// The pixel buffers, and the rule for texture sizes.
//
// Main thread, or the background load (see the header). Writes nothing but what it is given.

#include "corekit/TEX/TEX_utils.h"

#include <algorithm>
#include <bit>

#include "corekit/GenC/hl_alert.h"
#include "corekit/GenC/hl_mnw.h"
#include "corekit/GenH/hl_string.h"
#include "corekit/OOPS_cpp/oglp.h"
#include "corekit/OOPS_cpp/tman.h"

alignas(16) unsigned char scratch_array[scratch_bytes];
alignas(16) unsigned char scratch_array_temp[scratch_bytes];
int scratch_dx = 0;
int scratch_dy = 0;

int check_dxy(const std::string& name, int dx, int dy) {
  constexpr int pixels = scratch_bytes / 4;
  if (dx >= 1 && dy >= 1 && dx <= pixels && dy <= pixels / dx) return 1;
  __MACIBM_alert(mnw.win_id, "This picture has a size that cannot be used:", name,
                 str_format("%d by %d", dx, dy), "", t_exit, "TEX/TEX_utils", 61);
  return 0;
}

float TEX_scale_of_setting(int tex_res) {
  return 1.0f / static_cast<float>(1 << (5 - std::clamp(tex_res, 0, 5)));
}

float TEX_get_scale(int flags, int dx, int dy, int* out_dx, int* out_dy, int mode) {
  float scale = TEX_scale_of_setting(ren.tex_res);
  if (flags & tex_double_scale) scale = std::min(scale * 2.0f, 1.0f);
  if (flags & tex_halve_scale) scale *= 0.5f;
  if ((flags & tex_full_size) || mode == 1) scale = 1.0f;

  // No side may vanish, and none may be more than the driver takes.
  scale = std::max(scale, 1.0f / static_cast<float>(std::min(dx, dy)));
  const auto scaled = [&scale](int side) {
    return std::max(1, static_cast<int>(static_cast<float>(side) * scale));
  };
  while (std::max(scaled(dx), scaled(dy)) > std::max(ren.max_texture_size, 1))
    scale *= 0.5f;

  const auto sized = [flags](int side) {
    if (flags & tex_exact_size) return side;
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(side)));
  };
  *out_dx = sized(scaled(dx));
  *out_dy = sized(scaled(dy));
  return scale;
}
