#pragma once

#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"
#include "harbor6/stream/random.h"

#include <memory>

namespace harbor6::data {

/// A shared holder of a stream: the last holder deletes it. An empty holder is a valid answer that means "no
/// such stream"; using its stream raises harbor6::counted_ptr_null.
template<class Stream>
class Counted {
public:
    Counted() = default;
    explicit Counted(Stream* owned) : held(owned) {}
    explicit Counted(std::unique_ptr<Stream> owned) : held(std::move(owned)) {}

    Stream* get() const { return held.get(); }
    explicit operator bool() const { return held != nullptr; }
    Stream* operator->() const { return &**this; }
    Stream& operator*() const {
        if (!held)
            throw counted_ptr_null();
        return *held;
    }
    void reset() { held.reset(); }

private:
    std::shared_ptr<Stream> held;
};

using CountedInput = Counted<stream::input>;
using CountedOutput = Counted<stream::output>;

namespace random {

using CountedInput = Counted<stream::random::input>;
using CountedOutput = Counted<stream::random::output>;

} // namespace random

} // namespace harbor6::data
