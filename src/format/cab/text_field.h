#pragma once

#include <string>

namespace stream {
class input;
}

namespace format::cab {

/// The bytes up to a zero byte, which is taken too, or up to the end of the stream, which is no failure. A
/// field may be of any length.
std::string read_text(stream::input& input);

/// A text field that names a file, in UTF-8.
std::string read_name(stream::input& input);

} // namespace format::cab
