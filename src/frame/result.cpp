// Result codes: the one place where a printer code becomes a library code.
#include "frame/result.h"

#include <algorithm>
#include <array>

#include "agent/agent.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/lock.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"

namespace orbelan {

std::int32_t HWError = 0;

namespace {

struct Traducao {
  std::int32_t de;    // first driver code of the range
  std::int32_t ate;   // last driver code of the range
  std::uint16_t para; // library code
};

// Printer code ranges and their library codes, ordered by the first code. The
// codes between the ranges are not translated: the holes are deliberate.
constexpr Traducao kTabela[] = {
    {1, 1, 2561}, {2, 2, 2049}, {3, 3, 2563}, {4, 4, 2564}, {7, 7, 2049}, {10, 10, 2570},
    {12, 13, 2049}, {14, 14, 2574}, {15, 15, 2592}, {16, 16, 2576}, {17, 17, 2821}, {18, 18, 2578},
    {19, 19, 2579}, {21, 21, 2561}, {22, 22, 2582}, {23, 23, 2583}, {25, 25, 2585}, {26, 26, 2583},
    {27, 27, 2049}, {32, 32, 2592}, {33, 34, 2049}, {35, 35, 2595}, {36, 37, 2049}, {38, 38, 2872},
    {39, 39, 2049}, {41, 41, 2049}, {42, 42, 2602}, {44, 45, 2871}, {63, 63, 2623}, {65, 65, 2625},
    {66, 66, 2626}, {68, 68, 2628}, {69, 69, 2629}, {70, 70, 2635}, {72, 72, 2635}, {74, 74, 2634},
    {75, 75, 2635}, {76, 76, 2636}, {77, 79, 2690}, {81, 81, 2049}, {83, 83, 2822}, {84, 84, 2880},
    {85, 85, 2049}, {86, 86, 2690}, {88, 88, 2648}, {93, 93, 2653}, {95, 95, 2655}, {96, 96, 2656},
    {97, 97, 2657}, {98, 98, 2690}, {100, 100, 2635}, {113, 115, 2049}, {116, 116, 2701},
    {123, 123, 2683}, {132, 132, 2561}, {133, 133, 2693}, {138, 138, 2698}, {139, 139, 2690},
    {140, 140, 2049}, {142, 142, 2702}, {144, 144, 2049}, {145, 145, 2561}, {147, 147, 2707},
    {148, 148, 2049}, {149, 149, 2872}, {150, 150, 2049}, {151, 151, 2561}, {152, 152, 2690},
    {153, 155, 2561}, {157, 157, 2049}, {158, 158, 2561}, {160, 163, 2049}, {164, 164, 2724},
    {165, 177, 2049}, {180, 180, 2745}, {181, 181, 2049}, {182, 182, 2580}, {183, 183, 2635},
    {184, 184, 2690}, {185, 185, 2561}, {186, 186, 2691}, {187, 187, 2049}, {188, 191, 2690},
    {192, 192, 2602}, {193, 195, 2690}, {197, 197, 2049}, {198, 198, 2580}, {199, 199, 2635},
    {200, 200, 2745}, {201, 201, 2635}, {202, 202, 2049}, {204, 206, 2580}, {207, 207, 2049},
    {208, 209, 2561}, {210, 210, 2049}, {211, 212, 2690}, {213, 215, 2049}, {216, 216, 2609},
    {217, 219, 2561}, {220, 220, 2749}, {221, 221, 2561}, {222, 222, 2049}, {223, 223, 2745},
    {224, 224, 2670}, {225, 225, 2866}, {226, 226, 2745}, {227, 228, 2561}, {229, 229, 2749},
    {230, 230, 2613}, {231, 231, 2690}, {232, 232, 2049}, {233, 233, 2866}, {234, 234, 2570},
    {235, 235, 2561}, {236, 237, 2690}, {238, 238, 2049}, {239, 239, 2635}, {240, 240, 2049},
    {241, 242, 2635}, {252, 253, 2747}, {254, 254, 2744}, {255, 257, 2747}, {258, 258, 2635},
    {259, 260, 2561}, {261, 261, 2635}, {262, 262, 2747}, {263, 266, 2561}, {267, 267, 2635},
    {268, 268, 2855}, {269, 269, 2854}, {270, 270, 2049}, {271, 271, 2635}, {272, 273, 2049},
    {274, 274, 2690}, {275, 281, 2747}, {282, 282, 2744}, {283, 283, 2747}, {285, 288, 2747},
    {289, 291, 2049}, {336, 336, 2743}, {337, 337, 2748}, {338, 338, 2747}, {339, 339, 2670},
    {340, 342, 2635}, {343, 343, 2749}, {344, 344, 2747}, {345, 345, 2635}, {346, 346, 2744},
    {347, 347, 2747}, {348, 348, 2749}, {349, 349, 2747}, {350, 350, 2635}, {351, 351, 2748},
    {352, 352, 2049}, {353, 354, 2747}, {355, 355, 2871}, {356, 356, 2561}, {357, 357, 2706},
    {358, 358, 2872}, {360, 361, 2670}, {362, 363, 2635}, {364, 364, 2049}, {365, 366, 2690},
    {367, 367, 2635}, {368, 369, 2691}, {370, 370, 2690}, {371, 371, 2580}, {372, 373, 2690},
    {374, 374, 2609}, {375, 375, 2690}, {376, 376, 2609}, {377, 378, 2690}, {379, 379, 2049},
    {380, 380, 2690}, {381, 381, 2049}, {382, 383, 2690}, {387, 388, 2570}, {8192, 8192, 2666},
    {8193, 8193, 2683}, {8194, 8195, 2670}, {8196, 8196, 2666}, {9011, 9011, 2751},
    {65532, 65532, 2648},
};
static_assert(std::size(kTabela) == 183);

constexpr bool tabela_ordenada() {
  for (std::size_t i = 1; i < std::size(kTabela); ++i)
    if (kTabela[i - 1].ate >= kTabela[i].de || kTabela[i].de > kTabela[i].ate) return false;
  return true;
}
static_assert(tabela_ordenada());

bool codigo_da_impressora(std::int32_t code) {
  return (code >= 0 && code <= 386) || (code >= 8192 && code <= 8196);
}

}  // namespace

std::uint16_t traduz_codigo(std::int32_t code) {
  if (code == 0) return 0;  // success, by far the most frequent, stands in no range
  const auto* it = std::upper_bound(std::begin(kTabela), std::end(kTabela), code,
                                    [](std::int32_t c, const Traducao& t) { return c < t.de; });
  if (it != std::begin(kTabela) && code <= (it - 1)->ate) return (it - 1)->para;
  return static_cast<std::uint16_t>(code);
}

std::uint16_t TrataRetorno(std::int32_t code) {
  if (codigo_da_impressora(code)) HWError = code;
  if (code != 0) {
    // The driver's own last error is read after every failure; its outcome is
    // of no interest here.
    Input in;
    Reply<15> r;
    executa(3, 1, in, r, 1);
  }
  const std::uint16_t traduzido = traduz_codigo(code);
  if (traduzido != code) ORB_LOG("TrataRetorno%s - De:%d Para:%d \n", code, traduzido);
  infOvitra(traduzido);
  return traduzido;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4GetError(unsigned int* err) {
  ORB_LOCK();
  if (err != nullptr) *err = 0;
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4GetError%s - inicio  \n");
  if (ret == 0) {
    Input in;
    Reply<15> r;
    ret = executa(3, 1, in, r, 1);
    dumpBytes(r.b.data(), r.len);
    if (ret == 0 && err != nullptr) *err = static_cast<unsigned int>(r[2]) * 256u + r[1];
    ORB_LOG("E4GetError%s - fim com Erro=%d \n", err != nullptr ? static_cast<int>(*err) : 0);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4GetError%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4PutError(int code) {
  ORB_LOCK();
  infOvitra(code);
  return 0;
}

}  // extern "C"
