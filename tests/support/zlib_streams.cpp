#include "support/zlib_streams.h"

#include <zlib.h>

#include <algorithm>
#include <random>
#include <stdexcept>

namespace zlib_streams {

static_assert(standard == Z_DEFAULT_STRATEGY && filtered == Z_FILTERED && huffman_only == Z_HUFFMAN_ONLY &&
              run_length == Z_RLE && fixed_codes == Z_FIXED);

namespace {

Bytef* zlib_bytes(std::string_view text) {
    return reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
}

} // namespace

std::string compress(std::string_view data, int level, strategy how, std::string_view dictionary) {
    z_stream z{};
    if (deflateInit2(&z, level, Z_DEFLATED, -15, 8, how) != Z_OK)
        throw std::runtime_error("deflateInit2");
    if (!dictionary.empty())
        deflateSetDictionary(&z, zlib_bytes(dictionary), static_cast<uInt>(dictionary.size()));
    std::string stream(deflateBound(&z, static_cast<uLong>(data.size())) + 16, '\0');
    z.next_in = zlib_bytes(data);
    z.avail_in = static_cast<uInt>(data.size());
    z.next_out = zlib_bytes(stream);
    z.avail_out = static_cast<uInt>(stream.size());
    const int result = ::deflate(&z, Z_FINISH);
    stream.resize(z.total_out);
    deflateEnd(&z);
    if (result != Z_STREAM_END)
        throw std::runtime_error("deflate");
    return stream;
}

std::vector<std::string> compress_blocks(std::string_view data, int level) {
    std::vector<std::string> blocks;
    for (std::size_t i = 0; i < data.size(); i += 32768) {
        const std::size_t history = std::min<std::size_t>(i, 32768);
        blocks.push_back(compress(data.substr(i, 32768), level, standard, data.substr(i - history, history)));
    }
    return blocks;
}

std::string words(std::size_t size, unsigned seed) {
    static const char* const vocabulary[] = {"stream", "the ",   "of ",  "block", "\n",     "window", " = ",
                                             "0x",     "return", "a",    "();\n", "folder", "length", " ",
                                             ", ",     "e",      "tion", "begin", "Q",      "zip"};
    std::mt19937 random(seed);
    std::string text;
    while (text.size() < size) {
        text += vocabulary[std::min(random() % 20, random() % 20)];
        if (random() % 8 == 0)
            text += static_cast<char>('!' + random() % 90);
    }
    text.resize(size);
    return text;
}

std::string noise(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

answer decompress(std::string_view stream) {
    z_stream z{};
    if (inflateInit2(&z, -15) != Z_OK)
        throw std::runtime_error("inflateInit2");
    z.next_in = zlib_bytes(stream);
    z.avail_in = static_cast<uInt>(stream.size());
    answer found{false, {}, 0};
    std::string piece(65536, '\0');
    int result = Z_OK;
    while (result == Z_OK) {
        z.next_out = zlib_bytes(piece);
        z.avail_out = static_cast<uInt>(piece.size());
        result = inflate(&z, Z_NO_FLUSH);
        found.bytes.append(piece, 0, piece.size() - z.avail_out);
    }
    found.sound = result == Z_STREAM_END;
    found.consumed = z.total_in;
    inflateEnd(&z);
    return found;
}

} // namespace zlib_streams
