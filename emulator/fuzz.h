// Fuzz mode of the virtual printer: the replies come from a fuzzer's input.
//
// After vp_fuzz_feed(data, size) every FC_Operacao call takes its driver
// result, its reply bytes and the reply length it reports from `data`, in call
// order, ahead of any script or model; once the input is used up every command
// answers an empty success, until vp_fuzz_end(). The call record keeps only
// the last few calls in fuzz mode. The layout of one reply in the input is
// described in fuzz.cpp.
#pragma once

#include "printer.h"

extern "C" {

// Enters fuzz mode with a copy of `size` bytes of `data` (NULL or a
// non-positive size: an input that is already used up).
void vp_fuzz_feed(const void* data, int size);
// Leaves fuzz mode.
void vp_fuzz_end(void);
// Input bytes not consumed yet (0 outside fuzz mode).
int vp_fuzz_remaining(void);

// From a nonzero `on`, every reply FC_Operacao gives is written down in the
// layout fuzz mode reads, so that feeding the transcript back replays the same
// replies (a seed for a fuzzer); a zero `on` stops (the transcript is kept).
void vp_fuzz_transcribe(int on);
// The transcript so far; `size` (if not NULL) receives its length.
const unsigned char* vp_fuzz_transcript(int* size);

}  // extern "C"

namespace vprinter {

// In fuzz mode: fills `out` with the next reply taken from the input and
// returns true. `outbuf` is the caller's reply buffer; no more bytes are put
// into `out` than can be written there (see fuzz.cpp). Outside fuzz mode:
// false, `out` untouched.
bool take_fuzzed(const unsigned char* outbuf, Reply& out);

// Writes `reply` into the transcript while one is being taken.
void transcribe(const Reply& reply);

}  // namespace vprinter
