#pragma once

#include "model/single_fork_file.h"
#include "outside/shell/walk_entry.h"

namespace harbor6 {

/// The fork of an entry: a run of the walk's bytes. It has no input until all of them have come, and takes
/// them only while the walk is built.
class EntryFork : public SimpleFork {
public:
    EntryFork(File* file, std::shared_ptr<WalkState> state);
    ~EntryFork() override;

    data::CountedInput input(bool expanding) const override;
    data::random::CountedInput randomInput(bool expanding, bool shared) const override;
    data::CountedOutput output(bool expanding) override;

    bool complete = false; ///< all bytes have come
    std::uint64_t length = 0;

private:
    const std::shared_ptr<WalkState> state;
    std::uint64_t offset = 0; ///< of the first byte in the walk's bytes
};

} // namespace harbor6
