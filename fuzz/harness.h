// Shared by the fuzz targets: a clean working directory and virtual printer
// for every input, exactly sized caller buffers, and the pieces of an input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

// Once per process: makes a fresh temporary working directory (removed at
// exit).
void setup();

// Before each input: moves into the working directory and empties it, resets
// the virtual printer (its fiscal model answering, from the factory state) and
// the plug-in doubles, and writes the trace control file (level 1).
void begin();

// After each input: leaves fuzz mode, closes the session if one is open and
// returns to the directory the fuzzer was started in.
void end();

// Writes `content` into the file `name` of the working directory.
void write_file(const char* name, std::string_view content);

// The files the library reads from its working directory, and one a
// management report prints (the files target's numbering).
extern const char* const kFiles[];
extern const std::size_t kFileCount;

// A cheque layout record ("Cheque.dat") for `bank`.
std::string cheque_layout(unsigned bank);
// A configuration file ("quorvel.conf") that enables the monitoring agent and,
// when `peripherals`, the peripheral libraries.
std::string quorvel_conf(bool peripherals);

// A caller's buffer of exactly `size` bytes (zeroed), so that any write or
// read past it is caught.
class Buffer {
 public:
  explicit Buffer(std::size_t size) : size_(size), bytes_(new char[size == 0 ? 1 : size]()) {}
  char* get() { return bytes_.get(); }
  std::size_t size() const { return size_; }

 private:
  std::size_t size_;
  std::unique_ptr<char[]> bytes_;
};

// The input cut into texts at its NUL bytes. Each text lives in its own
// allocation of exactly its length plus the terminator. A piece that is the
// single byte 0xFF stands for a NULL pointer. Past the last piece every text
// is "".
class Texts {
 public:
  Texts(const std::uint8_t* data, std::size_t size);
  // The next text ("" once the pieces are used up).
  const char* next();
  // The next text as a file name inside the working directory: every "/" is
  // turned into "_" so that nothing outside it is touched.
  const char* next_name();
  // The next text in a writable buffer with room for `extra` more bytes and
  // of `min_size` bytes at least.
  char* next_writable(std::size_t extra, std::size_t min_size = 0);

 private:
  std::vector<std::unique_ptr<char[]>> owned_;
  std::vector<std::string> pieces_;
  std::size_t at_ = 0;
  const char* keep(const std::string& s);
};

}  // namespace fuzz
