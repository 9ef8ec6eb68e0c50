// What the archive tests share; see test_archive_util.h.

#include "tests/unit/test_archive_util.h"

#include <zlib.h>

#include <cstdio>

std::string file_text(const std::string& path) {
  return is_there(path) ? content_of(path) : "(no file)";
}

void write_text(const std::string& path, const std::string& text) {
  unlink(path.c_str());  // some file systems wait for the disk when a file is written over
  overwrite(path, text);
}

struct stat file_stat(const std::string& path) {
  struct stat st = {};
  lstat(path.c_str(), &st);
  return st;
}

std::map<std::string, std::string> tree_of(const std::string& folder) {
  std::map<std::string, std::string> found;
  for (const auto& item : std::filesystem::recursive_directory_iterator(folder)) {
    std::string what = std::to_string(file_stat(item.path()).st_mode) + " ";
    if (item.is_symlink()) {
      what += std::filesystem::read_symlink(item.path());
    } else if (item.is_regular_file()) {
      what += file_text(item.path());
    }
    found[item.path().string().substr(folder.size())] = what;
  }
  return found;
}

std::string run(const std::string& command) {
  std::string output;
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  char part[4096];
  for (size_t got; (got = fread(part, 1, sizeof part, pipe)) > 0;)
    output.append(part, got);
  EXPECT_EQ(pclose(pipe), 0) << command << "\n" << output;
  return output;
}

std::string noise(size_t size, unsigned seed) {
  std::string bytes(size, '\0');
  for (char& b : bytes) {
    seed = seed * 1664525u + 1013904223u;
    b = char(seed >> 24);
  }
  return bytes;
}

static std::string deflated(const std::string& text) {
  std::string packed(compressBound(text.size()) + 64, '\0');
  z_stream z = {};
  deflateInit2(&z, 9, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
  z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  z.avail_in = uInt(text.size());
  z.next_out = reinterpret_cast<Bytef*>(packed.data());
  z.avail_out = uInt(packed.size());
  EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
  packed.resize(z.total_out);
  deflateEnd(&z);
  return packed;
}

raw_entry::raw_entry(std::string name_, std::string text, unsigned attributes_)
    : name(std::move(name_)),
      packed(std::move(text)),
      attributes(attributes_),
      crc(unsigned(crc32(0, reinterpret_cast<const Bytef*>(packed.data()), uInt(packed.size())))),
      packed_size(unsigned(packed.size())),
      size(unsigned(packed.size())) {}

raw_entry deflated_entry(const std::string& name, const std::string& text) {
  raw_entry entry(name, text);
  entry.method = 8;
  entry.packed = deflated(text);
  entry.packed_size = unsigned(entry.packed.size());
  return entry;
}

static std::string le(unsigned value, int bytes) {
  std::string out;
  for (int i = 0; i < bytes; ++i)
    out += char(value >> (8 * i));
  return out;
}

std::string raw_zip(const std::vector<raw_entry>& entries) {
  std::string zip, contents;
  unsigned start = 0;
  for (const raw_entry& e : entries) {
    const std::string common = le(20, 2) + le(e.flags, 2) + le(e.method, 2) + le(e.date, 4) +
                               le(e.crc, 4) + le(e.packed_size, 4) + le(e.size, 4) +
                               le(unsigned(e.name.size()), 2) + le(0, 2);
    if (!e.again) {
      start = unsigned(zip.size());
      zip += "PK\3\4" + common + e.name + e.packed;
    }
    contents += "PK\1\2" + le((3 << 8) | 20, 2) + common + le(0, 2) + le(0, 2) + le(0, 2) +
                le(e.attributes, 4) + le(start, 4) + e.name;
  }
  const unsigned count = unsigned(entries.size());
  return zip + contents + "PK\5\6" + le(0, 4) + le(count, 2) + le(count, 2) +
         le(unsigned(contents.size()), 4) + le(unsigned(zip.size()), 4) + le(0, 2);
}

void for_each_damage(
    const std::string& archive, const std::vector<int>& flips,
    const std::function<void(const std::string&, const std::string&, bool)>& check) {
  for (size_t at = 0; at < archive.size(); ++at) {
    check(archive.substr(0, at), "cut to " + std::to_string(at), true);
    for (const int flip : flips) {
      std::string bytes = archive;
      bytes[at] = char(bytes[at] ^ flip);
      check(bytes, "byte " + std::to_string(at) + " by " + std::to_string(flip), false);
    }
  }
}

void ArchiveTest::SetUp() {
  here.file("root/sentinel.txt", "sentinel");
  here.file("root/other/sentinel.txt", "sentinel");
  here.file("root/evil", "good");
  before = tree_of(root);
  mkdir(out.c_str(), 0755);
}

std::string ArchiveTest::put(const std::string& bytes) {
  const std::string path = base + "in.archive";
  write_text(path, bytes);
  return path;
}

int ArchiveTest::unpack(const std::string& bytes) {
  const auto unpacker = bytes.starts_with("7") ? p7z_to_file : zip_to_file;
  return unpacker(put(bytes), out, nullptr, 0);
}

std::string ArchiveTest::pack_7z(const std::string& options, const std::string& files) {
  unlink((base + "made.7z").c_str());
  run("cd '" + base + "src' && 7z a -t7z " + options + " ../made.7z " + files);
  return file_text(base + "made.7z");
}

void ArchiveTest::expect_untouched(const std::string& label) {
  auto now = tree_of(root);
  std::erase_if(now, [](const auto& item) { return item.first.starts_with("out"); });
  EXPECT_EQ(now, before) << label;
}

void ArchiveTest::empty_out() {
  run("rm -rf '" + out + "' && mkdir '" + out + "'");
}
