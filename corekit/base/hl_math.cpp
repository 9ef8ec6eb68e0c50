// The tables are filled once, at start-up, and only read after that. rand_fraction belongs to the
// main thread, as rand() has one state.

#include "corekit/base/hl_math.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

#include "corekit/Platform/PLT_system.h"

float randrat[10000];
float lookup_sin[361];
float lookup_cos[361];

namespace {
constexpr double rand_scale = 4.656613e-10;  // 1 / 2^31, rounded down so that 1.0 never comes out
}

void hl_math_init() {
  std::srand(1);
  for (float& entry : randrat)
    entry = static_cast<float>(std::rand() * rand_scale * 0.9999);

  for (int degree = 0; degree <= 360; ++degree) {
    const double angle = degree * std::numbers::pi / 180.0;
    lookup_sin[degree] = static_cast<float>(std::sin(angle));
    lookup_cos[degree] = static_cast<float>(std::cos(angle));
  }

  const unsigned seed = static_cast<unsigned>(PLT_microseconds() & 0xFFFFFFFFu);
  std::srand(seed);
  for (unsigned draws = seed % 1000; draws > 0; --draws)
    std::rand();
}

float rand_fraction() {
  // The largest draw would round up to 1.0 as a float, so the scaling happens in double and the
  // result is held below one.
  const float fraction = static_cast<float>(std::rand() * rand_scale);
  return fraction < 1.0f ? fraction : 0.99999994f;
}
