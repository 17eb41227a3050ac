#pragma once

#include "model/archive_item.h"
#include "model/named_item.h"
#include "outside/shell/scratch_log.h"

#include <memory>
#include <string>

namespace harbor6 {

/// What the entries of one walk share. Entries hold it, so that one that outlives the archive's close() still
/// has its bytes; the archive it must not outlive.
struct WalkState {
    Archive* archive;
    bool building = true; ///< the pass is running: entries can be made and named
    std::uint64_t entries = 0;
    ScratchLog bytes;
};

/// What the classes of entries have in common, `Concrete` being one of them: a name that can be given while
/// the walk is built, and a number in the walk.
template<class Concrete>
class WalkEntry : public ArchiveItem, public NamedItem<Concrete> {
public:
    Archive* owningArchive() const override { return state->archive; }
    std::uint64_t position() override { return number; }
    bool modifiable(const std::string& key) override { return state->building && Item::modifiable(key); }

protected:
    explicit WalkEntry(std::shared_ptr<WalkState> shared)
        : state(std::move(shared)), number(++state->entries) {}

    std::string itemName() const override { return name; }
    bool setItemName(const std::string& given) override {
        if (state->building)
            name = given;
        return state->building;
    }

    const std::shared_ptr<WalkState> state;

private:
    std::string name;
    const std::uint64_t number;
};

} // namespace harbor6
