// The printer's document station: device selection, other printer types, spacing.
#include <algorithm>

#include "frame/identity.h"
#include "peripherals/station.h"
#include "support/fixture.h"

using namespace orbtest;
using namespace orbelan;

using Station = Session;

// A printer never taking the selection: three tries, same input, half a second apart, still 0 (paper decides later).
TEST_F(Station, SelectionRetriesOtherPrinterTypesAndSpacing) {
  clear_waits();
  stick(80, 0, {'2'});
  EXPECT_EQ(Seleciona_Dispositivo(kEstacaoDocumento), 0);
  EXPECT_EQ(commands(), (Cmds{80, 79, 80, 79, 80, 79, 80}));
  EXPECT_EQ(input(operations()[1]), input(operations()[5]));  // the sequence field too
  EXPECT_EQ(payload(79), Bytes{'4'});
  EXPECT_EQ(std::ranges::count_if(waits(), [](const Wait& w) { return w.micro && w.amount == 500000u; }), 2);
  vp_clear_calls();  // a refused selection stops the tries
  push(79, 1);
  EXPECT_EQ(Seleciona_Dispositivo(kEstacaoDocumento), 2561);
  EXPECT_EQ(vp_count_cmd(79), 1);
  vp_clear_calls();  // other printer types have no document station
  TipoImp = 5;
  std::uint8_t device = 9;
  EXPECT_EQ(Ler_Dispositivo_Selecionado(&device), 2561);
  EXPECT_EQ(device, 0);
  EXPECT_EQ(Seleciona_Dispositivo(kEstacaoDocumento), 2561);
  EXPECT_EQ(Papel_Posicionado(), 2561);
  LerEspacoDocumento(&device);
  EXPECT_EQ(device, 2);  // 3 on the type with a station: see the document spacing sent at the opening
  TipoImp = 4;
  const std::uint8_t spacing = 3;
  push(6, 0, {2, 0});
  EXPECT_EQ(EspacoDocumento(&spacing), 0);
  EXPECT_EQ(sent(), (Cmds{6}));  // nothing sent on the refusals above, nor while a document is open
  // The printer's line unit read back as lines per inch, truncated.
  for (const auto& [raw, lines] : {std::pair{25, 3u}, {24, 2u}, {0, 0u}, {255, 30u}}) {
    push(237, 0, {static_cast<std::uint8_t>(raw), 7});
    unsigned l = 99, d = 99;
    EXPECT_EQ(Le_Espaco_Entre_Linhas_Documentos(&l, &d), 0);
    EXPECT_EQ(l, lines) << raw;
    EXPECT_EQ(d, 7u);
  }
}
