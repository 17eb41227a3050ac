#pragma once

#include <string>
#include <string_view>

namespace platform {

/// An 8-bit or multi-byte encoding that the platform knows by name. Safe to use from several threads.
class code_page {
public:
    /// Raises un::exception "unknown code page NAME" if the platform doesn't know it.
    explicit code_page(const std::string& name);

    /// Unicode of `text`; a byte that the encoding can't read becomes U+FFFD.
    std::wstring decode(std::string_view text) const;

private:
    std::string name;
};

} // namespace platform
