#include "model/super_format.h"

namespace harbor6 {

SuperFormat::~SuperFormat() = default;

} // namespace harbor6
