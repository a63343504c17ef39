// Shared test fixtures and helpers.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "vprinter.h"

namespace orbtest {

// ---- interposed calls ----------------------------------------------------
struct Wait {
  bool micro;       // usleep (true) or sleep (false)
  unsigned amount;  // microseconds or seconds
};
std::vector<Wait> waits();
void clear_waits();
// dlopen of exactly `name` fails from now on in this process.
void fail_dlopen(const std::string& name);
// dlopen of exactly `name` opens `path` instead (the agent plug-in's absolute
// path is redirected to the plug-in double from the start).
void redirect_dlopen(const std::string& name, const std::string& path);
// The built test double lib<name>.so.
std::string double_path(const std::string& name);
extern const char* const kAgentPluginPath;

// ---- files ----------------------------------------------------------------
std::string read_file(const std::string& path);
bool file_exists(const std::string& path);
void write_file(const std::string& path, const std::string& content);

// Writes the trace control file "Orbelan.cfg" with the given level and limit.
void enable_trace(int level = 1, long limit = 5000000);
// The trace log's lines without their time stamps (dump lines have none).
std::vector<std::string> log_lines();
// Whether some trace line equals `line` exactly (time stamp removed).
bool logged(const std::string& line);

// ---- the virtual printer ----------------------------------------------------
// The FC_Operacao calls recorded so far.
std::vector<vp_call> operations();
// Their command codes, in order.
std::vector<int> commands();
// The input bytes of a recorded call.
std::vector<std::uint8_t> input(const vp_call& call);
// The input bytes of the last FC_Operacao with `cmd` (empty if none).
std::vector<std::uint8_t> last_input(int cmd);
// Queue / set a reply given as a byte vector.
void push(int cmd, int result, const std::vector<std::uint8_t>& bytes = {});
void stick(int cmd, int result, const std::vector<std::uint8_t>& bytes = {});
// A reply of `size` zero bytes with `text` at offset `at`.
std::vector<std::uint8_t> bytes_with(std::size_t size, std::size_t at, const std::string& text);
// How many calls of `kind` (enum vp_call_kind) were recorded.
int count_calls(int kind);

// ---- byte strings and the commands sent --------------------------------------
using Bytes = std::vector<std::uint8_t>;
using Cmds = std::vector<int>;
Bytes operator+(Bytes a, const Bytes& b);
// Texts laid end to end, each with its NUL.
Bytes texts(std::initializer_list<std::string> ts);
// The commands sent, without the driver's last-error read (command 3) that
// follows every failure.
Cmds sent();
// The inputs of every `cmd` sent, and of the last one, after the sequence field.
std::vector<Bytes> payloads(int cmd);
Bytes payload(int cmd);
// The document state the printer reports from now on (command 6, byte 0).
void state(std::uint8_t s);
// Queues a reply of `cmd` carrying `text` from byte 1, as the register reads
// (133 to 136, 139) give their values.
void reply(int cmd, const std::string& text, int result = 0);

// ---- the doubles of the peripheral libraries and of the agent plug-in ---------
// Writes quorvel.conf with TIPO_PD=1 and sends the three peripheral libraries
// to their doubles.
void use_peripheral_doubles();
// Whether the double lib<name>.so is mapped in this process.
bool double_loaded(const std::string& name);
// The calls the doubles recorded from the `from`-th on, as "fn(args)".
std::vector<std::string> double_calls(int from = 0);

// ---- fixtures -------------------------------------------------------------------
// A fresh virtual printer, trace at level 1, nothing opened.
class Fresh : public ::testing::Test {
 protected:
  void SetUp() override;
};

// An open session against a virtual printer answering the identity queries;
// the calls made by the opening are cleared.
class Session : public Fresh {
 protected:
  void SetUp() override;
  void TearDown() override;
};

// An open session with the peripheral libraries loaded from their doubles;
// the printer calls and the doubles' records of the opening are cleared.
class PdSession : public Session {
 protected:
  void SetUp() override;
};

}  // namespace orbtest
