#include "harbor6/stream/structure.h"

#include "harbor6/stream/output.h"

namespace un {

structure::~structure() = default;

bool structure::is_valid() const {
    return true;
}

std::uint32_t structure::read(stream::input& /*input*/, bool /*verify*/) {
    return 0;
}

std::uint32_t structure::write(stream::output& /*output*/) const {
    return 0;
}

std::uint32_t structure::size() const {
    return 0;
}

} // namespace un

namespace format {

header::~header() = default;

std::uint32_t header::size() const {
    stream::infinite_output sink;
    return write(sink);
}

} // namespace format
