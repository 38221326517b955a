/* A host that uses the companion alone. */
#include <kkmcheck/kkmcheck.h>
#include <stdio.h>
#include <string.h>

int main(void) {
    kkmcheck_journal* journal = NULL;
    kkmcheck_outcome outcome;
    if (kkmcheck_open("consumer.journal", "/nonexistent/port", &journal) != KKMCHECK_OK) {
        return 1;
    }
    if (kkmcheck_recorded(journal, "order-1", &outcome) != KKMCHECK_NO_KEY) {
        return 2;
    }
    if (strcmp(kkmcheck_reason_name(KKMCHECK_ON_TAPE), "on_tape") != 0) {
        return 3;
    }
    kkmcheck_close(journal);
    puts("consumer of the companion: ok");
    return 0;
}
