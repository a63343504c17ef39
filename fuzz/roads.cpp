#include "roads.h"

#include <cstddef>
#include <cstdio>

#include "harness.h"
#include "orbelan.h"

namespace fuzz {
namespace {

// Output sizes the public header asks of the caller.
constexpr std::size_t kValor = 19;
constexpr std::size_t kValorMemFisc = 21;
constexpr std::size_t kDadosReducao = 2250;
constexpr std::size_t kValorAcrescimo = 13;
// Outputs without a stated size get room for the longest identity text.
constexpr std::size_t kTexto = 600;

void coupon_with_items() {
  E4IniCP(2, "");
  E4IteCF(20, "7891", "ARROZ", "1000", "1000");
  E4IteCFEsp(21, "7892", "FEIJAO", "2500", "850", "KG");
}

}  // namespace

void sale() {
  E4Cons("Maria da Silva", "12345678909", "Rua das Flores, 10");
  coupon_with_items();
  E4IteCFEsp2(22, "7893", "CAFE", "1000", "1290", "UN", 1);
  E4DesIt(0, 20, 1, "0,50", "desconto");
  Buffer acrescimo(kValorAcrescimo);
  std::snprintf(acrescimo.get(), acrescimo.size(), "%s", "10,00");
  E4AcrIt(2, 21, 2, acrescimo.get(), "acrescimo");
  E4CanIt(22, 3);
  E4DesCup(0, "1,00");
  E4AcrCup(0, "2,00");
  E4RegPag(60, "2000");
  E4RegPagEsp(61, "1550", "cartao");
  E4FimCP(0, "Volte sempre");
  E4ImpItem(1);
  E4AvancaPapel(0, 3);
  E4CorteImp(0);
  E4CortaPapel();
  E4CorteImp(1);
  E4FimCup();
}

void vouchers_and_cancellation() {
  E4IniCP(17, "61");
  E4Print("CARTAO 1234");
  E4FimCP(0, nullptr);
  E4IniCP(18, "61");
  E4FimCP(0, nullptr);
  E4CanCup();
  E4CanCupEsp();
  E4CancelaCCD("000123");
}

void register_walk() {
  Buffer complemento(kTexto), sinal(kTexto), descricao(kTexto);
  unsigned char rp = 0;
  for (unsigned char cat : {1, 2, 4, 5, 6}) {
    E4RPPrim(cat);
    // A walk ends with 2867; a printer that never says so is cut off here.
    for (int i = 0; i < 40 && E4RPProx(cat, complemento.get(), sinal.get(), &rp) == 0; ++i) {
    }
    E4RPLe(cat, complemento.get(), sinal.get(), &rp);
  }
  for (int rp_app : {0, 5, 16, 17, 40}) E4VerRP(rp_app, descricao.get(), sinal.get());
  for (int i = 0; i < 20 && E4RPProx_JP(5, complemento.get(), sinal.get(), &rp) == 0; ++i) {
  }
  E4RPLe_JP(2, complemento.get(), sinal.get(), &rp);
  unsigned char reg = 0;
  E4RPCria(5, "CARTAO", "1", &reg);
  reg = 0;
  E4RPCria_JP(5, "CHEQUE", "0", &reg);
  reg = 25;
  E4RPCria(2, "1800", "", &reg);
}

void values() {
  Buffer valor(kValor);
  // Every register number the values are served for, and a few past them.
  for (int reg = 0; reg <= 210; ++reg) E4ValAtu(static_cast<unsigned char>(reg), valor.get());
  for (unsigned char reg : {8, 9, 15, 80, 81, 82, 83, 84, 85, 86, 87, 88, 89, 90, 92, 93, 94, 103})
    E4ValAtu_JP(reg, valor.get());
  for (unsigned char reg : {0, 1, 3, 4}) E4ValRed(reg, valor.get());
  for (unsigned char reg : {20, 36}) E4ValImp(reg, valor.get());
  for (unsigned short reg = 500; reg <= 506; ++reg) E4InfCup(reg, valor.get());
  E4ValAtuEsp_JP(8, valor.get());
  E4ValAtuEsp_JP(9, valor.get());
  Buffer mem_fisc(kValorMemFisc);
  E4RegMemFisc(0, mem_fisc.get());
  E4RegMemFisc(1, mem_fisc.get());
}

void reduction_data() {
  Buffer dados(kDadosReducao);
  E4DadosReducao(dados.get());
}

void transfers() {
  E4LMF(1, 0, "0001", "0010");
  E4LMFSerial(0, 0, "01012026", "31012026", "mf.txt");
  E4LMFSerial(1, 1, "0001", "0010", "mf.txt");
  E4LeMFD(0, "01012026", "31012026", "mfd.txt");
  E4LeMFD(1, "1", "250", "mfd.txt");
  E4LeMFD(2, "12", "0034", "mfd.txt");
  E4LeMFDEsp(1, 3, "01012026", "31012026", "mfd.txt");
}

void queries_and_readings() {
  Buffer a(kTexto), b(kTexto), c(kTexto), d(kTexto), e(kTexto), f(kTexto), g(kTexto);
  unsigned char modelo = 0, opc = 0, resposta = 0, verao = 0, reducao = 0;
  E4InfECF(a.get(), b.get(), c.get(), d.get(), e.get(), f.get(), g.get(), &modelo);
  for (int opcao = 0; opcao <= 12; ++opcao) E4InfEspECF(opcao, a.get());
  E4Status(b.get());
  E4StaECF(&opc, &resposta);
  E4RdData(a.get(), b.get(), &verao, c.get(), &reducao);
  unsigned int erro = 0;
  E4GetError(&erro);
  E4Verao(1);
  E4Verao(0);
  E4IniCP(4, "");
  E4IniCP(5, "");
}

void other_documents() {
  E4IniCP(19, "Suprimento");
  E4OpeCNF(40, "+", "Troco inicial", "50");
  E4RegPag(60, "5000");
  E4FimCP(0, nullptr);
  E4IniCP(20, "3");
  E4Print("linha do relatorio");
  write_file("relatorio.txt", "primeira linha\r\nsegunda linha\n\nquarta\n");
  E4ImpVinc("relatorio.txt", "10");
  E4FimDoc();
  E4ConImp('2', 0, 0);
  E4ExpDoc();
  E4ImpCodB(2, 1, 50, 0, "7891234567895");
  E4IniCP(21, "");
  E4ProgOp("Operador");
  Buffer texto(16);
  std::snprintf(texto.get(), texto.size(), "%s", "AUTENTICADO");
  E4Aut(texto.get());
  E4AutEsp(texto.get(), 3);
  unsigned char gaveta = 0;
  E4OpenGv();
  E4StatGv(&gaveta);
  // The printer path may copy a whole 255-byte reply and its terminator.
  Buffer cmc7(256);
  E4LeCMC7(cmc7.get());
  write_file("Cheque.dat", cheque_layout(341) + cheque_layout(999));
  E4ImpChq(341, "Fulano de Tal", "Sao Paulo", "01012026", "100,00", "linha 1", "linha 2");
}

void run_groups(std::uint8_t groups) {
  if (groups & 0x01) sale();
  if (groups & 0x02) vouchers_and_cancellation();
  if (groups & 0x04) register_walk();
  if (groups & 0x08) values();
  if (groups & 0x10) reduction_data();
  if (groups & 0x20) transfers();
  if (groups & 0x40) queries_and_readings();
  if (groups & 0x80) other_documents();
}

void prepare(std::uint8_t kind) {
  switch (kind % 7) {
    case 1:
      coupon_with_items();
      break;
    case 2:
      coupon_with_items();
      E4RegPag(60, "1000");
      break;
    case 3:
      coupon_with_items();
      E4RegPag(60, "5000");
      break;
    case 4:
      E4IniCP(19, "");
      E4OpeCNF(40, "+", "Suprimento", "1000");
      break;
    case 5:
      E4IniCP(20, "0");
      break;
    case 6:
      coupon_with_items();
      E4RegPag(61, "5000");
      E4FimCP(0, nullptr);
      E4IniCP(17, "61");
      break;
    default:
      break;
  }
}

}  // namespace fuzz
