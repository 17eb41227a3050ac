// Any bytes as the records of a cabinet and the blocks behind them: whatever they hold, every read ends, with
// a result or with an exception of the project's tree.

#include "formats/cab/cab_format.h"
#include "formats/cab/cab_item_reader.h"
#include "formats/cab/cab_records.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/array_input.h"
#include "harbor6/stream/output.h"

#include <vector>

namespace {

/// Reads as the content scan does, without the decoders: the method is always 0, the reserve sizes are those
/// of the header.
void walk(stream::input& input, bool verify) {
    format::cab::archive_header header;
    header.read(input, verify);
    std::vector<format::cab::folder_header> folders;
    for (std::uint32_t i = 0; i < header.folder_count; ++i) {
        auto& folder = folders.emplace_back();
        folder.reserve = header.reserve.present ? &header.reserve.value : nullptr;
        folder.read(input, verify);
    }
    for (std::uint32_t i = 0; i < header.file_count; ++i)
        format::cab::file_header().read(input, verify);
    stream::infinite_output output;
    for (auto& folder : folders) {
        folder.compression &= 0xFFF0;
        format::cab::item_reader(&folder).process(input, output);
    }
}

template<class Act>
void attempt(Act act) {
    try {
        act();
    } catch (const un::exception&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const un::array<char> bytes(reinterpret_cast<const char*>(data), static_cast<unsigned>(size));
    for (const bool verify : {false, true}) {
        attempt([&] {
            stream::array_input input(bytes, 0);
            walk(input, verify);
        });
    }
    attempt([&] { // blocks from the first byte on, whatever tables would say
        stream::array_input input(bytes, 0);
        stream::infinite_output output;
        format::cab::folder_header folder;
        folder.block_count = 0xFFFF;
        format::cab::item_reader(&folder).process(input, output);
    });
    format::cab::classifier classifier(2001);
    classifier.sample = bytes;
    for (unsigned offset = 0; offset <= size && offset < 8; ++offset)
        attempt([&] { classifier.matches_at(offset) && classifier.confirm_at(offset); });
    return 0;
}
