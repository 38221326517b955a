#include "VeskTarvoM5/VeskTarvoM5.h"

// Runs of blanks by design: the register's makers never gave these codes a text.
const char* const err_msg[8] = {"  ", "   ", " ", "   ", "     ", "  ", "  ", "   "};

const int err_msg_count = 8;
