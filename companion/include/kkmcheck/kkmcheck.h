/// @file
/// Printed or not: prints checks on a Tarvo M5 cash register so that the host always learns what
/// came of them, or learns that nobody can know. For C, C++ and foreign-function interfaces.
///
/// The host names each check by a key of its own, an order number for example. Every attempt to
/// print is kept in a journal, a SQLite database, one for each till: the intention is on the disk
/// before the register hears of it. The same key never prints twice.
///
/// **Results.** A function gives a ::kkmcheck_result. Anything but ::KKMCHECK_OK means that nothing
/// was printed by this call and says why through kkmcheck_error(). With ::KKMCHECK_OK the outcome
/// tells about the check.
///
/// **Deadlines** are milliseconds from the call. The register is driven by a process of its own
/// (kkmcheck-worker, found beside the library or at KKMCHECK_WORKER in the environment), since the
/// driver waits for a silent register without bound. What is not known at the deadline is
/// ::KKMCHECK_UNKNOWN; a check whose lines are being sent is finished behind it, a long tape is
/// read on, and kkmcheck_resolve() then tells. The worker is no child of the host's, which may do
/// what it likes with SIGCHLD. An answer before the deadline comes when the worker has taken leave
/// of the register.
///
/// **Texts** go to the register in the host's own bytes; a register prints code page 866.
///
/// A journal handle serves one thread at a time. Other processes may open the same journal; they
/// take turns at the register.
#ifndef KKMCHECK_H
#define KKMCHECK_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define KKMCHECK_API __attribute__((visibility("default")))
#else
#define KKMCHECK_API
#endif

enum kkmcheck_result {
    KKMCHECK_OK = 0,             ///< the outcome tells
    KKMCHECK_JOURNAL = 1,        ///< the journal cannot be read or written: disk, rights, version
    KKMCHECK_OTHER_CONTENT = 2,  ///< the key was used for a check with another content
    KKMCHECK_NO_KEY = 3,         ///< the journal has no such key
    KKMCHECK_ARGUMENT = 4,       ///< a null pointer, an empty key, a check that is none
    KKMCHECK_BUSY = 5,           ///< another process was at the register until the deadline
    KKMCHECK_WORKER = 6          ///< the worker process could not be started
};

enum kkmcheck_verdict {
    KKMCHECK_UNKNOWN = 0,     ///< it cannot be proved; `reason` and `text` say what is missing
    KKMCHECK_PRINTED = 1,     ///< proved: it is on the paper, once
    KKMCHECK_NOT_PRINTED = 2  ///< proved: it is not, and it will not come out
};

/// Why. Stands in journals under its name in small letters.
enum kkmcheck_reason {
    KKMCHECK_NONE = 0,
    KKMCHECK_ON_TAPE = 1,
    KKMCHECK_SEEN_ON_PAPER = 2,
    KKMCHECK_NOTHING_SENT = 10,
    KKMCHECK_COUNTERS_UNMOVED = 11,
    KKMCHECK_NOT_ON_TAPE = 12,
    KKMCHECK_NOT_ON_PAPER = 13,
    KKMCHECK_STILL_WORKING = 20,
    KKMCHECK_REGISTER_UNREAD = 21,
    KKMCHECK_OTHER_REGISTER = 22,
    KKMCHECK_OTHER_MEMORY = 23,
    KKMCHECK_COUNTERS_WENT_BACK = 24,
    KKMCHECK_TAPE_CLOSED = 25,
    KKMCHECK_COUNTERS_AT_ODDS = 26,
    KKMCHECK_TAPE_UNREAD = 27,
    KKMCHECK_CHECK_MAY_BE_OPEN = 28,
    KKMCHECK_OTHER_LINES_ON_TAPE = 29,
    KKMCHECK_DOUBTFUL_RECORDS = 30,
    KKMCHECK_LINES_ADDED_BY_HAND = 31,
    KKMCHECK_NOT_TOLD_APART = 32
};

typedef struct kkmcheck_line {
    const char* name;  ///< in the register's code page
    double price;      ///< currency units for one unit
    double quantity;   ///< pieces or kilograms, above 0
    int section;       ///< 1 to 15
} kkmcheck_line;

typedef struct kkmcheck_check {
    const kkmcheck_line* lines;
    int line_count;  ///< at least 1
    int mode;        ///< 0 sale, 1 return, 2 credit
    int discount;    ///< per cent, -99 to 99; negative for a discount
    double cash;     ///< what the customer gave, in currency units; 0: paid exactly
} kkmcheck_check;

