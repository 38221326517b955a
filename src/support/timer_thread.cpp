#include "support/timer_thread.h"

TTimerThread* TTimerThread::_this = nullptr;

void TTimerThread::wait() {
    terminate();
    while (running_) {
    }
}
