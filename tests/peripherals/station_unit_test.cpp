// The printer's document station: device selection, paper sensing, spacing.
#include <algorithm>
#include <vector>

#include "frame/identity.h"
#include "orbelan.h"
#include "peripherals/station.h"
#include "support/fixture.h"

using namespace orbtest;
using namespace orbelan;

namespace {

using Station = Session;

auto half_second_waits() {
  return std::ranges::count_if(waits(), [](const Wait& w) { return w.micro && w.amount == 500000u; });
}

// A printer that never takes the selection: three tries with the same input,
// half a second apart, and still 0 (the paper check decides later).
TEST_F(Station, SelectionIsRetriedThreeTimesAndStopsOnARefusal) {
  clear_waits();
  stick(80, 0, {'2'});
  EXPECT_EQ(Seleciona_Dispositivo(kEstacaoDocumento), 0);
  EXPECT_EQ(commands(), (Cmds{80, 79, 80, 79, 80, 79, 80}));
  EXPECT_EQ(input(operations()[1]), input(operations()[5]));  // the sequence field too
  EXPECT_EQ(payload(79), Bytes{'4'});
  EXPECT_EQ(half_second_waits(), 2);
  vp_clear_calls();  // a refused selection stops the tries
  push(79, 1);
  EXPECT_EQ(Seleciona_Dispositivo(kEstacaoDocumento), 2561);
  EXPECT_EQ(vp_count_cmd(79), 1);
}

TEST_F(Station, PaperIsInPlaceOnlyWhenBothSensorsSeeIt) {
  clear_waits();
  stick(5, 0, {0, 1, 0, 0});
  EXPECT_EQ(Papel_Posicionado(), 2871);
  EXPECT_EQ(half_second_waits(), 4);  // five reads, half a second apart
  stick(5, 0, {0, 0, 0, 1});
  push(5, 0, {0, 1, 0, 1});
  EXPECT_EQ(Papel_Posicionado(), 0);
}

TEST_F(Station, OtherPrinterTypesHaveNoDocumentStationAndDocumentSpacing) {
  TipoImp = 5;
  std::uint8_t device = 9;
  EXPECT_EQ(Ler_Dispositivo_Selecionado(&device), 2561);
  EXPECT_EQ(device, 0);
  EXPECT_EQ(Seleciona_Dispositivo(kEstacaoDocumento), 2561);
  EXPECT_EQ(Papel_Posicionado(), 2561);
  LerEspacoDocumento(&device);
  EXPECT_EQ(device, 2);
  TipoImp = 4;
  LerEspacoDocumento(&device);
  EXPECT_EQ(device, 3);
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

}  // namespace
