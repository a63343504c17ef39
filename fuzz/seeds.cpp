// Writes the seed corpora of the fuzz targets: fuzz_seeds <corpus directory>.
//
// replies/  the printer model's replies to each group of operations, taken
//           down by the virtual printer's transcript, so that each seed
//           replays a whole working session;
// files/    the state files a day's work leaves behind, and sample
//           configuration, trace control, cheque layout and report files;
// texts/    each text-taking function with ordinary texts.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "fuzz.h"
#include "harness.h"
#include "orbelan.h"
#include "roads.h"

namespace {

std::string g_root;

void save(const std::string& target, const std::string& name, const std::string& bytes) {
  const std::string dir = g_root + "/" + target;
  mkdir(g_root.c_str(), 0755);
  mkdir(dir.c_str(), 0755);
  std::ofstream(dir + "/" + name, std::ios::binary) << bytes;
}

std::string slurp(const char* path) {
  std::ifstream f(path, std::ios::binary);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

void replies() {
  const struct {
    const char* name;
    std::uint8_t groups;
  } kSeeds[] = {{"open", 0x00},      {"sale", 0x01},      {"vouchers", 0x03}, {"walk", 0x04},
                {"values", 0x09},    {"reduction", 0x11}, {"transfers", 0x21}, {"readings", 0x41},
                {"documents", 0x80}, {"day", 0xFF}};
  for (const auto& s : kSeeds) {
    fuzz::begin();
    fuzz::write_file("quorvel.conf", fuzz::quorvel_conf(false));
    vp_fuzz_transcribe(1);
    E4Open(0, 0);
    fuzz::run_groups(s.groups);
    vp_fuzz_transcribe(0);
    int size = 0;
    const unsigned char* t = vp_fuzz_transcript(&size);
    std::string seed(1, static_cast<char>(s.groups));
    seed.append(reinterpret_cast<const char*>(t), static_cast<std::size_t>(size));
    fuzz::end();
    save("replies", s.name, seed);
  }
}

std::string record(std::size_t file, const std::string& content) {
  std::string r;
  r += static_cast<char>(file);
  r += static_cast<char>(content.size() & 0xFF);
  r += static_cast<char>(content.size() >> 8 & 0xFF);
  return r + content;
}

void files() {
  // A day's state files, as the library leaves them.
  fuzz::begin();
  E4Open(0, 0);
  fuzz::run_groups(0x83);
  fuzz::prepare(6);
  E4FimCP(0, nullptr);
  E4ProgOp("Joana");
  std::string all(1, '\0');
  for (std::size_t i = 0; i < fuzz::kFileCount; ++i) {
    struct stat st {};
    if (stat(fuzz::kFiles[i], &st) != 0) continue;
    const std::string content = slurp(fuzz::kFiles[i]);
    save("files", fuzz::kFiles[i], std::string(1, '\0') + record(i, content));
    all += record(i, content);
  }
  fuzz::end();
  save("files", "day", all);

  const auto index = [](const std::string& name) {
    for (std::size_t i = 0; i < fuzz::kFileCount; ++i)
      if (name == fuzz::kFiles[i]) return i;
    return std::size_t{0};
  };
  save("files", "quorvel.conf", std::string(1, '\0') + record(index("quorvel.conf"), fuzz::quorvel_conf(false)));
  save("files", "quorvel-pd.conf", std::string(1, '\0') + record(index("quorvel.conf"), fuzz::quorvel_conf(true)));
  save("files", "Orbelan.cfg", std::string(1, '\0') + record(index("Orbelan.cfg"), "Trace=1\nTamanho=3000"));
  save("files", "Cheque.dat",
       std::string(1, '\0') + record(index("Cheque.dat"), fuzz::cheque_layout(341) + fuzz::cheque_layout(999)));
  save("files", "cheque-pd",
       std::string(1, '\0') + record(index("quorvel.conf"), fuzz::quorvel_conf(true)) +
           record(index("Cheque.dat"), fuzz::cheque_layout(341) + fuzz::cheque_layout(999)));
  save("files", "relatorio.txt",
       std::string(1, '\5') + record(index("relatorio.txt"), "primeira linha\r\nsegunda linha\n\nquarta\n"));
}

void texts() {
  // The target takes the function number modulo its count of functions, so
  // numbers past it only repeat earlier seeds.
  const std::string kTexts = std::string("7891") + '\0' + "ARROZ" + '\0' + "1000" + '\0' + "1290" + '\0' +
                             "UN" + '\0' + "linha de texto";
  const struct {
    const char* name;
    std::uint8_t n, documento;
  } kVariants[] = {{"a", 20, 1}, {"b", 60, 3}, {"c", 2, 0}};
  for (int f = 0; f < 34; ++f) {
    for (const auto& v : kVariants) {
      std::string seed;
      seed += static_cast<char>(f);
      seed += static_cast<char>(v.n);
      seed += static_cast<char>(v.documento);
      save("texts", std::to_string(f) + v.name, seed + kTexts);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s <corpus directory>\n", argv[0]);
    return 2;
  }
  g_root = argv[1];
  if (g_root.front() != '/') {
    char here[4096];
    if (getcwd(here, sizeof here) != nullptr) g_root = std::string(here) + "/" + g_root;
  }
  fuzz::setup();
  replies();
  files();
  texts();
  return 0;
}
