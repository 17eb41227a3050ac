#include "harbor6/model/classifier.h"

#include "harbor6/model/archive.h"
#include "harbor6/model/file.h"
#include "harbor6/model/format.h"
#include "harbor6/shell/fork.h"

namespace harbor6 {

namespace {

/// Sets the sample of a format's recogniser, if it has one, for the lifetime of this object.
class Recognition {
public:
    Recognition(Format& format, const un::array<char>& sample) : recogniser(format.recogniser()) {
        if (recogniser)
            recogniser->sample = sample;
    }
    Recognition(const Recognition&) = delete;
    Recognition& operator=(const Recognition&) = delete;
    ~Recognition() {
        if (recogniser)
            recogniser->sample = {};
    }

    bool matches() const { return recogniser && recogniser->matches_at(0) != 0; }

    format::classifier* const recogniser;
};

} // namespace

Classifier::Classifier() = default;

Classifier::~Classifier() = default;

bool Classifier::addFormat(Format& format) const {
    registered.emplace_back(&format);
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

Archive* Classifier::acquireContinuedArchive(File& file) {
    const Fork* const fork = file.getMainFork();
    const auto bytes = fork ? fork->input(true) : data::CountedInput();
    if (!bytes)
        return nullptr;
    const auto sample = std::make_unique_for_overwrite<char[]>(sample_size);
    const un::array<char> head(sample.get(), bytes->read(sample.get(), sample_size));
    for (const auto& format : registered) {
        const Recognition test(*format, head);
        try {
            if (test.matches() && test.recogniser->continues_at(0))
                return format->_newArchiveAtItem(&file, 0);
        } catch (const stream::exception&) {
            // The sample ends inside the supposed header.
        }
    }
    return nullptr;
}

Archive* Classifier::acquireFileArchive(File& file, std::uint32_t /*a*/, std::uint32_t /*b*/,
                                        std::uint32_t /*c*/) {
    return acquireStreamArchive(file);
}

Format* Classifier::recognise(const un::array<char>& sample) const {
    for (const auto& format : registered) {
        const Recognition test(*format, sample);
        try {
            if (test.matches() && test.recogniser->confirm_at(0))
                return format.get();
        } catch (const stream::exception&) {
            // The sample ends inside the supposed header.
        }
    }
    return nullptr;
}

Format* Classifier::resembling(const un::array<char>& sample) const {
    for (const auto& format : registered) {
        const Recognition test(*format, sample);
        if (!test.matches())
            continue;
        test.recogniser->confirm_at(0);
        return format.get();
    }
    return nullptr;
}

const std::vector<std::unique_ptr<Format>>& Classifier::formats() const {
    return registered;
}

} // namespace harbor6
