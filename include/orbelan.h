/* libOrbelan: the fiscal printer (ECF) library for point-of-sale applications.
 *
 * Every function returns a result code: 0 for success, otherwise one of the
 * codes below or a translated printer code. Amounts, quantities, dates and
 * identifiers are passed as text; outputs are written into caller buffers.
 * Call the library between E4Open and E4Close; calls from several threads at
 * once are served one whole call after the other. */
#ifndef ORBELAN_H
#define ORBELAN_H

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define ORBELAN_API __attribute__((visibility("default")))
#else
#define ORBELAN_API
#endif

/* ---- result codes ------------------------------------------------------------ */
#define E4_OK 0                      /* success */
#define E4_ERR_NO_MEMORY 255         /* out of memory while printing a block of lines */
#define E4_ERR_ARGUMENT 2049         /* invalid argument or invalid printer response */
#define E4_ERR_CHEQUE_FILE 2560      /* the cheque layout file is missing */
#define E4_ERR_NOT_AVAILABLE 2561    /* nothing to act on, wrong state, or not for this printer */
#define E4_ERR_REGISTER_RANGE 2582   /* register out of range, not found, or category full */
#define E4_ERR_QUANTITY 2619         /* quantity too large */
#define E4_ERR_ITEM_VALUE 2626       /* item value longer than 9 characters */
#define E4_ERR_CNF_STATE 2634        /* non-fiscal coupon in a state that cannot be closed */
#define E4_ERR_ITEM_CODE 2706        /* item code longer than 14 characters */
#define E4_ERR_CANCEL_REPORT 2751    /* cancellation asked for after a management report */
#define E4_ERR_REDUCTION_REG 2840    /* E4ValRed: register not served */
#define E4_ERR_TAX_REG 2841          /* E4ValImp: not a tax register */
#define E4_ERR_REGISTER 2842         /* invalid register */
#define E4_ERR_CATEGORY 2843         /* invalid category when starting a register walk */
#define E4_ERR_CF_STATE 2862         /* fiscal coupon in a state that cannot be closed */
#define E4_ERR_WALK_END 2867         /* end of a register walk */
#define E4_ERR_PERIPHERAL_START 2859 /* a peripheral driver failed to start */
#define E4_ERR_ALREADY_OPEN 2868     /* the session is already open */
#define E4_ERR_NOT_OPEN 2869         /* the session is not open */
#define E4_ERR_NO_PAPER 2871         /* paper or document not in place */
#define E4_ERR_NOT_REMOVED 2872      /* document not removed */
#define E4_ERR_CHEQUE_LAYOUT 2880    /* cheque layout not found or unreadable */
#define E4_ERR_LIBRARY 2900          /* driver library, entry point or plug-in not available */
#define E4_ERR_FILE_OPEN 2902        /* a local state file cannot be opened */
#define E4_ERR_FILE_WRITE 2903       /* a local state file cannot be written */
#define E4_ERR_FILE_READ 2904        /* a local state file cannot be read */
#define E4_ERR_CUT_REFUSED 2960      /* manual cut refused while cutting after each document */

/* ---- session and frame ---------------------------------------------------------- */
ORBELAN_API unsigned short E4Open(unsigned char a, unsigned char b);
ORBELAN_API unsigned short E4OpenEsp(unsigned char *pa, unsigned char b);
ORBELAN_API unsigned short E4Close(void);
ORBELAN_API unsigned short E4GetError(unsigned int *err);
ORBELAN_API unsigned short E4PutError(int code);

/* ---- identity, clock and status ------------------------------------------------ */
ORBELAN_API unsigned short E4InfECF(char *Serie, char *CGC, char *IE, char *IM, char *Cliche,
                                    char *Firm, char *Seq, unsigned char *Modelo);
