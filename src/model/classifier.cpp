#include "model/classifier.h"

namespace format {

classifier::classifier(std::uint32_t number, std::uint32_t id) : format_number(number), identifier(id) {}

classifier::~classifier() = default;

unsigned classifier::default_result() {
    return 0;
}

} // namespace format
