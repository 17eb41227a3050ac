#pragma once

#include <cstdint>
#include <string>

namespace host {

/// Hears from target files how they fared. Paths are relative to the target; whoever prints one makes it
/// printable.
class journal {
public:
    journal() = default;
    journal(const journal&) = delete;
    journal& operator=(const journal&) = delete;
    virtual ~journal();

    /// The file stands whole, with `size` bytes.
    virtual void done(const std::string& path, std::uint64_t size) = 0;
    /// The file can't be had; the others can.
    virtual void refused(const std::string& path, const std::string& reason) = 0;
    /// The file was begun, and ended with `size` bytes that aren't all of it. `reason` may be empty.
    virtual void unfinished(const std::string& path, std::uint64_t size, const std::string& reason) = 0;
    /// The file was asked for, and nothing came for it.
    virtual void missing(const std::string& path) = 0;
    /// An item that was told of under the path `from`, itself or what is in it, stands as `to` now.
    virtual void moved(const std::string& from, const std::string& to);
};

} // namespace host
