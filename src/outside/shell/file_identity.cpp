#include "outside/shell/file_identity.h"

namespace fs {

Spec::~Spec() = default;

} // namespace fs
