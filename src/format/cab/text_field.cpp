#include "format/cab/text_field.h"

#include "outside/groundwork/text.h"
#include "stream/input.h"

namespace format::cab {

std::string read_text(stream::input& input) {
    std::string text;
    for (int byte = input.read(); byte > 0; byte = input.read())
        text.push_back(static_cast<char>(byte));
    return text;
}

std::string read_name(stream::input& input) {
    return nio::to_utf8(nio::decode(read_text(input), -1));
}

} // namespace format::cab
