/* Compiles the public header as C99; nothing runs. */
#include "orvcc.h"

int orvcc_header_is_c99(void) { return (int)sizeof(RoiSize); }
