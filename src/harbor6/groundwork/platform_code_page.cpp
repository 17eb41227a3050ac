#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/platform.h"

#include <cerrno>
#include <iconv.h>

namespace platform {

namespace {

/// One conversion descriptor; iconv keeps shift states in it, so each conversion opens its own.
class converter {
public:
    explicit converter(const std::string& name) : handle(iconv_open("WCHAR_T", name.c_str())) {
        if (handle == iconv_t(-1))
            throw un::exception("unknown code page " + name, "nio::set_code_page");
    }
    converter(const converter&) = delete;
    converter& operator=(const converter&) = delete;
    ~converter() { iconv_close(handle); }

    iconv_t handle;
};

} // namespace

code_page::code_page(const std::string& page_name) : name(page_name) {
    converter probe(name);
}

std::wstring code_page::decode(std::string_view text) const {
    const converter conversion(name);
    std::string source(text);
    std::wstring wide(source.size() * 2 + 4, L'\0');
    char* in = source.data();
    std::size_t in_left = source.size();
    char* out = reinterpret_cast<char*>(wide.data());
    std::size_t out_left = wide.size() * sizeof(wchar_t);
    const auto grow = [&] {
        const auto done = wide.size() * sizeof(wchar_t) - out_left;
        wide.resize(wide.size() * 2);
        out = reinterpret_cast<char*>(wide.data()) + done;
        out_left = wide.size() * sizeof(wchar_t) - done;
    };
    while (in_left > 0) {
        if (iconv(conversion.handle, &in, &in_left, &out, &out_left) != std::size_t(-1))
            continue;
        if (errno == E2BIG || out_left < sizeof(wchar_t)) {
            grow();
            continue;
        }
        const wchar_t replacement = 0xFFFD;
        std::char_traits<char>::copy(out, reinterpret_cast<const char*>(&replacement), sizeof replacement);
        out += sizeof replacement;
        out_left -= sizeof replacement;
        // Some converters consume the invalid byte, others leave it.
        if (in_left > 0) {
            ++in;
            --in_left;
        }
    }
    while (iconv(conversion.handle, nullptr, nullptr, &out, &out_left) == std::size_t(-1) && errno == E2BIG)
        grow();
    wide.resize(wide.size() - out_left / sizeof(wchar_t));
    return wide;
}

} // namespace platform
