/* A first run: open a session on the virtual printer, show its identity and
 * status, close, and print the trace log. */
#include <stdio.h>
#include <string.h>

#include "orbelan.h"
#include "vprinter.h"

static void show(const char *what, unsigned short ret) { printf("%-28s -> %u\n", what, ret); }

int main(void) {
  FILE *cfg = fopen("Orbelan.cfg", "w");
  if (cfg != NULL) {
    fputs("Trace=1\nTamanho=5000000", cfg);
    fclose(cfg);
  }
  vp_answer_identity();

  show("E4Open", E4Open(0, 0));

  char serie[32] = "", cgc[32] = "", ie[32] = "", im[32] = "", cliche[600] = "", firm[16] = "",
       seq[16] = "";
  unsigned char modelo = 0;
  show("E4InfECF", E4InfECF(serie, cgc, ie, im, cliche, firm, seq, &modelo));
  printf("  serial %s  CNPJ %s  IE %s  IM %s\n  firmware %s  sequence %s  model %u\n", serie, cgc, ie,
         im, firm, seq, modelo);

  char status[16] = "";
  show("E4Status", E4Status(status));
  printf("  status %s\n", status);

  unsigned char estado = 0, resposta = 0;
  show("E4StaECF", E4StaECF(&estado, &resposta));
  printf("  document state %u\n", estado);

  char data[9] = "", hora[5] = "", movimento[9] = "";
  unsigned char verao = 0, reducao = 0;
  show("E4RdData", E4RdData(data, hora, &verao, movimento, &reducao));
  printf("  date %s time %s business date %s reduced today %u\n", data, hora, movimento, reducao);

  show("E4Close", E4Close());

  printf("\n---- Orbelan.txt ----\n");
  FILE *log = fopen("Orbelan.txt", "r");
  if (log != NULL) {
    char line[512];
    while (fgets(line, sizeof line, log) != NULL) fputs(line, stdout);
    fclose(log);
  }
  return 0;
}
