/* libOrbelan: the fiscal printer (ECF) library for point-of-sale applications.
 *
 * Every function returns a result code: 0 for success, otherwise one of the
 * codes below or a translated printer code. Amounts, quantities, dates and
 * identifiers are passed as text; outputs are written into caller buffers.
 * Call the library from one thread at a time, between E4Open and E4Close. */
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

#ifdef __cplusplus
}
#endif
#endif /* ORBELAN_H */