ORBELAN_API unsigned short E4InfEspECF(int Opc, char *Retorno);
ORBELAN_API unsigned short E4Status(char *Status);
ORBELAN_API unsigned short E4StaECF(unsigned char *Opc, unsigned char *Resposta);
ORBELAN_API unsigned short E4RdData(char *Data, char *Hora, unsigned char *Verao, char *Movimento,
                                    unsigned char *Reducao);
ORBELAN_API unsigned short E4Verao(unsigned char Opc);

/* ---- fiscal coupon ---------------------------------------------------------------- */
/* Opc: 2 fiscal coupon, 4 X reading, 5 Z reduction, 17/18/22 credit/debit voucher
 * (Param: payment register 60-78), 19 non-fiscal coupon, 20 management report
 * (Param: report kind 0-19), 21 second copy of the last voucher. */
ORBELAN_API unsigned short E4IniCP(unsigned char Opc, const char *Param);
ORBELAN_API unsigned short E4IniCup(unsigned char Opc);
ORBELAN_API unsigned short E4Cons(const char *Nome, const char *Numero, const char *Endereco);
ORBELAN_API unsigned short E4IteCF(unsigned char RP, const char *Codigo, const char *Descricao,
                                   const char *Quantidade, const char *Valor);
ORBELAN_API unsigned short E4IteCFEsp(unsigned char RP, const char *Codigo, const char *Descricao,
                                      const char *Quantidade, const char *Valor,
                                      const char *Unidade);
ORBELAN_API unsigned short E4IteCFEsp2(unsigned char RP, const char *Codigo, const char *Descricao,
                                       const char *Quantidade, const char *Valor,
                                       const char *Unidade, unsigned char IAT);
ORBELAN_API unsigned short E4ImpItem(int mode);
ORBELAN_API unsigned short E4CanIt(unsigned char RP, unsigned short SeqItem);
ORBELAN_API unsigned short E4DesIt(unsigned char Opc, unsigned char RP, unsigned short SeqItem,
                                   const char *Valor, const char *Descricao);
/* For a percentage increase (Opc 2) the amount added is written back into Valor,
 * which must then hold at least 13 bytes. */
ORBELAN_API unsigned short E4AcrIt(unsigned char Opc, unsigned char RP, unsigned short SeqItem,
                                   char *Valor, const char *Descricao);
ORBELAN_API unsigned short E4DesCup(unsigned char Opc, const char *Valor);
ORBELAN_API unsigned short E4AcrCup(unsigned char Opc, const char *Valor);
ORBELAN_API unsigned short E4RegPag(unsigned char RP, const char *Valor);
ORBELAN_API unsigned short E4RegPagEsp(unsigned char RP, const char *Valor, const char *Mensagem);
ORBELAN_API unsigned short E4FimCP(int first, const char *Prox);
ORBELAN_API unsigned short E4FimCup(void);
ORBELAN_API unsigned short E4CorteImp(int Corte);
ORBELAN_API unsigned short E4AvancaPapel(unsigned char Estado, int qtdeAvanco);
ORBELAN_API unsigned short E4CortaPapel(void);
ORBELAN_API unsigned short E4CanCup(void);
ORBELAN_API unsigned short E4CanCupEsp(void);

/* ---- non-fiscal documents, vouchers, management reports ------------------------------ */
ORBELAN_API unsigned short E4OpeCNF(unsigned char Reg, const char *Sinal, const char *Descricao,
                                    const char *Valor);
ORBELAN_API unsigned short E4CancelaCCD(const char *nrCoo);
ORBELAN_API unsigned short E4CancelaCCDEsp(const char *nCoo);
ORBELAN_API unsigned short E4Print(const char *strLinha);
ORBELAN_API unsigned short E4ImpVinc(const char *path, const char *QtdeLinhas);
ORBELAN_API unsigned short E4FimDoc(void);
ORBELAN_API unsigned short E4ProgOp(const char *nome);
ORBELAN_API unsigned short E4ConImp(char Dispositivo, int Margem, int EspVertical);
ORBELAN_API unsigned short E4ExpDoc(void);

