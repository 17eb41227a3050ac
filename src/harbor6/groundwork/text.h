#pragma once

// Text: conversion of 8-bit names to Unicode and back, parts of paths, numbers. Any thread may call these
// functions, except set_code_page: a host calls it before it opens an archive. Running out of memory raises
// std::bad_alloc; other failures are named below.

#include "harbor6/groundwork/export.h"

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace nio {

/// The part of `path` before its last `separator`; empty if there is none.
HARBOR6_API std::string stem(std::string_view path, char separator);
/// The part of `path` after its last `separator`; all of it if there is none.
HARBOR6_API std::string leaf(std::string_view path, char separator);

/// For decode(): UTF-8 where the whole text is valid as that, whatever the code page is.
inline constexpr int encoding_utf8 = 65001;
/// Unicode from 8-bit text. `encoding` is encoding_utf8, else -1: the code page set by set_code_page;
/// without one UTF-8 if the whole text is valid UTF-8, otherwise Windows-1252, whose five undefined bytes
/// become the C1 control of the same number. Bytes that are invalid in a chosen code page become U+FFFD.
HARBOR6_API std::wstring decode(std::string_view text, int encoding);
/// UTF-8 of `wide`; a unit that is no Unicode scalar value becomes U+FFFD.
HARBOR6_API std::string to_utf8(std::wstring_view wide);

/// Sets the code page of decode() for the whole process, by its iconv name; an empty name restores the
/// default. Raises un::exception for a name that the platform doesn't know, and then changes nothing.
HARBOR6_API void set_code_page(const std::string& name);

/// `utf8` made safe for a terminal: control characters (C0, DEL, C1), bidirectional overrides, line and
/// paragraph separators and bytes that are no UTF-8 become `\xHH` or `\u{H}`; a backslash stays as it is.
HARBOR6_API std::string printable(std::string_view utf8);

/// The text of a failure, printable and never empty.
HARBOR6_API std::string failure_text(const std::exception_ptr& failure);

} // namespace nio

namespace un {

/// `value` in `base` 2 to 36, in lower case, padded with zeros to at least `digits` digits.
HARBOR6_API std::string write(std::uint64_t value, unsigned base, unsigned digits);

} // namespace un
