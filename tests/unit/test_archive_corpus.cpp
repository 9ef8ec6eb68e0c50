// The saved inputs of the fuzz targets, each as it is and with every one of its bytes changed: they
// end in a code or in files, and touch nothing outside.

#include <dirent.h>

#include "corekit/Files/io_7z.h"
#include "corekit/Files/io_zip.h"
#include "tests/unit/test_archive_util.h"

using ArchiveCorpus = ArchiveTest;

namespace {

std::vector<std::string> saved_inputs(const std::string& folder) {
  const std::string path = TESTS_FOLDER "/../" + folder;
  std::vector<std::string> inputs;
  DIR* dir = opendir(path.c_str());
  if (!dir) return inputs;
  while (const dirent* item = readdir(dir)) {
    if (item->d_type == DT_REG) inputs.push_back(file_text(path + "/" + item->d_name));
  }
  closedir(dir);
  return inputs;
}

}  // namespace

TEST_F(ArchiveCorpus, Replay) {
  const struct {
    const char* folder;
    decltype(zip_to_file)* unpacker;
  } rows[] = {{"fuzz/corpus_zip", zip_to_file}, {"fuzz/corpus_7z", p7z_to_file}};
  for (const auto& row : rows) {
    const auto inputs = saved_inputs(row.folder);
    EXPECT_GE(inputs.size(), 3u) << row.folder;
    for (std::string input : inputs) {
      row.unpacker(put(input), out, nullptr, 0);
      for (char& byte : input) {
        byte = char(byte ^ 0x41);
        row.unpacker(put(input), out, nullptr, 0);
        byte = char(byte ^ 0x41);
      }
      expect_untouched(row.folder);
      empty_out();
    }
  }
}
