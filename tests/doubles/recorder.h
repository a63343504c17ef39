/* Call recorder shared by the test doubles of the peripheral libraries and the
 * monitoring plug-in: each double records its calls here (library, function and
 * a text of its arguments), and takes the result a test scripted for it. */
#ifndef ORBELAN_TEST_RECORDER_H
#define ORBELAN_TEST_RECORDER_H

#ifdef __cplusplus
extern "C" {
#endif

#define DBL_MAX_TEXT 1024

typedef struct dbl_call {
  char lib[32];            /* e.g. "pd_cheque" */
  char fn[48];             /* entry point name */
  char args[DBL_MAX_TEXT]; /* the arguments as text, as the double formats them */
} dbl_call;

void dbl_reset(void);
void dbl_record(const char *lib, const char *fn, const char *args_format, ...)
    __attribute__((format(printf, 3, 4)));
int dbl_count(void);
const dbl_call *dbl_get(int index);

/* Results: a queued value is used once, else the sticky value, else the
 * double's own default. */
void dbl_push_result(const char *fn, long value);
void dbl_set_result(const char *fn, long value);
long dbl_result(const char *fn, long fallback);

/* Text an entry point hands back through an output argument (for example the
 * line a reader returns); empty unless scripted. */
void dbl_set_text(const char *fn, const char *text);
const char *dbl_text(const char *fn);

#ifdef __cplusplus
}
#endif

/* An exported entry point of a double (C++ only), and one without arguments:
 * recorded, and its scripted result (0 by default) returned. */
#define DBL_API extern "C" __attribute__((visibility("default")))
#define DBL_ENTRY(lib, fn)           \
  DBL_API int fn() {                 \
    dbl_record(#lib, #fn, "%s", ""); \
    return (int)dbl_result(#fn, 0);  \
  }
#endif
