#include "outside/shell/spec.h"

namespace fs {

Spec::~Spec() = default;

} // namespace fs
