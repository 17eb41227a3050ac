// Any bytes behind the head of a compound document: reading ends, with a result or an exception of the
// project's tree, and all streams together are no longer than the file.

#include "formats/cfb/cfb_document.h"
#include "formats/cfb/cfb_format.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/output.h"
#include "seekable_bytes.h"

#include <cstdlib>
#include <string>

namespace {

using namespace format::cfb;

void read(const std::string& bytes) {
    seekable_bytes input(bytes.data(), bytes.size());
    format::cfb::document document(input);
    stream::infinite_output output;
    for (const auto& item : document.items())
        try {
            if (!item.is_storage)
                document.copy(item, output);
        } catch (const format::exception&) {
        }
    if (output.tell() > bytes.size())
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    if (size >= 34) { // the fields without which nothing more is read
        const bool large = bytes[26] & 1;
        bytes.replace(0, signature.size(), signature);
        bytes.replace(26, 8,
                      std::string{large ? '\4' : '\3', 0, '\xFE', '\xFF', large ? '\14' : '\11', 0, 6, 0});
    }
    try {
        read(bytes);
    } catch (const un::exception&) {
    }
    try {
        seekable_bytes input(bytes.data(), bytes.size());
        format::cfb::classifier().measure(input);
    } catch (const stream::exception&) {
    }
    return 0;
}