/* ---- registers and readings --------------------------------------------------------- */
/* Categories: 1 non-fiscal totalisers, 2 tax rates on goods, 4 tax rates on
 * services, 5 payment methods, 6 management report types. */
ORBELAN_API unsigned short E4RPPrim(unsigned char Cat);
ORBELAN_API unsigned short E4RPLe(unsigned char Cat, char *Compl, char *Sinal, unsigned char *RP);
ORBELAN_API unsigned short E4RPProx(unsigned char Cat, char *Compl, char *Sinal, unsigned char *RP);
ORBELAN_API unsigned short E4VerRP(int RP, char *Descricao, char *Sinal);
ORBELAN_API unsigned short E4RPCria(unsigned char Cat, const char *Nome, const char *Param,
                                    unsigned char *Reg);
/* Values are written as text; pass at least 19 bytes (21 for E4RegMemFisc). */
ORBELAN_API unsigned short E4ValAtu(unsigned char Reg, char *Valor);
ORBELAN_API unsigned short E4ValRed(unsigned char Reg, char *Valor);
ORBELAN_API unsigned short E4ValImp(unsigned char Reg, char *Valor);
ORBELAN_API unsigned short E4InfCup(unsigned short Reg, char *Valor);
ORBELAN_API unsigned short E4RegMemFisc(unsigned short nRedZ, char *Valor);
/* Buffer: a zeroed area of at least 2250 bytes. */
ORBELAN_API unsigned short E4DadosReducao(char *Buffer);
ORBELAN_API unsigned short E4LMF(unsigned char Tipo, unsigned char Opc, const char *Inicio,
                                 const char *Final);
ORBELAN_API unsigned short E4LMFSerial(unsigned char Tipo, unsigned char Opc, const char *Inicio,
                                       const char *Final, const char *Arquivo);
ORBELAN_API unsigned short E4LeMFD(unsigned char Tipo, const char *Inicio, const char *Final,
                                   const char *arqDestino);
ORBELAN_API unsigned short E4LeMFDEsp(int Usuario, unsigned char Tipo, const char *Inicio,
                                      const char *Final, const char *arqDestino);

/* ---- peripherals and monitoring agent ------------------------------------------------ */
ORBELAN_API unsigned short E4ImpChq(unsigned short Banco, const char *Nome, const char *Cidade,
                                    const char *Data, const char *Valor, const char *LinAdic1,
                                    const char *LinAdic2);
/* Texto must have room for one more character. */
ORBELAN_API unsigned short E4Aut(char *Texto);
ORBELAN_API unsigned short E4AutEsp(char *Texto, int Tipo);
ORBELAN_API unsigned short E4LeCMC7(char *Valor);
ORBELAN_API unsigned short E4OpenGv(void);
ORBELAN_API unsigned short E4StatGv(unsigned char *Status);
ORBELAN_API unsigned short E4ImpCodB(int Tipo, int PosicaoHRI, int Altura, int Fonte,
                                     const char *CodBarra);
ORBELAN_API unsigned short E4infOvitraM(const char *codInf, const char *tipoInf, const char *descr,
                                        const char *extra);

/* ---- the _JP family ------------------------------------------------------------------ */
ORBELAN_API unsigned short E4IniCP_JP(unsigned char Opc, const char *Param);
ORBELAN_API unsigned short E4RegPag_JP(unsigned char RP, const char *Valor);
ORBELAN_API unsigned short E4RegPagEsp_JP(unsigned char RP, const char *Valor, const char *Mensagem);
ORBELAN_API unsigned short E4EstornaPgto_JP(unsigned char RPO, unsigned char RPD, const char *Valor);
ORBELAN_API unsigned short E4CanCP_JP(unsigned char Avanca, int Linhas);
ORBELAN_API unsigned short E4CanCPEsp_JP(unsigned char Avanca, int Linhas);
ORBELAN_API unsigned short E4CanCupEsp_JP(void);
ORBELAN_API unsigned short E4FimCPEsp_JP(unsigned char Avanca, int Linhas, const char *Prox);
ORBELAN_API unsigned short E4FimDoc_JP(void);
ORBELAN_API unsigned short E4RPCria_JP(unsigned char Cat, const char *Nome, const char *Param,
                                       unsigned char *Reg);
