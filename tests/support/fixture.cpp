#include "support/fixture.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cstring>
#include <fstream>
#include <sstream>

#include "orbelan.h"
#include "recorder.h"

namespace orbtest {

std::string read_file(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

bool file_exists(const std::string& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0;
}

void write_file(const std::string& path, const std::string& content) {
  std::ofstream f(path, std::ios::binary | std::ios::trunc);
  f << content;
}

void enable_trace(int level, long limit) {
  write_file("Orbelan.cfg", "Trace=" + std::to_string(level) + "\nTamanho=" + std::to_string(limit));
}

namespace {

// "dd/mm/yy HH:MM:SS - "
bool has_stamp(const std::string& line) {
  static const char shape[] = "99/99/99 99:99:99 - ";
  if (line.size() < sizeof shape - 1) return false;
  for (std::size_t i = 0; i + 1 < sizeof shape; ++i) {
    const char c = line[i];
    if (shape[i] == '9' ? (c < '0' || c > '9') : c != shape[i]) return false;
  }
  return true;
}

}  // namespace

std::vector<std::string> log_lines() {
  std::vector<std::string> out;
  std::istringstream in(read_file("Orbelan.txt"));
  std::string line;
  while (std::getline(in, line)) out.push_back(has_stamp(line) ? line.substr(20) : line);
  return out;
}

bool logged(const std::string& line) {
  for (const auto& l : log_lines())
    if (l == line) return true;
  return false;
}

std::vector<vp_call> operations() {
  std::vector<vp_call> out;
  for (int i = 0; i < vp_call_count(); ++i)
    if (const vp_call* c = vp_get_call(i); c->kind == VP_OPERACAO) out.push_back(*c);
  return out;
}

std::vector<int> commands() {
  std::vector<int> out;
  for (const auto& c : operations()) out.push_back(c.cmd);
  return out;
}

std::vector<std::uint8_t> input(const vp_call& call) {
  const int n = call.inlen < 0 ? 0 : (call.inlen > VP_MAX_INPUT ? VP_MAX_INPUT : call.inlen);
  return {call.in, call.in + n};
}

std::vector<std::uint8_t> last_input(int cmd) {
  std::vector<std::uint8_t> out;
  for (const auto& c : operations())
    if (c.cmd == cmd) out = input(c);
  return out;
}

void push(int cmd, int result, const std::vector<std::uint8_t>& bytes) {
  vp_push_reply(cmd, result, bytes.data(), static_cast<int>(bytes.size()));
}

void stick(int cmd, int result, const std::vector<std::uint8_t>& bytes) {
  vp_set_reply(cmd, result, bytes.data(), static_cast<int>(bytes.size()));
}

std::vector<std::uint8_t> bytes_with(std::size_t size, std::size_t at, const std::string& text) {
  std::vector<std::uint8_t> b(std::max(size, at + text.size()), 0);
  std::memcpy(b.data() + at, text.data(), text.size());
  return b;
}

int count_calls(int kind) {
  int n = 0;
  for (int i = 0; i < vp_call_count(); ++i) n += vp_get_call(i)->kind == kind;
  return n;
}

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Bytes texts(std::initializer_list<std::string> ts) {
  Bytes out;
  for (const auto& t : ts) {
    out.insert(out.end(), t.begin(), t.end());
    out.push_back(0);
  }
  return out;
}

Cmds sent() {
  Cmds out;
  for (int c : commands())
    if (c != 3) out.push_back(c);
  return out;
}

std::vector<Bytes> payloads(int cmd) {
  std::vector<Bytes> out;
  for (const auto& c : operations())
    if (Bytes in = input(c); c.cmd == cmd && in.size() >= 2) out.emplace_back(in.begin() + 2, in.end());
  return out;
}

Bytes payload(int cmd) {
  auto all = payloads(cmd);
  return all.empty() ? Bytes{} : all.back();
}

void state(std::uint8_t s) { stick(6, 0, {s, 0}); }

void reply(int cmd, const std::string& text, int result) { push(cmd, result, bytes_with(30, 1, text)); }

void use_peripheral_doubles() {
  write_file("quorvel.conf", "[QuorvelPOS\\ImpressoraFiscal]\nTIPO_PD=1\n");
  for (const std::string lib : {"pd_cheque", "pd_autentica", "pd_cmc7"})
    redirect_dlopen("lib" + lib + ".so", double_path(lib));
}

bool double_loaded(const std::string& name) {
  void* h = dlopen(double_path(name).c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (h != nullptr) dlclose(h);
  return h != nullptr;
}

std::vector<std::string> double_calls(int from) {
  std::vector<std::string> out;
  for (int i = from; i < dbl_count(); ++i) out.push_back(std::string(dbl_get(i)->fn) + "(" + dbl_get(i)->args + ")");
  return out;
}

void Fresh::SetUp() {
  vp_reset();
  enable_trace(1);
}

void Session::SetUp() {
  Fresh::SetUp();
  vp_answer_identity();
  ASSERT_EQ(E4Open(0, 0), 0);
  vp_clear_calls();
}

void Session::TearDown() { E4Close(); }

void PdSession::SetUp() {
  use_peripheral_doubles();
  Session::SetUp();
  dbl_reset();
}

}  // namespace orbtest
