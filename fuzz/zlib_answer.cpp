#include "zlib_answer.h"

#include <cstdlib>
#include <zlib.h>

zlib_answer::zlib_answer(std::string_view stream) {
    std::string piece(65536, '\0');
    z_stream z{};
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.data()));
    z.avail_in = static_cast<uInt>(stream.size());
    int result = inflateInit2(&z, -15);
    if (result != Z_OK)
        std::abort();
    while (result == Z_OK) {
        z.next_out = reinterpret_cast<Bytef*>(piece.data());
        z.avail_out = static_cast<uInt>(piece.size());
        result = inflate(&z, Z_NO_FLUSH);
        bytes.append(piece, 0, piece.size() - z.avail_out);
    }
    sound = result == Z_STREAM_END;
    consumed = z.total_in;
    inflateEnd(&z);
}
