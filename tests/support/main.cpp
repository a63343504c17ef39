// Test main: every test process runs in a fresh temporary working directory,
// so the library's files (trace log, control file, state files) start absent.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "vprinter.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  char dir[] = "/tmp/orbelan-test-XXXXXX";
  if (mkdtemp(dir) == nullptr || chdir(dir) != 0) {
    std::perror("orbelan tests: temporary directory");
    return 2;
  }
  // The suites script the printer's replies themselves; a test that wants the
  // virtual printer's fiscal model switches it on explicitly.
  vp_use_model(0);
  const int rc = RUN_ALL_TESTS();
  if (chdir("/") == 0 && getenv("ORBELAN_KEEP_TMP") == nullptr) {
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
  } else {
    std::fprintf(stderr, "orbelan tests: kept %s\n", dir);
  }
  return rc;
}
