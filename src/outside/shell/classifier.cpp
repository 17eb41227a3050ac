#include "outside/shell/classifier.h"

#include "model/classifier.h"
#include "model/file.h"
#include "model/format.h"
#include "outside/shell/archive.h"
#include "outside/shell/fork.h"

namespace harbor6 {

Classifier::Classifier() = default;

Classifier::~Classifier() = default;

bool Classifier::addFormat(Format& format) const {
    known.emplace_back(&format);
    return true;
}

Archive* Classifier::acquireStreamArchive(File& file) {
    const Fork* const fork = file.getMainFork();
    const auto bytes = fork ? fork->input(true) : data::CountedInput();
    if (!bytes)
        return nullptr;
    const auto sample = std::make_unique_for_overwrite<char[]>(sample_size);
    const auto came = bytes->read(sample.get(), sample_size);
    Format* const format = recognise(un::array<char>(sample.get(), came));
    return format ? format->_newArchiveAtItem(&file, 0) : nullptr;
}

Archive* Classifier::acquireFileArchive(File& file, std::uint32_t /*a*/, std::uint32_t /*b*/,
                                        std::uint32_t /*c*/) {
    return acquireStreamArchive(file);
}

Format* Classifier::recognise(const un::array<char>& sample) const {
    std::unique_ptr<basic::cloneable_exception> cut_short;
    for (const auto& format : known) {
        format::classifier* const recogniser = format->recogniser();
        if (!recogniser)
            continue;
        recogniser->sample = sample;
        bool claimed = false;
        try {
            claimed = recogniser->matches_at(0) && recogniser->confirm_at(0);
        } catch (const stream::exception& failure) {
            cut_short = failure.clone();
        }
        recogniser->sample = {};
        if (claimed)
            return format.get();
    }
    if (cut_short)
        cut_short->raise();
    return nullptr;
}

const std::vector<std::unique_ptr<Format>>& Classifier::formats() const {
    return known;
}

} // namespace harbor6
