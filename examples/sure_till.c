/* A till that always knows, in C: prints a check under a key, once, however often it is started, and
   says what came of it.
     sure_till DEVICE JOURNAL KEY        (for example /dev/ttyUSB0 till1.journal order-4711) */
#include <kkmcheck/kkmcheck.h>
#include <stdio.h>

int main(int argc, char** argv) {
    const kkmcheck_line lines[] = {{"Bread", 25.50, 2, 1}, {"Apples", 80.00, 0.75, 2}};
    const kkmcheck_check check = {lines, 2, 0, -5, 200.00};
    kkmcheck_journal* journal = NULL;
    kkmcheck_outcome outcome;
    int result = 0;

    if (argc != 4) {
        fputs("usage: sure_till DEVICE JOURNAL KEY\n", stderr);
        return 2;
    }
    result = kkmcheck_open(argv[2], argv[1], &journal);
    if (result == KKMCHECK_OK) {
        /* A new key prints; a key that was used tells, and is found out first if need be. */
        result = kkmcheck_print(journal, argv[3], &check, 60000, &outcome);
    }
    if (result != KKMCHECK_OK) {
        /* Nothing was printed by this call. */
        fprintf(stderr, "%s\n", kkmcheck_error(journal));
        kkmcheck_close(journal);
        return 2;
    }
    switch (outcome.outcome) {
        case KKMCHECK_PRINTED:
            printf("printed: %.2f, record %d of the tape\n", outcome.total, outcome.first_record);
            break;
        case KKMCHECK_NOT_PRINTED:
            printf("not printed: %s\n", outcome.text);
            break;
        default:
            printf("nobody knows: %s\n", outcome.text);
            break;
    }
    kkmcheck_close(journal);
    return outcome.outcome == KKMCHECK_PRINTED ? 0 : outcome.outcome == KKMCHECK_NOT_PRINTED ? 3 : 4;
}
