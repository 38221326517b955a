#include "protocol/tarvo_error.h"

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "protocol/tarvo.h"
#include "support/trace.h"

ETarvo::ETarvo(CTarvo* source, int code, const std::string& /*detail*/)
    : device_number_(source->netNum()), code_(code), message_(err_msg[code]) {
    if (source->getTrace()) {
        source->traceMsg(trace::Line("DevNum=", device_number_, ", Code=", code_,
                                     ", Msg=", message_, ", DbgMsg =", debug_message_));
    }
}
