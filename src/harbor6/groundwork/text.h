#pragma once

// Text: 8-bit names in and out of Unicode, pieces of paths, numbers. All functions may be called from any
// thread but set_code_page, which a host calls before it opens anything.

#include "harbor6/groundwork/export.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace nio {

/// All of `path` before its last `separator`; empty if there is none.
HARBOR6_API std::string stem(std::string_view path, char separator);
/// All of `path` behind its last `separator`; all of it if there is none.
HARBOR6_API std::string leaf(std::string_view path, char separator);

/// Unicode from 8-bit text. With `encoding` -1 (the only one known): by the code page that set_code_page
/// chose; without one UTF-8 if the whole text is valid UTF-8, else Windows-1252, whose five holes give the C1
/// control of the same number. What a chosen code page can't read becomes U+FFFD, byte by byte. Never fails.
HARBOR6_API std::wstring decode(std::string_view text, int encoding);
/// UTF-8 of `wide`; a unit that is no Unicode scalar value becomes U+FFFD.
HARBOR6_API std::string to_utf8(std::wstring_view wide);

/// Chooses the code page of decode for the whole process, by its iconv name; an empty name goes back to the
/// default. Raises un::exception for a name that the platform doesn't know; the setting then stays as it was.
HARBOR6_API void set_code_page(const std::string& name);

/// `utf8` made safe for a terminal: control characters (C0, DEL, C1), bidirectional overrides, line and
/// paragraph separators and bytes that are no UTF-8 become \xHH or \u{H}, a backslash stays.
HARBOR6_API std::string printable(std::string_view utf8);

} // namespace nio

namespace un {

/// `value` in `base` 2 to 36, with leading zeros up to `digits`.
HARBOR6_API std::string write(std::uint64_t value, unsigned base, unsigned digits);

} // namespace un
