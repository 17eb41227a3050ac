#include "host/extraction.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/source_file.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/format.h"
#include "host/commands.h"

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

bool extract_archive(command_context& context, const archive_source& source, harbor6::Folder& target,
                     traversal how) {
    auto& log = context.log;
    AcquiredPtr<SourceFile> file;
    std::string failure;
    bool in_data = false; ///< the failure is in a file's data
    try {
        file = new SourceFile(context.plain_format, nio::leaf(source.path, '/'), source.open(&log.meter));
        log.meter.begin(source.name(), file->storage().size());
        const auto archive = acquire_archive(context, *file);
        if (!archive) {
            log.archive_error(why_unrecognised(context.formats, file->storage()));
            return false;
        }
        archive->open(harbor6::Archive::mode_read);
        const bool by_item = how == traversal::item_by_item;
        const auto obstacle = by_item ? build_tree(*archive, file->storage()) : std::string();
        if (!obstacle.empty())
            log.archive_error("archives inside it are kept as files: " + obstacle);
        if (by_item && obstacle.empty()) {
            context.client.budget =
                context.chosen.limited ? nesting_budget(file->storage().tell()) : nesting_budget();
            target._addContent(*archive, nullptr); // without a list of what was added
        } else {
            archive->addContentTo(target, nullptr);
        }
        archive->close();
        return true;
    } catch (const fs::Exception&) {
        // The disk is at fault, however far the archive was read.
        log.archive_error(failure_text(std::current_exception()));
        return false;
    } catch (const format::exception&) {
        failure = failure_text(std::current_exception());
        in_data = true;
    } catch (const basic::algorithm_exception&) {
        failure = failure_text(std::current_exception());
        in_data = true;
    } catch (...) {
        failure = failure_text(std::current_exception());
    }
    // A decoder may read beyond the end without needing what is missing there. Only together with a failure
    // does such a read mean that the archive is cut short.
    const bool cut = file && file->storage().came_short();
    const auto cut_text = cut ? file->storage().cut_short().message() : std::string();
    if (failure != cut_text && in_data)
        log.data_error(failure);
    else if (failure != cut_text)
        log.archive_error(failure);
    if (cut)
        log.archive_error(cut_text);
    return false;
}

} // namespace host
