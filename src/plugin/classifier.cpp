#include "plugin/classifier.h"

#include "format/cab/constants.h"
#include "plugin/format_record.h"
#include "stream/array_input.h"

namespace format::cab {

classifier::classifier(std::uint32_t id) : format::classifier(record.number, id) {}

classifier::~classifier() = default;

unsigned classifier::matches_at(unsigned offset) const {
    if (std::uint64_t{offset} + signature.size() >= sample.length())
        return 0;
    return std::string_view(sample.begin() + offset, signature.size()) == signature ? 1 : 0;
}

bool classifier::confirm_at(unsigned offset) {
    stream::array_input input(sample, offset);
    header.read(input, false);
    return header.is_valid() && !header.has_previous;
}

} // namespace format::cab