/// What is known of a check: the outcome of the last attempt to print it, and the evidence. Numbers
/// that are not known are -1, times (UTC) are empty.
typedef struct kkmcheck_outcome {
    int outcome;        ///< a ::kkmcheck_verdict
    int reason;         ///< a ::kkmcheck_reason
    int attempts;       ///< how often it was tried
    int driver_result;  ///< what PrintCheck() gave
    int driver_error;   ///< last error of the driver, an ErrorVeskTarvo value; 0: none
    int firmware;
    int serial_number;
    int tape_before;
    int checks_before;
    int records_before;
    int tape_after;
    int checks_after;
    int records_after;
    int first_record;  ///< of the check on the tape, counted from 1
    int line_count;
    double total;          ///< of the check, in currency units
    char intended_at[32];  ///< 2026-11-21T07:30:00.123Z
    char sending_at[32];   ///< the register asked for the check
    char returned_at[32];  ///< the driver came back
    char decided_at[32];   ///< the outcome was found
    char text[512];        ///< what it means and what to do, in English
    char records[1024];    ///< tape records that were compared, one a line, as far as they fit
} kkmcheck_outcome;

typedef struct kkmcheck_journal kkmcheck_journal;

/// Opens the journal of a till, and makes it when it is missing.
/// @param device serial device of the register, "/dev/ttyS0"; may be null where no register is
///   needed
/// @param journal receives the handle, also when opening failed, for kkmcheck_error(); null only
///   when there is no memory. To be closed in every case.
KKMCHECK_API int kkmcheck_open(const char* path, const char* device, kkmcheck_journal** journal);
KKMCHECK_API void kkmcheck_close(kkmcheck_journal* journal);
/// What went wrong in the last call with this handle. Never null; valid until the next call.
KKMCHECK_API const char* kkmcheck_error(const kkmcheck_journal* journal);

/// Prints the check, if the key is new, and waits for the outcome. A key that was used before
/// prints nothing: its outcome is given, and found out first if it is not known yet, as by
/// kkmcheck_resolve(). The cashier has to make the register ask for the check; when the deadline
/// comes first, it is not printed.
KKMCHECK_API int kkmcheck_print(kkmcheck_journal* journal, const char* key,
                                const kkmcheck_check* check, int deadline_ms,
                                kkmcheck_outcome* outcome);
/// The same, and a check that is known as not printed is tried again.
KKMCHECK_API int kkmcheck_print_again(kkmcheck_journal* journal, const char* key,
                                      const kkmcheck_check* check, int deadline_ms,
                                      kkmcheck_outcome* outcome);
/// Gives the outcome of a key; one that is not known yet is found out at the register. A check that
/// is open there is cancelled if that is needed to know.
KKMCHECK_API int kkmcheck_resolve(kkmcheck_journal* journal, const char* key, int deadline_ms,
                                  kkmcheck_outcome* outcome);
/// Gives the outcome of a key as far as the journal tells it; nothing is sent to the register.
KKMCHECK_API int kkmcheck_recorded(kkmcheck_journal* journal, const char* key,
                                   kkmcheck_outcome* outcome);
/// A person looked at the paper: makes an unknown outcome ::KKMCHECK_PRINTED or
/// ::KKMCHECK_NOT_PRINTED. An outcome that is known stays.
KKMCHECK_API int kkmcheck_set_by_hand(kkmcheck_journal* journal, const char* key, int verdict,
                                      kkmcheck_outcome* outcome);

/// Called for each key in the order of the first attempts; anything but 0 ends the listing.
typedef int (*kkmcheck_visit)(void* context, const char* key, const kkmcheck_outcome* outcome);
/// Shows the outcome of every key as recorded.
KKMCHECK_API int kkmcheck_list(kkmcheck_journal* journal, kkmcheck_visit visit, void* context);
/// kkmcheck_resolve() for every key whose outcome is not known; the deadline is for all of them.
/// @param visit shows what was found; may be null
/// @param unknown receives how many stay unknown; may be null
KKMCHECK_API int kkmcheck_resolve_all(kkmcheck_journal* journal, int deadline_ms,
                                      kkmcheck_visit visit, void* context, int* unknown);

/// Where the worker process is.
enum kkmcheck_step {
    KKMCHECK_WAITING = 1,    ///< for the register to ask for the check
    KKMCHECK_SENDING = 2,    ///< the lines, and printing
    KKMCHECK_COMPARING = 3,  ///< the driver came back; counters and tape are read
    KKMCHECK_READING = 4     ///< a long tape: `done` of `all` records
};

/// Called in the thread of the call that waits. It must not use the handle.
typedef void (*kkmcheck_step_told)(void* context, int step, int done, int all);
/// Has the steps of printing and finding out told; null ends that.
KKMCHECK_API int kkmcheck_on_step(kkmcheck_journal* journal, kkmcheck_step_told told,
                                  void* context);

/// Name of a reason, "counters_unmoved"; never null.
KKMCHECK_API const char* kkmcheck_reason_name(int reason);

#ifdef __cplusplus
}
#endif

#endif
