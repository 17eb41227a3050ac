#pragma once

#include "model/file.h"

#include <concepts>
#include <utility>

namespace harbor6 {

/// A file with exactly one fork, of the class `OwnFork`, whose number is 0.
template<class OwnFork>
class OneForkFile : public virtual File {
public:
    Fork* getMainFork() override { return &fork; }
    const Fork* getMainFork() const override { return &fork; }
    Fork* getFork(unsigned id) override { return id == 0 ? getMainFork() : nullptr; }
    const Fork* getFork(unsigned id) const override { return id == 0 ? getMainFork() : nullptr; }

protected:
    /// A fork that wants to know the file that holds it is told.
    OneForkFile() requires std::constructible_from<OwnFork, File*> : fork(this) {}
    template<class... Arguments>
    explicit OneForkFile(Arguments&&... arguments) : fork(std::forward<Arguments>(arguments)...) {}

    OwnFork fork;
};

} // namespace harbor6
