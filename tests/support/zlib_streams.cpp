#include "support/zlib_streams.h"

#include <algorithm>
#include <random>
#include <stdexcept>
#include <zlib.h>

namespace zlib_streams {

static_assert(standard == Z_DEFAULT_STRATEGY && filtered == Z_FILTERED && huffman_only == Z_HUFFMAN_ONLY &&
              run_length == Z_RLE && fixed_codes == Z_FIXED);

std::string compress(std::string_view data, int level, strategy how, std::string_view dictionary) {
    const auto bytes = [](const char* text) { return reinterpret_cast<Bytef*>(const_cast<char*>(text)); };
    std::string stream(data.size() + data.size() / 8 + 100, '\0');
    z_stream z{};
    z.next_in = bytes(data.data());
    z.avail_in = static_cast<uInt>(data.size());
    z.next_out = bytes(stream.data());
    z.avail_out = static_cast<uInt>(stream.size());
    bool done = deflateInit2(&z, level, Z_DEFLATED, -15, 8, how) == Z_OK;
    if (!dictionary.empty())
        deflateSetDictionary(&z, bytes(dictionary.data()), static_cast<uInt>(dictionary.size()));
    done = done && ::deflate(&z, Z_FINISH) == Z_STREAM_END;
    deflateEnd(&z);
    stream.resize(z.total_out);
    return done ? stream : throw std::runtime_error("zlib");
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

} // namespace zlib_streams
