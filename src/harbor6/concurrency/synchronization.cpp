#include "harbor6/concurrency/synchronization.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/platform.h"

namespace basic {

event::event(bool auto_reset) : handle(platform::event::create(auto_reset)) {
    if (!handle)
        throw exception("cannot create an event");
}

event::~event() = default;

void event::signal() {
    if (!handle->signal())
        throw exception("cannot signal an event");
}

void event::reset() {
    if (!handle->reset())
        throw exception("cannot reset an event");
}

void event::wait() {
    if (!handle->wait())
        throw exception("wait for an event failed");
}

} // namespace basic

namespace qpthr {

QpMutex::QpMutex(const char* /*name*/) {}

QpMutex::~QpMutex() = default;

void QpMutex::lock() {
    section.enter();
}

void QpMutex::unlock() {
    section.leave();
}

} // namespace qpthr
