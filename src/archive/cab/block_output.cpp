#include "archive/cab/block_output.h"

#include <exception>

namespace harbor6::cab {

block_output::block_output() = default;

block_output::~block_output() {
    try {
        finish();
    } catch (...) {
    }
}

void block_output::start() {
    current = 0;
    openCurrent();
}

void block_output::finish() {
    // Empty files behind a full one have all their bytes, although no write came that went over to them.
    while (std::uncaught_exceptions() == 0 && currentEntry() && write_state == segment_size &&
           current + 1 < entries.size() && entries[current + 1].size == 0) {
        write_state = 0;
        next();
    }
    closeCurrent();
    if (block_entry* const entry = currentEntry()) {
        if (entry->target)
            entry->target->commitItem();
        current = entries.size();
    }
}

void block_output::next() {
    closeCurrent();
    if (block_entry* const entry = currentEntry()) {
        if (entry->target)
            entry->target->commitItem();
        entry->target = nullptr;
        ++current;
    }
    openCurrent();
}

block_output::block_entry* block_output::currentEntry() {
    return current < entries.size() ? &entries[current] : nullptr;
}

void block_output::openCurrent() {
    block_entry* const entry = currentEntry();
    if (!entry)
        return;
    segment_size = entry->size;
    if (!entry->target) {
        attach(&sink);
        return;
    }
    if (Fork* const fork = entry->target->getMainFork())
        current_output = fork->output(true);
    attach(&*current_output);
}

void block_output::closeCurrent() {
    attach(nullptr);
    current_output.reset();
}

} // namespace harbor6::cab
