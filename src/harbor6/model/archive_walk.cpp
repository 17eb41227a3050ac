#include "harbor6/model/archive_walk.h"

#include "harbor6/model/archive.h"

namespace harbor6 {

ArchiveWalk::ArchiveWalk(Archive& walked, ScratchSpace& space)
    : archive(walked), own_shell(walked.shell().getClassifier(), client),
      state(std::make_shared<WalkState>(walked, space)), tree(new EntryFolder(state)) {}

ArchiveWalk::~ArchiveWalk() = default;

void ArchiveWalk::build() {
    archive.addContentTo(*tree, nullptr);
    state->building = false;
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
