#pragma once

#include <string>
#include <vector>

namespace host {

/// A shared library, loaded as long as this object holds it.
class disk_library {
public:
    /// Raises fs::Exception with the platform's words.
    explicit disk_library(const std::string& path);
    disk_library(disk_library&& other) noexcept;
    disk_library& operator=(disk_library&&) = delete;
    ~disk_library();

    /// Raises fs::Exception if there is no such symbol.
    void* symbol(const char* name) const;

private:
    void* handle;
};

/// The folder that holds the running program.
std::string program_folder();

} // namespace host
