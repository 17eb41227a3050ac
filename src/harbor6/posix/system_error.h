#pragma once

#include "harbor6/groundwork/exception.h"

#include <string>

namespace host {

/// A failure that concerns one path alone: something else exists there, it isn't permitted, or the file
/// system can't store such a name or size. Everything else can still be written.
class HARBOR6_API path_error : public fs::Exception {
public:
    using fs::Exception::Exception;
};

/// Raises the error number `error` for `path` (relative to the target, or as the user gave it): a path_error
/// if it concerns that path alone, else a plain fs::Exception. The text is "cannot ACTION PATH: CAUSE".
[[noreturn]] HARBOR6_API void throw_system_error(const std::string& action, const std::string& path,
                                                 int error);

/// The platform's text for an error number.
HARBOR6_API std::string error_text(int error);

} // namespace host
