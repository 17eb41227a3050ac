#include "format/cab/data_header.h"

#include "format/cab/archive_header.h"
#include "format/cab/checksum.h"
#include "outside/groundwork/exception.h"
#include "stream/endian_input.h"

#include <algorithm>

namespace format::cab {

namespace {

constexpr unsigned word_size = 4;
constexpr unsigned byte_bits = 8;

} // namespace

data_header::~data_header() = default;

bool data_header::is_valid() const {
    return stored_checksum == computed_checksum;
}

std::uint32_t data_header::read(stream::input& input, bool verify) {
    input.mark = input.tell();
    checksum sum;
    algorithm::digest_input counted(&input, &sum);
    stream::little_endian_input fields(counted);
    sum.enabled = false;
    stored_checksum = fields.read32();

    sum.reset();
    compressed_size = fields.read16();
    uncompressed_size = fields.read16();
    if (reserve) {
        const auto passed = fields.skip(reserve->data_size);
        if (verify && passed < reserve->data_size)
            throw format::exception("unexpected end of input stream", "format::cab::data_header");
    }

    const auto length = static_cast<unsigned>(compressed_size);
    const auto tail = length % word_size;
    read_payload(fields, length - tail);
    computed_checksum = sum.value;
    read_tail(input, tail);
    if (stored_checksum != 0 && stored_checksum != computed_checksum)
        throw format::crc_exception("CRC mismatch, data is invalid", "format::cab::data_header");

    input.unread(payload.get(), length);
    return static_cast<std::uint32_t>(input.tell() - input.mark);
}

/// All of the payload but its tail, counted as it comes.
void data_header::read_payload(stream::input& counted, unsigned length) {
    if (!payload || capacity < compressed_size) {
        payload = std::make_unique_for_overwrite<char[]>(compressed_size);
        capacity = compressed_size;
    }
    const auto came = counted.read(payload.get(), length);
    std::fill(payload.get() + came, payload.get() + length, '\0');
}

/// The last bytes, short of a word, count the other way round: the last one of them is the lowest.
void data_header::read_tail(stream::input& input, unsigned length) {
    char* const bytes = payload.get() + (compressed_size - length);
    for (unsigned i = 0; i < length; ++i) {
        const int byte = input.read();
        bytes[i] = byte < 0 ? '\0' : static_cast<char>(byte);
        computed_checksum ^= std::uint32_t{static_cast<unsigned char>(bytes[i])}
                             << byte_bits * (length - 1 - i);
    }
}

} // namespace format::cab
