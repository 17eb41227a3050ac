#include "host/extraction.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/format.h"
#include "host/commands.h"
#include "host/disk/source_file.h"

#include <vector>

namespace host {

namespace {

using pattern::AcquiredPtr;

/// Why no format recognised the file. Raises what a format says of a header that is cut short.
std::string why_unrecognised(const harbor6::Classifier& classifier, file_input& storage) {
    std::vector<char> sample(harbor6::Classifier::sample_size);
    storage.seek(0);
    const auto length = storage.read(sample.data(), harbor6::Classifier::sample_size);
    if (length == 0)
        return "the file is empty";
    if (const auto* const format = classifier.resembling(un::array<char>(sample.data(), length)))
        return "begins as " + format->string(harbor6::key::longName) +
               " archives do, but its header is damaged or says that it continues another archive";
    return "not an archive of a known format";
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

bool extract_archive(command_context& context, const std::string& path, harbor6::Folder& target,
                     traversal how) {
    auto& log = context.log;
    auto& classifier = context.formats.classifier;
    AcquiredPtr<SourceFile> file;
    std::string failure;
    bool in_data = false; ///< the failure is in a file's data
    try {
        auto source = path == "-" ? open_standard_input() : open_input(path);
        file = new SourceFile(context.plain_format, nio::leaf(path, '/'),
                              std::make_unique<file_input>(std::move(source), "the archive"));
        const AcquiredPtr<harbor6::Archive> archive(classifier.acquireStreamArchive(*file));
        if (!archive) {
            log.archive_error(why_unrecognised(classifier, file->storage()));
            return false;
        }
        archive->options = Client::archiveOptions();
        archive->scratch = context.scratch;
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
