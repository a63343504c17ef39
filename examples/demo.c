/* A first run: a whole business day on the virtual printer, from a factory-
 * fresh printer to its Z reduction. Each call is shown with its result and
 * what the result means; then the paper tape the printer printed, the
 * reduction's record and the end of the library's trace log. */
#include <stdio.h>
#include <string.h>

#include "orbelan.h"
#include "vprinter.h"

static int failures;

static unsigned short show(const char *what, unsigned short ret) {
  printf("%-44s -> %4u  %s\n", what, ret, E4DescricaoRetorno(ret, 1));
  if (ret != 0) ++failures;
  return ret;
}

static void rule(const char *title) { printf("\n==== %s ====\n", title); }

/* Prints the last `count` lines of a text file. */
static void tail(const char *path, int count) {
  FILE *f = fopen(path, "r");
  if (f == NULL) {
    printf("(%s not found)\n", path);
    return;
  }
  static char lines[64][512];
  int n = 0;
  if (count > 64) count = 64;
  while (fgets(lines[n % count], sizeof lines[0], f) != NULL) ++n;
  fclose(f);
  for (int i = n > count ? n - count : 0; i < n; ++i) fputs(lines[i % count], stdout);
}

static void cat(const char *path) {
  FILE *f = fopen(path, "r");
  if (f == NULL) {
    printf("(%s not found)\n", path);
    return;
  }
  char line[512];
  while (fgets(line, sizeof line, f) != NULL) fputs(line, stdout);
  fclose(f);
}

/* The register of category `cat` whose description starts with `name`, found
 * by walking the category; `fallback` when there is none. */
static unsigned char find_register(unsigned char cat, const char *name, unsigned char fallback) {
  if (E4RPPrim(cat) != 0) return fallback;
  for (int guard = 0; guard < 64; ++guard) {
    char compl_[100] = "", sinal = 0;
    unsigned char rp = 0;
    if (E4RPLe(cat, compl_, &sinal, &rp) != 0) break;
    if (strncmp(compl_, name, strlen(name)) == 0) return rp;
  }
  return fallback;
}

/* E4DadosReducao's record: entries separated by commas, each a 15-character
 * label and its figures; the entries with some value are shown. */
static void show_reduction(const char *record) {
  char entry[128];
  const char *p = record;
  while (*p != '\0') {
    const char *comma = strchr(p, ',');
    size_t len = comma != NULL ? (size_t)(comma - p) : strlen(p);
    if (len >= sizeof entry) len = sizeof entry - 1;
    memcpy(entry, p, len);
    entry[len] = '\0';
    if (len > 15 && strspn(entry + 15, "0") != len - 15) printf("  %s\n", entry);
    if (comma == NULL) break;
    p = comma + 1;
  }
}

int main(void) {
  FILE *cfg = fopen("Orbelan.cfg", "w");
  if (cfg != NULL) {
    fputs("Trace=1\nTamanho=5000000", cfg);
    fclose(cfg);
  }
  /* Every run starts from a printer just out of the factory. */
  vp_use_model(1);
  vp_model_reset();

  rule("opening");
  show("E4Open(0, 0)", E4Open(0, 0));
  char serie[32] = "", cgc[32] = "", ie[32] = "", im[32] = "", cliche[600] = "", firm[16] = "",
       seq[16] = "";
  unsigned char modelo = 0;
  show("E4InfECF", E4InfECF(serie, cgc, ie, im, cliche, firm, seq, &modelo));
  printf("  serial %s  CNPJ %s  firmware %s\n", serie, cgc, firm);
  show("E4ProgOp(\"MARIA\")", E4ProgOp("MARIA"));

  rule("a sale");
  show("E4Cons(\"JOAO DA SILVA\", \"123.456.789-09\", ...)",
       E4Cons("JOAO DA SILVA", "123.456.789-09", "RUA DAS PALMEIRAS, 12"));
  show("E4IniCP(2, \"\")", E4IniCP(2, ""));
  show("E4IteCF(20, ARROZ 5 KG, 2 x 22,90)", E4IteCF(20, "7891000100101", "ARROZ 5 KG", "2,000", "22,90"));
  show("E4IteCF(22, FEIJAO 1 KG, 1 x 8,49)", E4IteCF(22, "7891000200202", "FEIJAO 1 KG", "1,000", "8,49"));
  show("E4IteCF(13, SAL 1 KG, 3 x 2,15)", E4IteCF(13, "7891000300303", "SAL 1 KG", "3,000", "2,15"));
  show("E4DesCup(0, \"5,00\")  discount", E4DesCup(0, "5,00"));
  char subtotal[32] = "";
  show("E4InfCup(504) subtotal", E4InfCup(504, subtotal));
  printf("  subtotal %s cents\n", subtotal);
  show("E4RegPag(61, \"40,00\")  card", E4RegPag(61, "40,00"));
  show("E4RegPag(60, \"30,00\")  cash", E4RegPag(60, "30,00"));
  show("E4FimCP(0, \"OBRIGADO PELA PREFERENCIA\")", E4FimCP(0, "OBRIGADO PELA PREFERENCIA"));

  rule("the card payment's voucher");
  show("E4IniCP(17, \"61\")", E4IniCP(17, "61"));
  show("E4Print(...)", E4Print("CARTAO DE CREDITO   AUT. 123456"));
  show("E4Print(...)", E4Print("VIA DO CLIENTE"));
  show("E4FimCP(0, \"\")", E4FimCP(0, ""));

  rule("a cash supply (non-fiscal coupon)");
  const unsigned char supply = find_register(1, "SUPRIMENTO", 41);
  printf("  totaliser \"SUPRIMENTO\" is register %u\n", supply);
  show("E4IniCP(19, \"\")", E4IniCP(19, ""));
  show("E4OpeCNF(SUPRIMENTO, \"+\", 100,00)", E4OpeCNF(supply, "+", "SUPRIMENTO", "100,00"));
  show("E4RegPag(60, \"100,00\")", E4RegPag(60, "100,00"));
  show("E4FimCP(0, \"\")", E4FimCP(0, ""));

  rule("a management report");
  show("E4IniCP(20, \"1\")", E4IniCP(20, "1"));
  show("E4Print(...)", E4Print("CONFERENCIA DO CAIXA 01"));
  show("E4Print(...)", E4Print("OPERADOR: MARIA"));
  show("E4Print(...)", E4Print("SEM DIVERGENCIAS"));
  show("E4FimCP(0, \"\")", E4FimCP(0, ""));

  rule("end of the day");
  show("E4IniCP(4, \"\")  X reading", E4IniCP(4, ""));
  show("E4IniCP(5, \"\")  Z reduction", E4IniCP(5, ""));
  static char record[2300];
  show("E4DadosReducao", E4DadosReducao(record));
  show_reduction(record);
  show("E4Close", E4Close());

  rule("paper tape (vprinter.tape)");
  cat(vp_tape_path());
  rule("end of the trace log (Orbelan.txt)");
  tail("Orbelan.txt", 30);

  printf("\n%s\n", failures == 0 ? "Every call succeeded." : "Some calls failed.");
  return failures == 0 ? 0 : 1;
}
