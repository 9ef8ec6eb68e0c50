// The world map: the same plate carree map twice, 504 by 252 each, one unit to 5/7 of a degree and
// 14 to a sector of the scenery grid. The lower half is plain, the upper has its land highlighted,
// and a breath of green over its sea: a sector of islands too small for this map shows
// whether it is taken. Grid and frame are the same in both.
//
// 1. read the land of a TopoJSON file: arcs of quantised steps, rings made of arcs;
// 2. unwrap each ring's longitudes; close one that goes round the world at the south pole;
// 3. scan all rings, at -360, 0 and +360 degrees, even-odd, at 16 times the size; reduce
// to coverage;
// 4. paint sea with a shallow edge, land, grid.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

#include <nlohmann/json.hpp>

#include "art/art.h"

static const int map_dx = 504, map_dy = 252, sector = 14;
static const int fine = 16;  // samples a unit, each way

using ring = std::vector<art_point>;  // degrees: x longitude, y latitude

// --- land ---------------------------------------------------------------------------------------
static std::vector<ring> decode_arcs(const nlohmann::json& topology) {
  const auto& scale = topology.at("transform").at("scale");
  const auto& translate = topology.at("transform").at("translate");
  const double sx = scale.at(0), sy = scale.at(1), tx = translate.at(0), ty = translate.at(1);
  std::vector<ring> arcs;
  for (const auto& steps : topology.at("arcs")) {
    ring& arc = arcs.emplace_back();
    long x = 0, y = 0;
    for (const auto& step : steps) {
      x += step.at(0).get<long>();
      y += step.at(1).get<long>();
      arc.push_back({float(double(x) * sx + tx), float(double(y) * sy + ty)});
    }
  }
  return arcs;
}

// An arc number below 0 is the complement of the arc to follow backward. Neighbours share an end.
static ring join_arcs(const nlohmann::json& numbers, const std::vector<ring>& arcs) {
  ring out;
  for (const auto& entry : numbers) {
    const long number = entry.get<long>();
    ring arc = arcs.at(size_t(number < 0 ? ~number : number));
    if (number < 0) std::reverse(arc.begin(), arc.end());
    if (!out.empty()) out.pop_back();
    out.insert(out.end(), arc.begin(), arc.end());
  }
  return out;
}

static void unwrap_ring(ring& points) {
  float turn = 0;
  for (size_t i = 1; i < points.size(); ++i) {
    const float x = points[i].x + turn;
    if (x - points[i - 1].x > 180)
      turn -= 360;
    else if (x - points[i - 1].x < -180)
      turn += 360;
    points[i].x += turn;
  }
  if (std::abs(points.back().x - points.front().x) > 180) {
    const float last = points.back().x, first = points.front().x;
    points.push_back({last, -90});
    points.push_back({first, -90});
  }
}

static std::vector<ring> read_land(const std::string& path) {
  std::vector<ring> rings;
  std::ifstream file(path);
  if (!file) {
    fprintf(stderr, "cannot open %s\n", path.c_str());
    return rings;
  }
  try {
    const nlohmann::json topology = nlohmann::json::parse(file);
    const std::vector<ring> arcs = decode_arcs(topology);
    for (const auto& geometry : topology.at("objects").at("land").at("geometries"))
      for (const auto& polygon : geometry.at("arcs"))
        for (const auto& numbers : polygon) {
          rings.push_back(join_arcs(numbers, arcs));
          unwrap_ring(rings.back());
        }
  } catch (const nlohmann::json::exception& error) {
    fprintf(stderr, "%s: %s\n", path.c_str(), error.what());
    rings.clear();
  } catch (const std::out_of_range&) {
    fprintf(stderr, "%s: a ring names an arc that is not there\n", path.c_str());
    rings.clear();
  }
  return rings;
}

// A picture of one number a pixel, row 0 the southernmost.
struct field {
  field(int width, int height) : dx(width), dy(height), values(size_t(dx) * size_t(dy)) {}
  float& at(int u, int v) { return values[size_t(v) * size_t(dx) + size_t(u)]; }
  int dx, dy;
  std::vector<float> values;
};

