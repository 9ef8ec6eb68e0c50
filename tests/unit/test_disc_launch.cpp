// Starting another program, which begins only after this process has saved its settings and ended.

#include "Installer-f/wizard/main_launch.h"

#include "corekit/base/hl_thread.h"
#include "corekit/files/pref.h"
#include "engine_tree.h"

namespace {

class DiscLaunch : public engine_tree {
 protected:
  // A program that notes its name, its arguments, whether its starter has saved, and what it has
  // from its starter that no program is to have; complete once "out" is there.
  void program(const std::string& path) {
    write(path,
          "#!/bin/sh\n{ echo \"$0\"; for a; do echo \"[$a]\"; done\n"
          "[ -e \"$(echo '" +
              root +
              "'config/*/'Skyvane Installer.prf')\" ] && echo saved\n"
              "[ $((0x$(sed -n 's/^SigIgn:.//p' /proc/$$/status) >> 12 & 1)) = 0 ] || echo deaf to "
              "SIGPIPE\n"
              "find /proc/$$/fd -lname '*log.txt' | grep -q . && echo has the log\n"
              "} >'" +
              root + "part'\nmv '" + root + "part' '" + root + "out'\n");
    ASSERT_EQ(chmod((root + path).c_str(), 0755), 0);
  }

  std::string outcome() {
    for (int tries = 0; tries < 500 && !there("out"); ++tries)
      usleep(10000);
    return read("out");
  }
};

TEST_F(DiscLaunch, StartsTheProgram) {
  // The executable below the root, what is launched, and with what path.
  const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
      {"a plain program", "Plain.app", "Plain.app", ""},
      {"with a folder", "Folder.app", "Folder.app", "/a folder/"},
      {"a bundle with a slash", "B2.app/Contents/MacOS/B2", "B2.app/", ""},
      {"dots and blanks", "My 9.1.app/Contents/MacOS/My 9.1", "My 9.1.app", ""},
  };
  for (const auto& [label, executable, app, path] : rows) {
    program(executable);
    EXPECT_EXIT(
        {
          THREAD_init();
          std::signal(SIGPIPE, SIG_IGN);
          xer_open(root + "log.txt");
          launch_app(root + app, path);
        },
        testing::ExitedWithCode(1), "")
        << label;
    const std::string arguments = *path ? "[-path]\n[" + std::string(path) + "]\n" : std::string();
    EXPECT_EQ(outcome(), root + executable + "\n" + arguments + "saved\n") << label;
    std::remove((root + "out").c_str());
  }
}

}  // namespace
