#include "harbor6/model/file_splitter.h"

namespace harbor6 {

FileSplitter::FileSplitter() = default;

FileSplitter::~FileSplitter() {
    try {
        finish();
    } catch (...) {
    }
}

void FileSplitter::start() {
    current = 0;
    wanted_end = findWantedEnd();
    openCurrent();
}

void FileSplitter::finish() {
    closeCurrent();
    if (auto* const file = currentEntry()) {
        if (file->target)
            file->target->commitItem();
        current = entries.size();
    }
}

void FileSplitter::endStream() {
    while (currentEntry() && write_state == segment_size && current + 1 < entries.size() &&
           entries[current + 1].size == 0) {
        write_state = 0;
        next();
    }
    closeCurrent();
}

bool FileSplitter::wantsMore() const {
    return current == none ? findWantedEnd() > 0 : current < wanted_end;
}

std::size_t FileSplitter::findWantedEnd() const {
    auto end = entries.size();
    while (end > 0 && !entries[end - 1].target)
        --end;
    return end;
}

void FileSplitter::next() {
    closeCurrent();
    if (auto* const file = currentEntry()) {
        if (file->target)
            file->target->commitItem();
        file->target = nullptr;
        ++current;
    }
    openCurrent();
}

FileSplitter::entry* FileSplitter::currentEntry() {
    return current < entries.size() ? &entries[current] : nullptr;
}

void FileSplitter::openCurrent() {
    auto* const file = currentEntry();
    if (!file)
        return;
    segment_size = file->size;
    if (!file->target) {
        attach(&sink);
        return;
    }
    if (Fork* const fork = file->target->getMainFork())
        current_output = fork->output(true);
    attach(&*current_output); // a target without a main fork raises counted_ptr_null here
}

void FileSplitter::closeCurrent() {
    attach(nullptr);
    current_output.reset();
}

} // namespace harbor6
