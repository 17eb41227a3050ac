#include "host/journal.h"

namespace host {

journal::~journal() = default;

void journal::moved(const std::string& /*from*/, const std::string& /*to*/) {}

} // namespace host
