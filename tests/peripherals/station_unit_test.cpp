// The printer's document station: device selection, paper sensing, spacing.
#include <vector>

#include "frame/identity.h"
#include "orbelan.h"
#include "peripherals/station.h"
#include "support/fixture.h"

using namespace orbtest;
using namespace orbelan;

namespace {

using Station = Session;

unsigned half_second_waits() {
  unsigned n = 0;
  for (const auto& w : waits()) n += w.micro && w.amount == 500000u;
  return n;
}

TEST_F(Station, SelectionIsSentOnlyWhenTheDeviceDiffersAndRetriedThreeTimes) {
  stick(80, 0, {'4'});
  EXPECT_EQ(Seleciona_Dispositivo(kEstacaoDocumento), 0);
  EXPECT_EQ(commands(), (Cmds{80}));
  // The printer never takes it: three tries with the same input, half a second
  // apart, and still 0 (the paper check decides later).
  vp_clear_calls();
  clear_waits();
  stick(80, 0, {'2'});
  EXPECT_EQ(Seleciona_Dispositivo(kEstacaoDocumento), 0);
  EXPECT_EQ(commands(), (Cmds{80, 79, 80, 79, 80, 79, 80}));
  const auto ops = operations();
  EXPECT_EQ(input(ops[1]), input(ops[5]));
  EXPECT_EQ(input(ops[1]).back(), '4');
  EXPECT_EQ(half_second_waits(), 2u);
  vp_clear_calls();  // a refused selection stops the tries
  push(79, 1);
  EXPECT_EQ(Seleciona_Dispositivo(kEstacaoDocumento), 2561);
  EXPECT_EQ(vp_count_cmd(79), 1);
}

TEST_F(Station, PaperIsInPlaceOnlyWhenBothSensorsSeeIt) {
  clear_waits();
  stick(5, 0, {0, 1, 0, 0});
  EXPECT_EQ(Papel_Posicionado(), 2871);
  EXPECT_EQ(vp_count_cmd(5), 5);  // read five times, half a second apart
  EXPECT_EQ(half_second_waits(), 4u);
  stick(5, 0, {0, 0, 0, 1});
  push(5, 0, {0, 1, 0, 1});
  EXPECT_EQ(Papel_Posicionado(), 0);
}

TEST_F(Station, OtherPrinterTypesHaveNoDocumentStation) {
  TipoImp = 5;
  std::uint8_t device = 9;
  EXPECT_EQ(Ler_Dispositivo_Selecionado(&device), 2561);
  EXPECT_EQ(device, 0);
  EXPECT_EQ(Seleciona_Dispositivo(kEstacaoDocumento), 2561);
  EXPECT_EQ(Papel_Posicionado(), 2561);
  EXPECT_EQ(vp_count_cmd(80) + vp_count_cmd(79) + vp_count_cmd(5), 0);
  LerEspacoDocumento(&device);
  EXPECT_EQ(device, 2);
  TipoImp = 4;
  LerEspacoDocumento(&device);
  EXPECT_EQ(device, 3);
}

TEST_F(Station, DocumentSpacing) {
  const std::uint8_t spacing = 3;
  push(6, 0, {2, 0});
  EXPECT_EQ(EspacoDocumento(&spacing), 0);
  EXPECT_EQ(commands(), (Cmds{6}));  // nothing sent while a document is open
  // The printer's line unit read back as lines per inch, truncated.
  for (const auto& [raw, lines] : {std::pair{25, 3u}, {24, 2u}, {0, 0u}, {255, 30u}}) {
    push(237, 0, {static_cast<std::uint8_t>(raw), 7});
    unsigned l = 99, d = 99;
    EXPECT_EQ(Le_Espaco_Entre_Linhas_Documentos(&l, &d), 0);
    EXPECT_EQ(l, lines) << raw;
    EXPECT_EQ(d, 7u);
  }
}

}  // namespace
