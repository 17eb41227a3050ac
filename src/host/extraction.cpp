#include "host/extraction.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/source_file.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/format.h"
#include "host/commands.h"

#include <filesystem>

namespace host {

namespace {

using pattern::AcquiredPtr;

std::string why_unrecognised(const Registry& formats, file_input& storage) {
    const auto reason = formats.why_unrecognised(storage);
    const bool is_pipe = storage.size() == ~std::uint64_t{0};
    return is_pipe && reason == Registry::unknown_format
               ? reason + " (archives inside other data are found in files only)"
               : reason;
}

/// Builds the tree of the archive's items. Returns why that is impossible, empty if it was possible; the
/// archive's bytes are then set back to their beginning, so that one pass can extract what is undamaged.
/// Raises the failure if they can't be set back.
std::string build_tree(const harbor6::Archive& archive, file_input& storage) {
    try {
        std::int64_t items = 0;
        archive.getNumItems(items, false);
        return {};
    } catch (const qpthr::QpException&) {
        if (!storage.seek(0))
            throw;
        return failure_text(std::current_exception());
    }
}

/// Extracts the archive on `file`; that it is none is reported.
void extract(command_context& context, SourceFile& file, harbor6::Folder& target, traversal how) {
    const auto archive = acquire_archive(context, file);
    if (!archive)
        return context.log.archive_error(why_unrecognised(context.formats, file.storage()));
    archive->open(harbor6::Archive::mode_read);
    const bool by_item = how == traversal::item_by_item;
    const auto obstacle = by_item ? build_tree(*archive, file.storage()) : std::string();
    if (!obstacle.empty())
        context.log.archive_error("archives inside it are kept as files: " + obstacle);
    if (by_item && obstacle.empty()) {
        context.client.budget =
            context.chosen.limited ? nesting_budget(file.storage().tell()) : nesting_budget();
        target._addContent(*archive, nullptr); // without a list of what was added
    } else {
        archive->addContentTo(target, nullptr);
    }
    archive->close();
}

/// Reports the failure that is being handled. A decoder may read beyond the end without needing what is
/// missing there: only together with a failure does such a read mean that the archive is cut short.
void report_failure(report& log, const file_input& storage) {
    const auto failure = std::current_exception();
    if (!storage.came_short())
        return log.damage(failure);
    log.archive_error(storage.cut_short().message());
    try {
        std::rethrow_exception(failure);
    } catch (const stream::exception&) {
        // It only says that the input ended.
    } catch (...) {
        log.damage(failure);
    }
}

} // namespace

AcquiredPtr<harbor6::Archive> acquire_archive(command_context& context, harbor6::File& file) {
    auto& classifier = context.formats.classifier;
    AcquiredPtr<harbor6::Archive> archive(classifier.acquireStreamArchive(file));
    if (!archive)
        archive = classifier.acquireContinuedArchive(file);
    if (archive) {
        archive->options = context.client.archiveOptions();
        archive->scratch = context.scratch;
        archive->volumes = &context.volumes;
    }
    return archive;
}

void extract_archive(command_context& context, const archive_source& source, harbor6::Folder& target,
                     traversal how) {
    auto& log = context.log;
    AcquiredPtr<SourceFile> file;
    try {
        file = new SourceFile(context.plain_format, nio::leaf(source.path, '/'), source.open(&log.meter));
        log.meter.begin(source.name(), file->storage().size());
        extract(context, *file, target, how);
    } catch (const fs::Exception&) {
        // The disk is at fault, however far the archive was read.
        std::error_code error;
        const bool misplaced = !file && source.path != context.chosen.archives.front() &&
                               !std::filesystem::exists(source.path, error);
        log.archive_error(failure_text(std::current_exception()) +
                          (misplaced ? " (names of files in an archive go behind --)" : ""));
    } catch (...) {
        if (file)
            report_failure(log, file->storage());
        else
            log.damage(std::current_exception());
    }
}

} // namespace host
