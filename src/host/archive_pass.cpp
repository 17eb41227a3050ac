#include "host/archive_pass.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/format.h"
#include "host/disk/source_file.h"

#include <optional>

namespace host {

namespace {

using pattern::AcquiredPtr;

/// Why no format claimed the file. Raises what a format says of a header that is cut short.
std::string why_unknown(format_registry& formats, file_input& storage) {
    std::vector<char> sample(harbor6::Classifier::sample_size);
    storage.seek(0);
    const auto came = storage.read(sample.data(), harbor6::Classifier::sample_size);
    if (came == 0)
        return "the file is empty";
    if (const auto* const format = formats.classifier.resembling(un::array<char>(sample.data(), came)))
        return "begins as " + format->string(harbor6::key::longName) +
               " does, but its head is damaged or says that it continues another archive";
    return "not an archive of a known format";
}

/// Whether the archive gives its items. One that is damaged doesn't; what can be had of it comes out in one
/// pass, if its bytes can be read once more.
bool can_be_walked(const harbor6::Archive& archive, file_input& storage) {
    try {
        std::int64_t items = 0;
        return archive.getNumItems(items, false);
    } catch (const qpthr::QpException&) {
        if (!storage.seek(0))
            throw;
        return false;
    }
}

} // namespace

bool run_pass(format_registry& formats, harbor6::Format& plain_format, report& log, const std::string& path,
              harbor6::Folder& target, traversal way) {
    AcquiredPtr<SourceFile> file;
    std::optional<std::string> failure;
    try {
        auto source = path == "-" ? open_standard_input() : open_input(path);
        file = new SourceFile(plain_format, nio::leaf(path, '/'),
                              std::make_unique<file_input>(std::move(source), "it"));
        AcquiredPtr<harbor6::Archive> archive(formats.classifier.acquireStreamArchive(*file));
        if (!archive) {
            log.failure(why_unknown(formats, file->storage()));
            return false;
        }
        archive->open(harbor6::Archive::mode_read);
        if (way == traversal::item_by_item && can_be_walked(*archive, file->storage()))
            target.addContent(*archive);
        else
            archive->addContentTo(target, nullptr);
        archive->close();
        return true;
    } catch (...) {
        failure = failure_text();
    }
    // A decoder that looked beyond the end and needed nothing from there leaves a short read too; only
    // together with a failure does it mean that bytes are missing.
    const bool wanted_more = file && file->storage().came_short();
    const auto cut = wanted_more ? file->storage().cut_short().message() : std::string();
    if (*failure != cut)
        log.failure(*failure);
    if (wanted_more)
        log.failure(cut);
    return false;
}

} // namespace host
