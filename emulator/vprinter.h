/* Control interface of the virtual printer, the stand-in printer driver
 * (libMrZandor.so) used by the tests and the demo.
 *
 * The virtual printer records every driver call and answers each command,
 * in this order of priority:
 *   1. the next reply queued for that command (vp_push_reply), used once;
 *   2. the sticky reply set for that command (vp_set_reply), used every time;
 *   3. the command handler table of the printer model (empty for now);
 *   4. success with an empty reply.
 * Usable from C and C++. */
#ifndef VPRINTER_H
#define VPRINTER_H

#ifdef __cplusplus
extern "C" {
#endif

#define VP_MAX_INPUT 1024 /* input bytes recorded per call */
#define VP_MAX_REPLY 4096 /* reply bytes a script may hold */

enum vp_call_kind { VP_INICIALIZA = 1, VP_FINALIZA, VP_OPERACAO, VP_VERSAOSW };

typedef struct vp_call {
  int kind;  /* enum vp_call_kind */
  int cmd;   /* FC_Operacao: command code; FC_VersaoSW: its argument */
  int flag;
  int mode;
  int inlen; /* as passed by the caller */
  unsigned char in[VP_MAX_INPUT]; /* the first min(inlen, VP_MAX_INPUT) bytes */
} vp_call;

/* Forget every script, every recorded call and the scripted init/finish results. */
void vp_reset(void);

/* Queue one reply for `cmd`: the driver result, the bytes written to the reply
 * buffer and the reply length reported to the caller. */
void vp_push_reply(int cmd, int result, const void *data, int len);
/* As vp_push_reply, reporting `reported_len` instead of `len` (which may be
 * larger than the caller's buffer: the library must clamp it). */
void vp_push_reply_len(int cmd, int result, const void *data, int len, int reported_len);
/* Set (or replace) the sticky reply for `cmd`. */
void vp_set_reply(int cmd, int result, const void *data, int len);
void vp_set_reply_len(int cmd, int result, const void *data, int len, int reported_len);
/* Remove the sticky reply and the queued replies of `cmd`. */
void vp_clear_reply(int cmd);
/* Number of queued replies for `cmd` not yet consumed. */
int vp_pending(int cmd);

/* Results of FC_Inicializa / FC_Finaliza (0 unless scripted), and the printer
 * identifier FC_Inicializa stores. */
void vp_set_init_result(int result);
void vp_set_fini_result(int result);
void vp_set_printer_id(int id);

/* Answer the identity queries of session opening as a default printer does
 * (serial number, model and firmware, make and model texts, owner tax
 * identifiers, sequence number, rounding mode, date and reduction state). */
void vp_answer_identity(void);

/* The recorded calls, oldest first. */
int vp_call_count(void);
const vp_call *vp_get_call(int index);
/* How many FC_Operacao calls carried `cmd`. */
int vp_count_cmd(int cmd);
void vp_clear_calls(void);

#ifdef __cplusplus
}
#endif
#endif
