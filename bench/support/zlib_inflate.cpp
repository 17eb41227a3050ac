#include "support/zlib_inflate.h"

#include <zlib.h>

#include <stdexcept>

namespace rivals {

struct zlib_inflate::state {
    z_stream z{};
};

zlib_inflate::zlib_inflate() : inner(std::make_unique<state>()) {
    if (inflateInit2(&inner->z, -15) != Z_OK)
        throw std::runtime_error("inflateInit2");
}

zlib_inflate::~zlib_inflate() {
    inflateEnd(&inner->z);
}

std::size_t zlib_inflate::decode(std::string_view stream, std::string_view history, char* out,
                                 std::size_t room) {
    z_stream& z = inner->z;
    inflateReset(&z);
    if (!history.empty())
        inflateSetDictionary(&z, reinterpret_cast<const Bytef*>(history.data()),
                             static_cast<uInt>(history.size()));
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.data()));
    z.avail_in = static_cast<uInt>(stream.size());
    z.next_out = reinterpret_cast<Bytef*>(out);
    z.avail_out = static_cast<uInt>(room);
    if (inflate(&z, Z_FINISH) != Z_STREAM_END)
        throw std::runtime_error("inflate");
    return room - z.avail_out;
}

} // namespace rivals
