// Passes over any bytes as the volumes of a set, by the published rules. The input is a row of volumes, each
// behind its length in two bytes; the client goes on where one is damaged. Whatever they hold, the pass ends
// with a result or an exception of the project's tree, and commits each file at most once.

#include "harbor6/model/volume_source.h"
#include "support/cabinet_host.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr unsigned most_writes = 400;

/// Any volume that the request accepts, else the one that the requests have come to.
struct any_volume : harbor6::VolumeSource {
    explicit any_volume(const std::vector<std::string>& parts) : volumes(parts) {}

    harbor6::data::CountedInput openVolume(const harbor6::VolumeRequest& request) override {
        for (const auto& volume : volumes)
            if (support::seekable_input input(volume); request.matches(input))
                return open(volume);
        return ++asked % 3 == 0 ? harbor6::data::CountedInput() : open(volumes[asked % volumes.size()]);
    }
    static harbor6::data::CountedInput open(const std::string& bytes) {
        return harbor6::data::CountedInput(new support::seekable_input(bytes));
    }

    const std::vector<std::string>& volumes;
    std::size_t asked = 0;
};

void pass(const std::vector<std::string>& parts, const std::string& from,
          const harbor6::Archive::Options& options) {
    support::cabinet_host host(from);
    any_volume source(parts);
    unsigned writes = 0;
    host.trap = [&](const std::string& step) {
        if (step.starts_with("write ") && ++writes > most_writes)
            throw fs::Exception("enough", "fuzz");
    };
    host.client.goes_on = true;
    host.archive->options = options;
    host.archive->volumes = &source;
    host.expand();
    for (const auto& file : host.tree_root->children)
        if (!file->folder && file->commits > 1) {
            std::fprintf(stderr, "broken: at most one commit\n");
            std::abort();
        }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string left(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> parts;
    while (left.size() > 2 && parts.size() < 8) {
        const auto length = static_cast<unsigned char>(left[0]) + 256u * static_cast<unsigned char>(left[1]);
        parts.push_back(left.substr(2, length));
        left.erase(0, 2 + parts.back().size());
    }
    if (parts.empty())
        return 0;
    for (const bool salvage : {false, true})
        pass(parts, salvage ? parts.back() : parts.front(),
             {.published_rules = true, .ignore_checksums = salvage, .longest_path = 512});
    return 0;
}
