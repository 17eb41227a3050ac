// Any bytes searched for archives, from a stream that seeks and from one that doesn't: the search ends, and
// what it finds lies inside the bytes, in order.

#include "formats/cab/cab_format.h"
#include "harbor6/model/archive_finder.h"
#include "harbor6/model/classifier.h"
#include "seekable_bytes.h"

#include <cstdlib>

namespace {

void search(stream::input& bytes, std::uint64_t size) {
    static const harbor6::Classifier* const formats = [] {
        auto* const made = new harbor6::Classifier;
        made->addFormat(*new harbor6::cab::Format(nullptr));
        return made;
    }();
    harbor6::ArchiveFinder finder(*formats, bytes);
    std::uint64_t least = 0;
    for (harbor6::FoundArchive found; finder.next(found); least = found.offset + 1)
        if (found.offset < least || found.offset >= size || (!found.cut && found.size > size - found.offset))
            std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto* const bytes = reinterpret_cast<const char*>(data);
    seekable_bytes file(bytes, size);
    search(file, size);
    stream::array_input memory({bytes, static_cast<unsigned>(size)}, 0);
    search(memory, size);
    return 0;
}