ORBELAN_API unsigned short E4RPLe_JP(unsigned char Cat, char *Compl, char *Sinal, unsigned char *RP);
ORBELAN_API unsigned short E4RPProx_JP(unsigned char Cat, char *Compl, char *Sinal,
                                       unsigned char *RP);
ORBELAN_API unsigned short E4ValAtu_JP(unsigned char Reg, char *Valor);
ORBELAN_API unsigned short E4ValAtuEsp_JP(unsigned char Reg, char *Valor);

/* ---- result code descriptions ------------------------------------------------------- */
/* A short description of a result code, in Portuguese (english == 0) or English, for
 * messages to the operator or the log of the application. Codes the library produces
 * itself have their own text; a code translated from the printer's own numbering is
 * described by the printer codes it stands for (E4GetError gives the printer's code of
 * the last error); any other code gets a generic text. Never returns NULL. */
#define E4_DESCREVE_(pt, en) return english ? (en) : (pt)
static inline const char *E4DescricaoRetorno(unsigned short code, int english) {
  switch (code) {
    case 0: E4_DESCREVE_("Sucesso", "Success");
    case 255: E4_DESCREVE_("Memoria insuficiente ao imprimir um bloco de linhas",
                          "Out of memory while printing a block of lines");
    case 2049: E4_DESCREVE_("Argumento invalido ou resposta invalida da impressora",
                           "Invalid argument or invalid printer response");
    case 2560: E4_DESCREVE_("Arquivo de layout de cheque ausente", "Cheque layout file missing");
    case 2561: E4_DESCREVE_("Nada a fazer, estado incorreto ou indisponivel nesta impressora",
                           "Nothing to act on, wrong state, or not available for this printer");
    case 2582: E4_DESCREVE_("Registrador fora da faixa, nao encontrado ou categoria cheia",
                           "Register out of range, not found, or category full");
    case 2619: E4_DESCREVE_("Quantidade muito grande", "Quantity too large");
    case 2626: E4_DESCREVE_("Valor do item muito longo (mais de 9 caracteres)",
                           "Item value too long (more than 9 characters)");
    case 2634: E4_DESCREVE_("Cupom nao fiscal em estado que nao permite o fechamento",
                           "Non-fiscal coupon in a state that cannot be closed");
    case 2706: E4_DESCREVE_("Codigo do item muito longo (mais de 14 caracteres)",
                           "Item code too long (more than 14 characters)");
    case 2751: E4_DESCREVE_("Cancelamento pedido apos um relatorio gerencial",
                           "Cancellation asked for after a management report");
    case 2840: E4_DESCREVE_("E4ValRed: registrador nao atendido", "E4ValRed: register not served");
    case 2841: E4_DESCREVE_("E4ValImp: o registrador nao e de imposto",
                           "E4ValImp: not a tax register");
    case 2842: E4_DESCREVE_("Registrador invalido", "Invalid register");
    case 2843: E4_DESCREVE_("Categoria invalida ao iniciar a leitura dos registradores",
                           "Invalid category when starting a register walk");
    case 2859: E4_DESCREVE_("Falha ao iniciar um driver de periferico",
                           "A peripheral driver failed to start");
    case 2862: E4_DESCREVE_("Cupom fiscal em estado que nao permite o fechamento",
                           "Fiscal coupon in a state that cannot be closed");
    case 2867: E4_DESCREVE_("Fim da lista de registradores", "End of the register walk");
    case 2868: E4_DESCREVE_("Sessao ja aberta", "Session already open");
    case 2869: E4_DESCREVE_("Sessao nao aberta (falta E4Open)", "Session not open (E4Open first)");
    case 2871: E4_DESCREVE_("Papel ou documento ausente", "Paper or document not in place");
    case 2872: E4_DESCREVE_("Documento nao retirado", "Document not removed");
    case 2880: E4_DESCREVE_("Layout de cheque nao encontrado ou ilegivel",
                           "Cheque layout not found or unreadable");
    case 2900: E4_DESCREVE_("Biblioteca do driver, ponto de entrada ou plug-in indisponivel",
                           "Driver library, entry point or plug-in not available");
    case 2902: E4_DESCREVE_("Nao foi possivel abrir um arquivo local",
                           "A local file cannot be opened");
    case 2903: E4_DESCREVE_("Nao foi possivel gravar um arquivo local, ou pacote recusado",
                           "A local file cannot be written, or a transfer packet was refused");
    case 2904: E4_DESCREVE_("Nao foi possivel ler um arquivo local", "A local file cannot be read");
    case 2960: E4_DESCREVE_("Corte manual recusado: corte ao fim de cada documento ligado",
                           "Manual cut refused while cutting after each document is on");
    case 2563: E4_DESCREVE_("Erro da impressora (codigo 3)", "Printer error (printer code 3)");
    case 2564: E4_DESCREVE_("Erro da impressora (codigo 4)", "Printer error (printer code 4)");
    case 2570: E4_DESCREVE_("Erro da impressora (codigos 10, 234, 387, 388)",
                           "Printer error (printer codes 10, 234, 387, 388)");
    case 2574: E4_DESCREVE_("Erro da impressora (codigo 14)", "Printer error (printer code 14)");
    case 2576: E4_DESCREVE_("Erro da impressora (codigo 16)", "Printer error (printer code 16)");
    case 2578: E4_DESCREVE_("Erro da impressora (codigo 18)", "Printer error (printer code 18)");
    case 2579: E4_DESCREVE_("Erro da impressora (codigo 19)", "Printer error (printer code 19)");
    case 2580: E4_DESCREVE_("Erro da impressora (codigos 182, 198, 204-206, 371)",
                           "Printer error (printer codes 182, 198, 204-206, 371)");
    case 2583: E4_DESCREVE_("Erro da impressora (codigos 23, 26)",
                           "Printer error (printer codes 23, 26)");
    case 2585: E4_DESCREVE_("Erro da impressora (codigo 25)", "Printer error (printer code 25)");
    case 2592: E4_DESCREVE_("Erro da impressora (codigos 15, 32)",
                           "Printer error (printer codes 15, 32)");
    case 2595: E4_DESCREVE_("Erro da impressora (codigo 35)", "Printer error (printer code 35)");
    case 2602: E4_DESCREVE_("Erro da impressora (codigos 42, 192)",
                           "Printer error (printer codes 42, 192)");
    case 2609: E4_DESCREVE_("Erro da impressora (codigos 216, 374, 376)",
                           "Printer error (printer codes 216, 374, 376)");
    case 2613: E4_DESCREVE_("Erro da impressora (codigo 230)", "Printer error (printer code 230)");
    case 2623: E4_DESCREVE_("Erro da impressora (codigo 63)", "Printer error (printer code 63)");
    case 2625: E4_DESCREVE_("Erro da impressora (codigo 65)", "Printer error (printer code 65)");
    case 2628: E4_DESCREVE_("Erro da impressora (codigo 68)", "Printer error (printer code 68)");
    case 2629: E4_DESCREVE_("Erro da impressora (codigo 69)", "Printer error (printer code 69)");
    case 2635: E4_DESCREVE_("Erro da impressora (codigos 70, 72, 75, 100 e outros)",
                           "Printer error (printer codes 70, 72, 75, 100 and others)");
    case 2636: E4_DESCREVE_("Erro da impressora (codigo 76)", "Printer error (printer code 76)");
    case 2648: E4_DESCREVE_("Erro da impressora ou do driver (codigos 88, 65532)",
                           "Printer or driver error (codes 88, 65532)");
    case 2653: E4_DESCREVE_("Erro da impressora (codigo 93)", "Printer error (printer code 93)");
    case 2655: E4_DESCREVE_("Erro da impressora (codigo 95)", "Printer error (printer code 95)");
    case 2656: E4_DESCREVE_("Erro da impressora (codigo 96)", "Printer error (printer code 96)");
    case 2657: E4_DESCREVE_("Erro da impressora (codigo 97)", "Printer error (printer code 97)");
    case 2666: E4_DESCREVE_("Erro da impressora (codigos 8192, 8196)",
                           "Printer error (printer codes 8192, 8196)");
    case 2670: E4_DESCREVE_("Erro da impressora (codigos 224, 339, 360, 361 e outros)",
                           "Printer error (printer codes 224, 339, 360, 361 and others)");
    case 2683: E4_DESCREVE_("Erro da impressora (codigos 123, 8193)",
                           "Printer error (printer codes 123, 8193)");
    case 2690: E4_DESCREVE_("Erro da impressora (codigos 77-79, 86, 98, 139 e outros)",
                           "Printer error (printer codes 77-79, 86, 98, 139 and others)");
    case 2691: E4_DESCREVE_("Erro da impressora (codigos 186, 368, 369)",
                           "Printer error (printer codes 186, 368, 369)");
    case 2693: E4_DESCREVE_("Erro da impressora (codigo 133)", "Printer error (printer code 133)");
    case 2698: E4_DESCREVE_("Erro da impressora (codigo 138)", "Printer error (printer code 138)");
    case 2701: E4_DESCREVE_("Erro da impressora (codigo 116)", "Printer error (printer code 116)");
    case 2702: E4_DESCREVE_("Erro da impressora (codigo 142)", "Printer error (printer code 142)");
    case 2707: E4_DESCREVE_("Erro da impressora (codigo 147)", "Printer error (printer code 147)");
    case 2724: E4_DESCREVE_("Erro da impressora (codigo 164)", "Printer error (printer code 164)");
    case 2743: E4_DESCREVE_("Erro da impressora (codigo 336)", "Printer error (printer code 336)");
    case 2744: E4_DESCREVE_("Erro da impressora (codigos 254, 282, 346)",
                           "Printer error (printer codes 254, 282, 346)");
    case 2745: E4_DESCREVE_("Erro da impressora (codigos 180, 200, 223, 226)",
                           "Printer error (printer codes 180, 200, 223, 226)");
    case 2747: E4_DESCREVE_("Erro da impressora (codigos 252, 253, 255-257, 262 e outros)",
                           "Printer error (printer codes 252, 253, 255-257, 262 and others)");
    case 2748: E4_DESCREVE_("Erro da impressora (codigos 337, 351)",
                           "Printer error (printer codes 337, 351)");
    case 2749: E4_DESCREVE_("Erro da impressora (codigos 220, 229, 343, 348)",
                           "Printer error (printer codes 220, 229, 343, 348)");
    case 2821: E4_DESCREVE_("Erro da impressora (codigo 17)", "Printer error (printer code 17)");
    case 2822: E4_DESCREVE_("Erro da impressora (codigo 83)", "Printer error (printer code 83)");
    case 2854: E4_DESCREVE_("Erro da impressora (codigo 269)", "Printer error (printer code 269)");
    case 2855: E4_DESCREVE_("Erro da impressora (codigo 268)", "Printer error (printer code 268)");
    case 2866: E4_DESCREVE_("Erro da impressora (codigos 225, 233)",
                           "Printer error (printer codes 225, 233)");
    default: break;
  }
  if (code >= 1 && code <= 389)
    E4_DESCREVE_("Codigo da impressora repassado sem traducao",
                 "Printer code passed on untranslated");
  E4_DESCREVE_("Codigo de retorno desconhecido", "Unknown result code");
}
#undef E4_DESCREVE_

#ifdef __cplusplus
}
#endif
#endif /* ORBELAN_H */
