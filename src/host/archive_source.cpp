#include "host/archive_source.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/archive_finder.h"
#include "host/commands.h"
#include "host/progress.h"

#include <filesystem>
#include <vector>

namespace host {

namespace {

using harbor6::FoundArchive;

/// Tells how far it was read.
class watched_input : public file_input {
public:
    watched_input(file_descriptor bytes, std::uint64_t offset, progress* told)
        : file_input(std::move(bytes), "the archive", offset), meter(told) {}

protected:
    unsigned _read(char* buffer, unsigned length) override {
        const auto count = file_input::_read(buffer, length);
        if (meter)
            meter->at(_tell());
        return count;
    }
    using file_input::_read;

private:
    progress* meter;
};

/// Whether the file starts with the signature of a format, sound or not.
bool begins_as_archive(const harbor6::Classifier& formats, file_input& bytes) {
    std::vector<char> sample(harbor6::Classifier::sample_size);
    const auto length = bytes.read(sample.data(), harbor6::Classifier::sample_size);
    bytes.seek(0);
    try {
        return formats.resembling(un::array<char>(sample.data(), length)) != nullptr;
    } catch (const stream::exception&) {
        return true; // and ends inside its header
    }
}

/// Archives without a known end inside a file that are read, as each may be read to the file's end.
constexpr unsigned most_without_end = 16;

/// The archives in one file, found one after another.
class embedded_archives {
public:
    embedded_archives(const harbor6::Classifier& formats, const std::string& path, progress& meter)
        : file(path), told(meter), bytes(archive_source{path}.open(&meter)) {
        if (bytes->size() == FoundArchive::unknown_size)
            return; // what is read from a pipe is gone
        const bool is_archive = begins_as_archive(formats, *bytes);
        finder.emplace(formats, *bytes);
        advance();
        // What follows the end of an archive may be others; what follows its beginning is its own.
        if (is_archive && !(found && at.offset == 0 && !at.cut && at.size != FoundArchive::unknown_size))
            finder.reset(), found = false;
    }

    /// Whether there is one, `at`.
    bool found = false;
    FoundArchive at;
    std::uint64_t size() const { return bytes->size(); }
    void advance() {
        told.begin(file, bytes->size());
        for (;;) {
            found = finder->next(at);
            if (!found || !(at.cut || at.size == FoundArchive::unknown_size) ||
                ++without_end <= most_without_end)
                return;
        }
    }
    /// Why there may be more; empty if all were found.
    std::string complaint() const {
        if (without_end > most_without_end)
            return "more than " + std::to_string(most_without_end) +
                   " archives in it are cut short; only so many of them are read";
        return passed_over || (finder && finder->passedOver()) ? too_many_heads : "";
    }
    /// Gives back the memory that is not needed until the next advance().
    void rest() {
        bytes->release_memory();
        if (found || !finder)
            return;
        passed_over = finder->passedOver();
        finder.reset();
    }

private:
    const std::string& file;
    progress& told;
    std::unique_ptr<file_input> bytes;
    std::optional<harbor6::ArchiveFinder> finder;
    unsigned without_end = 0; ///< archives
    bool passed_over = false; ///< so was something by the search
};

} // namespace

std::string archive_source::name() const {
    return is_one_of_several ? path + '@' + un::write(offset, 10, 1) : path;
}

std::unique_ptr<file_input> archive_source::open(progress* meter) const {
    return std::make_unique<watched_input>(path == "-" ? open_standard_input() : open_input(path), offset,
                                           meter);
}

bool for_each_archive(command_context& context, const std::string& path,
                      const std::function<void(const archive_source&)>& work) {
    archive_source next{path};
    bool more = true; // `next` is to be worked on
    std::string complaint;
    try {
        std::error_code ignored;
        // A named pipe can be opened only once.
        if (path == "-" || std::filesystem::is_regular_file(path, ignored)) {
            embedded_archives archives(context.formats.classifier, path, context.log.meter);
            next.file_is_archive = archives.found && archives.at.offset == 0;
            while (archives.found) {
                next.offset = archives.at.offset;
                const auto end = archives.at.offset + archives.at.size;
                const bool sized = archives.at.size != FoundArchive::unknown_size;
                archives.advance();
                next.bytes_behind =
                    sized && !archives.found && end < archives.size() ? archives.size() - end : 0;
                next.is_one_of_several = next.is_one_of_several || archives.found;
                more = archives.found;
                archives.rest();
                work(next);
            }
            complaint = archives.complaint();
        }
    } catch (const fs::Exception&) {
        // The file can't be opened or read, which `work` finds too.
    }
    if (more)
        work(next);
    if (complaint.empty())
        return true;
    context.log.begin_archive(path);
    context.log.archive_error(complaint);
    return context.log.end_archive();
}

} // namespace host