// Share of land in every pixel.
static field land_coverage(const std::vector<ring>& rings, int scale) {
  const int rows = map_dy * fine, columns = map_dx * fine, samples = fine / scale;
  std::vector<std::vector<float>> crossings(rows);
  for (const ring& points : rings)
    for (size_t i = 0; i < points.size(); ++i) {
      art_point a = points[i], b = points[(i + 1) % points.size()];
      if (a.y > b.y) std::swap(a, b);
      const float low = (a.y + 90) / 180 * float(rows), high = (b.y + 90) / 180 * float(rows);
      // A sample row's centre counts in [low, high), so that a vertex is crossed once.
      const int first = std::max(0, int(std::ceil(low - 0.5f)));
      const int last = std::min(rows, int(std::ceil(high - 0.5f)));
      for (int row = first; row < last; ++row) {
        const float t = (float(row) + 0.5f - low) / (high - low);
        const float x = (a.x + (b.x - a.x) * t + 180) / 360 * float(columns);
        for (const int turn : {-columns, 0, columns})
          crossings[row].push_back(x + float(turn));
      }
    }

  field coverage(map_dx * scale, map_dy * scale);
  for (int row = 0; row < rows; ++row) {
    std::vector<float>& xs = crossings[row];
    std::sort(xs.begin(), xs.end());
    for (size_t i = 0; i + 1 < xs.size(); i += 2) {
      const int first = std::max(0, int(std::ceil(xs[i] - 0.5f)));
      const int last = std::min(columns, int(std::ceil(xs[i + 1] - 0.5f)));
      for (int column = first; column < last; ++column)
        coverage.at(column / samples, row / samples) += 1.0f / float(samples * samples);
    }
  }
  return coverage;
}

// The coverage blurred over a few units, round the world: how near the land is.
static field nearness(const field& coverage, int scale) {
  field from = coverage, to = coverage;
  const int reach = 2 * scale;
  for (int pass = 0; pass < 4; ++pass) {
    const bool along = pass % 2 == 0;
    for (int v = 0; v < from.dy; ++v)
      for (int u = 0; u < from.dx; ++u) {
        float sum = 0;
        for (int step = -reach; step <= reach; ++step) {
          const int nu = along ? (u + step + from.dx) % from.dx : u;
          const int nv = along ? v : std::clamp(v + step, 0, from.dy - 1);
          sum += from.at(nu, nv);
        }
        to.at(u, v) = sum / float(2 * reach + 1);
      }
    std::swap(from, to);
  }
  return from;
}

// --- painting -----------------------------------------------------------------------------------
bool art_map(const std::string& land_path, art_canvas& map) {
  const std::vector<ring> rings = read_land(land_path);
  if (rings.empty()) {
    fprintf(stderr, "no land in %s\n", land_path.c_str());
    return false;
  }
  field land = land_coverage(rings, map.scale), near = nearness(land, map.scale);
  // Plain land is dark: highlighted by half, as land that can be had is, it is three times as
  // bright.
  const art_colour deep = art_rgb(176, 201, 224), shallow = art_rgb(206, 225, 240);
  const art_colour lands[2][2] = {{art_rgb(58, 64, 70), art_rgb(70, 76, 82)},
                                  {art_rgb(200, 242, 156), art_rgb(216, 252, 176)}};

  for (int half = 0; half < 2; ++half)
    for (int v = 0; v < land.dy; ++v)
      for (int u = 0; u < land.dx; ++u) {
        art_colour pixel = art_mix(deep, shallow, near.at(u, v) * 2.2f);
        if (half == 1) pixel = art_mix(pixel, art_rgb(104, 160, 150), 0.5f);
        // Land is a little lighter away from its coast, which reads as relief.
        const art_colour ground =
            art_mix(lands[half][0], lands[half][1], near.at(u, v) * near.at(u, v));
        pixel = art_mix(pixel, ground, land.at(u, v));
        // Sectors meet in the grid's lines; every third, and the outer frame, is stronger.
        const int x = u / map.scale, y = v / map.scale;
        const bool grid = x % sector == 0 || y % sector == 0;
        const bool strong = x % (3 * sector) == 0 || y % (3 * sector) == 0;
        const bool frame = x == 0 || y == 0 || x == map_dx - 1 || y == map_dy - 1;
        if (frame)
          pixel = art_mix(pixel, art_rgb(70, 96, 124), 0.65f);
        else if (grid)
          pixel = art_mix(pixel, art_white, strong ? 0.45f : 0.22f);
        pixel.a = 1;
        map.at(u, v + half * land.dy) = pixel;
      }
  return true;
}
