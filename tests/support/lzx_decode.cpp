#include "support/lzx_decode.h"

#include "codec/lzx_decompressor.h"
#include "stream/array_input.h"
#include "stream/output.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace support {

namespace {

class text_output : public stream::output {
public:
    explicit text_output(lzx_outcome& target) : outcome(target) {}

    void write(const char* buffer, unsigned length) override {
        outcome.bytes.append(buffer, length);
        ++outcome.writes;
    }
    void write(char byte) override { write(&byte, 1); }
    std::uint64_t tell() const override { return outcome.bytes.size(); }

private:
    lzx_outcome& outcome;
};

std::uint32_t little(const std::string& bytes, std::size_t at, unsigned size) {
    if (at + size > bytes.size())
        throw std::runtime_error("cabinet cut short");
    std::uint32_t value = 0;
    for (unsigned i = 0; i < size; ++i)
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
    return value;
}

void append(std::string& bytes, std::uint64_t value, unsigned size) {
    for (unsigned i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i));
}

} // namespace

lzx_outcome lzx_decode(const std::vector<lzx_frame>& frames, std::uint32_t window_size, bool exact_only) {
    std::string all;
    for (const auto& frame : frames)
        all += frame.bytes;
    stream::array_input input({all.data(), static_cast<unsigned>(all.size())}, 0);
    lzx_outcome outcome;
    text_output output(outcome);
    algorithm::lzx::decompressor decoder(window_size);
    if (exact_only)
        decoder.use_exact_loop_only();
    for (const auto& frame : frames) {
        outcome.results.push_back(decoder.process_block(input, output, frame.bytes.size(), frame.size));
        outcome.positions.push_back(input.tell());
        if (outcome.failed())
            break;
    }
    return outcome;
}

lzx_cabinet lzx_read_cabinet(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    lzx_cabinet cabinet;
    const auto folder_count = little(bytes, 26, 2);
    for (std::size_t i = 0; i < folder_count; ++i) {
        const std::size_t record = 36 + 8 * i;
        lzx_cabinet::folder folder{little(bytes, record + 7, 1), {}};
        std::size_t at = little(bytes, record, 4);
        for (auto blocks = little(bytes, record + 4, 2); blocks > 0; --blocks) {
            const auto size = little(bytes, at + 4, 2);
            folder.frames.push_back({bytes.substr(at + 8, size), little(bytes, at + 6, 2)});
            at += 8 + size;
        }
        cabinet.folders.push_back(std::move(folder));
    }
    std::size_t at = little(bytes, 16, 4);
    for (auto count = little(bytes, 28, 2); count > 0; --count) {
        const char* name = bytes.c_str() + at + 16;
        cabinet.files.push_back(
            {name, little(bytes, at, 4), little(bytes, at + 4, 4), little(bytes, at + 8, 2)});
        at += 16 + cabinet.files.back().name.size() + 1;
    }
    return cabinet;
}

void lzx_write_cabinet(const std::string& path, const std::string& name, unsigned window_bits,
                       const std::vector<lzx_frame>& frames) {
    std::uint64_t size = 36 + 8 + 16 + name.size() + 1;
    const std::uint64_t data = size;
    std::uint32_t content = 0;
    for (const auto& frame : frames) {
        size += 8 + frame.bytes.size();
        content += frame.size;
    }
    std::string head = "MSCF";
    for (const std::uint64_t value :
         {std::uint64_t{0}, size, std::uint64_t{0}, std::uint64_t{36 + 8}, std::uint64_t{0}})
        append(head, value, 4);
    for (const unsigned value : {0x0103u, 1u, 1u, 0u, 0u, 0u})
        append(head, value, 2);
    append(head, data, 4);
    append(head, frames.size(), 2);
    append(head, 3 | window_bits << 8, 2);
    append(head, content, 4);
    append(head, 0, 4);
    for (const unsigned value : {0u, 0x305Du, 0x6CB5u, 0x20u})
        append(head, value, 2);
    head += name + '\0';
    std::ofstream out(path, std::ios::binary);
    out << head;
    for (const auto& frame : frames) {
        std::string record;
        append(record, 0, 4);
        append(record, frame.bytes.size(), 2);
        append(record, frame.size, 2);
        out << record << frame.bytes;
    }
    if (!out.flush())
        throw std::runtime_error("cannot write " + path);
}

} // namespace support
