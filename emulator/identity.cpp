// The identity a default virtual printer reports when a session opens.
#include <array>
#include <cstring>
#include <string_view>

#include "printer.h"

namespace {

template <std::size_t N>
void put(std::array<unsigned char, N>& buf, std::size_t at, std::string_view text) {
  std::memcpy(buf.data() + at, text.data(), text.size());
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void vp_answer_identity(void) {
  std::array<unsigned char, 25> serial{};
  serial[0] = 1;
  put(serial, 1, "ZD010203040506070809");
  vp_set_reply(21, 0, serial.data(), 22);

  std::array<unsigned char, 10> model{};
  model[0] = 6;
  put(model, 1, "V01.05.02");
  vp_set_reply(86, 0, model.data(), 10);

  std::array<unsigned char, 50> make{};
  put(make, 0, "ZANDOR");
  put(make, 7, "MZ-5600 FI");
  vp_set_reply(236, 0, make.data(), 18);

  std::array<unsigned char, 60> owner{};
  owner[1] = 2;
  put(owner, 14, "12.345.678/0001-90");
  put(owner, 33, "123.456.789.110");
  put(owner, 49, "4455667");
  vp_set_reply(28, 0, owner.data(), 57);

  std::array<unsigned char, 4> seq{};
  put(seq, 0, "001");
  vp_set_reply(61, 0, seq.data(), 4);

  const unsigned char iat = 0;
  vp_set_reply(53, 0, &iat, 1);

  std::array<unsigned char, 40> date{};
  put(date, 12, "22112026");
  put(date, 20, "1030");
  put(date, 25, "22112026");
  vp_set_reply(10, 0, date.data(), 33);

  std::array<unsigned char, 20> clock{};
  put(clock, 1, "22112026103000");
  vp_set_reply(63, 0, clock.data(), 15);
}
