// Fuzz target: the printer's replies. The first input byte chooses which
// groups of operations run after the session opens (a bit each, see roads.h);
// every reply of every driver command (result, bytes, reported length) then
// comes from the rest of the input, in the layout the virtual printer's fuzz
// mode reads (emulator/fuzz.cpp).
#include <cstddef>
#include <cstdint>

#include "fuzz.h"
#include "harness.h"
#include "orbelan.h"
#include "roads.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  fuzz::begin();
  // The monitoring agent is on: every result and the inventory message built
  // from the replies reach it.
  fuzz::write_file("quorvel.conf", fuzz::quorvel_conf(false));
  vp_fuzz_feed(data + 1, static_cast<int>(size - 1));
  E4Open(0, 0);
  fuzz::run_groups(data[0]);
  fuzz::end();
  return 0;
}
