#include "model/containable.h"

#include "outside/groundwork/exception.h"

namespace harbor6 {

Folder* Containable::acquireParent() {
    return nullptr;
}

void Containable::moveTo(Folder& /*target*/) {
    throw un::exception("harbor6::Containable::moveTo(): not a movable Item", "un");
}

bool Containable::isCreated() {
    return true;
}

bool Containable::exists() {
    return false;
}

void Containable::create() {}

void Containable::erase() {
    throw un::exception("harbor6::Containable::erase(): not an erasable Item", "un");
}

} // namespace harbor6
