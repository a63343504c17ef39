// Live printer queries: status bits, document state, clock and reduction state.
#include <cstdlib>
#include <string>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/identity.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"

namespace orbelan {

std::uint16_t Estado_Cupom_Atual(std::uint8_t* CUPA, std::uint8_t* CUPR) {
  if (CUPA != nullptr) *CUPA = 0;
  if (CUPR != nullptr) *CUPR = 0;
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Estado_Cupom_Atual%s - inicio  \n");
  if (ret == 0) {
    Input in;
    Reply<10> r;
    ret = executa(6, 1, in, r);
    if (ret == 0) {
      if (CUPA != nullptr) *CUPA = r[0];
      if (CUPR != nullptr) *CUPR = r[1];
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Estado_Cupom_Atual%s - fim com ret=%d CUPA=%d CUPR=%d \n", ret, CUPA != nullptr ? *CUPA : 0,
          CUPR != nullptr ? *CUPR : 0);
  return ret;
}

std::uint16_t Estado_Pos_Reducao(std::uint8_t* PosReducao) {
  if (PosReducao != nullptr) *PosReducao = 0;
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Estado_Pos_Reducao%s - inicio  \n");
  if (ret == 0) {
    Input in;
    Reply<10> r;
    ret = executa(4, 1, in, r);
    if (ret == 0 && PosReducao != nullptr) *PosReducao = r[1];
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Estado_Pos_Reducao%s - fim com ret=%d - PosReducao=%d \n", ret,
          PosReducao != nullptr ? *PosReducao : 0);
  return ret;
}

std::uint16_t Consulta_Data_Hora_Segundos(char* DataHora) {
  dumpLog("Consulta_Data_Hora_Segundos \n");
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<20> r;
    ret = executa(63, 1, in, r);
    if (ret == 0 && DataHora != nullptr) {
      // DD/MM/YYYY HH:MM:SS from the digits at 1..14; no terminator.
      const char formato[] = "01/23/4567 89:ab:cd";
      for (std::size_t i = 0; i + 1 < sizeof formato; ++i) {
        const char f = formato[i];
        const int digito = f >= 'a' ? f - 'a' + 10 : f - '0';
        DataHora[i] = (f >= '0' && f <= '9') || (f >= 'a' && f <= 'd') ? static_cast<char>(r[1 + static_cast<std::size_t>(digito)]) : f;
      }
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Consulta_Data_Hora_Segundos%s - fim com ret=%d DataHora=%s \n", ret,
          ret == 0 && DataHora != nullptr ? std::string(DataHora, 19).c_str() : "");
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4Status(char* Status) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4Status%s - inicio \n");
  std::array<char, 15> status{"00000000000000"};
  if (ret == 0) {
    Input in;  // no input
    Reply<20> r;
    ret = executa(5, 1, in, r);
    if (ret == 0) {
      auto marca = [&](std::size_t pos, bool ligado) { status[pos] = ligado ? '1' : '0'; };
      marca(1, r[1] != 0);
      marca(2, r[2] != 0);
      marca(3, r[3] != 0);
      marca(5, r[4] != 0);
      marca(8, r[8] == 0);  // inverted
      marca(10, r[10] != 0);
      // Paper low is reported once, then again only after the configured
      // number of further queries.
      if (r[5] != 0) {
        if (iLowPaperCounter == 0) {
          marca(4, true);
          iLowPaperCounter = std::atoi(sLowPaperCounter.data());
        } else {
          --iLowPaperCounter;
        }
      }
    }
    copy_out(Status, view(status), status.size());
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4Status%s - fim com ret=%d - Status=%s \n", ret, OPENOK != 0 ? status.data() : "");
  return ret;
}

ORBELAN_API unsigned short E4StaECF(unsigned char* Opc, unsigned char* Resposta) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4StaECF%s - inicio \n");
  if (ret == 0) {
    Input in;
    Reply<10> r;
    ret = executa(6, 1, in, r);
    if (ret == 0) {
      const std::uint8_t estado = r[0];
      switch (estado) {
        case 0: case 2: case 14: case 16: case 19: case 20: case 22: case 23: case 25:
          if (Opc != nullptr) *Opc = estado;
          break;
        case 17: case 18:
          if (Opc != nullptr) *Opc = 18;
          break;
        case 26:  // management report open
          if (Opc != nullptr) *Opc = 13;
          break;
        default:
          ORB_LOG("E4StaECF%s - estado invalido %d\n", estado);
          break;
      }
      if (Resposta != nullptr) *Resposta = r[1];
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4StaECF%s - fim com ret=%d - Opc=%d - Resposta=%d\n", ret, Opc != nullptr ? *Opc : 0,
          Resposta != nullptr ? *Resposta : 0);
  return ret;
}

ORBELAN_API unsigned short E4RdData(char* Data, char* Hora, unsigned char* Verao, char* Movimento,
                                    unsigned char* Reducao) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4RdData%s - inicio \n");
  if (ret == 0) {
    Input in;
    Reply<40> r;
    ret = executa(10, 1, in, r);
    if (ret == 0) {
      copy_out(Data, r.field(12, 8), 9);
      copy_out(Hora, r.field(20, 4), 5);
      if (Verao != nullptr) *Verao = r[11];
      copy_out(Movimento, r.field(25, 8), 9);
      if (Reducao != nullptr) *Reducao = r[24];
    }
  }
  ret = TrataRetorno(ret);
  if (ret == 0)
    ORB_LOG("E4RdData%s - fim com ret=%d - Data=%s Hora=%s Verao=%d, Movimento=%s, Reducao=%d\n", ret,
            Data != nullptr ? Data : "", Hora != nullptr ? Hora : "", Verao != nullptr ? *Verao : 0,
            Movimento != nullptr ? Movimento : "", Reducao != nullptr ? *Reducao : 0);
  else
    ORB_LOG("E4RdData%s - fim com ret=%d - Data=%s Hora=%s Verao=%d, Movimento=%s, Reducao=%d\n", ret, "", "", 0,
            "", 0);
  return ret;
}

ORBELAN_API unsigned short E4Verao(unsigned char Opc) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4Verao%s - inicio - Opc=%d \n", Opc);
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<10> r;
    ret = executa(Opc != 0 ? 24 : 25, 0, in, r);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4Verao%s - fim com ret=%d \n", ret);
  return ret;
}

}  // extern "C"
