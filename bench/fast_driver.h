// Control of the benchmark's printer driver (fast_driver.cpp), which the
// benchmark links directly so that the library's dlopen of "libMrZandor.so"
// is handed the same instance.
#pragma once

#define FAST_DRIVER_API __attribute__((visibility("default")))

extern "C" {

// Driver entry points, called directly only to time the driver alone.
FAST_DRIVER_API int FC_Operacao(int cmd, int flag, int mode, int inlen, unsigned char* inbuf, int* aux,
                                int* outlen, unsigned char* outbuf);

// Forgets the document state and the command count.
FAST_DRIVER_API void fd_reset(void);
// FC_Operacao calls since the last reset.
FAST_DRIVER_API int fd_commands(void);
// Keeps (on != 0) the calls that follow, forgetting earlier ones; stops when 0.
FAST_DRIVER_API void fd_record(int on);
// Stops keeping calls and issues the kept ones again, straight to the driver;
// returns their number.
FAST_DRIVER_API int fd_replay(void);
// Size of the journal a transfer hands out (default 1 MiB), in 253-byte packets.
FAST_DRIVER_API void fd_set_journal_bytes(long bytes);
// Number of fiscal-memory records (default 2190).
FAST_DRIVER_API void fd_set_fiscal_records(int n);
}
