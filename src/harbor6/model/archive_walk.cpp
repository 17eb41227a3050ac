#include "harbor6/model/archive_walk.h"

#include "harbor6/model/archive.h"

namespace harbor6 {

ArchiveWalk::ArchiveWalk(Archive& walked, ScratchSpace& space)
    : archive(walked), own_shell(walked.shell().getClassifier(), client),
      state(std::make_shared<WalkState>(walked, space)), tree(new EntryFolder(state)) {}

ArchiveWalk::~ArchiveWalk() = default;

void ArchiveWalk::build() {
    try {
        archive.addContentTo(*tree, nullptr);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const basic::bad_alloc&) {
        throw;
    } catch (...) {
        client.sourceArchiveDamaged(archive, std::current_exception());
    }
    state->building = false;
    state->failure = client.first_failure;
    if (state->failure)
        tree->dropIncomplete();
}

bool ArchiveWalk::Client::sourceArchiveDamaged(Archive& /*archive*/, const std::exception_ptr& failure) {
    if (!first_failure)
        first_failure = failure;
    return true;
}

EntryFolder& ArchiveWalk::root() const {
    return *tree;
}

bool ArchiveWalk::building() const {
    return state->building;
}

HarborShell& ArchiveWalk::shell() {
    return own_shell;
}

} // namespace harbor6
