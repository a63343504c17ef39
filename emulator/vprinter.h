/* Control interface of the virtual printer, the stand-in printer driver
 * (libMrZandor.so) used by the tests and the demo.
 *
 * The virtual printer records every driver call and answers each command,
 * in this order of priority:
 *   1. the next reply queued for that command (vp_push_reply), used once;
 *   2. the sticky reply set for that command (vp_set_reply), used every time;
 *   3. the fiscal state model (below), when it is switched on;
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

/* ---- the fiscal state model ----------------------------------------------
 * A model of what a fiscal printer keeps: the open document and its state
 * (the byte of command 6), COO/CCF and the other counters, the day's register
 * values, the partial registers, the fiscal memory, the clock, paper, cover
 * and drawer. It answers the commands the library issues as a printer does.
 * Every printed line is appended to the paper tape ("vprinter.tape"); the
 * state is kept in "vprinter.state" beside it (both in the current working
 * directory unless placed elsewhere), read at the first command of a process
 * and written after every command that changes it, so it survives a restart.
 *
 * Commands that do not fit the state are refused with these printer codes
 * (library result after translation in brackets):
 *     1 [2561] not allowed in the current document state
 *     2 [2049] invalid parameter (number, item number, value)
 *    21 [2561] no document or item to act on
 *    22 [2582] register not programmed or out of its range
 *    44 [2871] cover open: nothing is printed
 *    45 [2871] no document in the document station
 *    74 [2634] non-fiscal coupon that cannot be closed in this state
 *   132 [2561] another document is open
 *   145 [2561] coupon not fully paid: it cannot be closed
 *   151 [2561] a Z reduction was already made today
 *   153 [2561] the business day is over: a Z reduction comes first
 *   154 [2561] voucher refused (no such coupon or payment, a method without
 *              vouchers, or a payment that already has one)
 * The last refusal is what command 3 reports. */

/* The model is on by default; the test bed switches it off before its tests. */
void vp_use_model(int on);
int vp_model_enabled(void);
/* Factory state: default programming, empty day, COO 0; deletes the state
 * file and the paper tape. */
void vp_model_reset(void);
/* Drops the state held in memory and reads the state file again, as a new
 * process would (factory state when there is no state file). */
void vp_model_reload(void);
/* Places the state file and the paper tape (NULL or "" keeps that one); the
 * state is read from there at the next command. */
void vp_model_files(const char *state_path, const char *tape_path);
const char *vp_state_path(void);
const char *vp_tape_path(void);

/* Sets the printer's clock; it then runs on with real time. */
void vp_set_clock(int year, int month, int day, int hour, int min, int sec);

/* A document in the station is taken out by the printer when it has filled a
 * cheque. */
enum vp_condition {
  VP_COND_PAPER_LOW = 1,
  VP_COND_COVER_OPEN,
  VP_COND_DRAWER_OPEN,
  VP_COND_DOCUMENT_IN
};
void vp_set_condition(int condition, int on);

/* Document state (command 6 byte 0), current COO and CCF. */
int vp_doc_state(void);
int vp_coo(void);
int vp_ccf(void);
/* The day's value of a register, in cents: tax rates 20..39, F/I/N 11..13,
 * cancellations 7/114, discounts 8/134, increases 9/135, non-fiscal 16..19
 * and 40..54, payment methods 60..78, change 79. */
long long vp_register_value(int reg);

#ifdef __cplusplus
}
#endif
#endif
