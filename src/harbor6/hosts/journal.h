#pragma once

#include "harbor6/groundwork/export.h"

#include <cstdint>
#include <string>

namespace host {

/// Receives how each file of the target ended: done(), refused(), unfinished() or missing() is called once
/// for each file that was given a name and not erased before its end. Paths are relative to the target, as
/// the archive states them, so they may contain control characters.
class HARBOR6_API journal {
public:
    journal() = default;
    journal(const journal&) = delete;
    journal& operator=(const journal&) = delete;
    virtual ~journal() = default;

    /// The file's data begins.
    virtual void begun(const std::string& /*path*/) {}
    /// The file is complete, with `size` bytes.
    virtual void done(const std::string& path, std::uint64_t size) = 0;
    /// The file can't be created.
    virtual void refused(const std::string& path, const std::string& reason) = 0;
    /// The file was begun, and ended with `size` bytes that aren't its whole content. `reason` may be empty.
    virtual void unfinished(const std::string& path, std::uint64_t size, const std::string& reason) = 0;
    /// The file was asked for, but no data arrived.
    virtual void missing(const std::string& path) = 0;
    /// An existing file was kept instead of the new one, as the policy says, which is no error.
    virtual void skipped(const std::string& /*path*/, const std::string& /*reason*/) {}
    /// An item that was reported under the path `from`, itself or through its content, is now at `to`.
    virtual void moved(const std::string& /*from*/, const std::string& /*to*/) {}
};

} // namespace host
