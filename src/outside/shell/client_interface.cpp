#include "outside/shell/client_interface.h"

namespace harbor6 {

ClientInterface::~ClientInterface() = default;

} // namespace harbor6
