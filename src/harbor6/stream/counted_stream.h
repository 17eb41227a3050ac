#pragma once

#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"
#include "harbor6/stream/random.h"

#include <memory>

namespace harbor6::data {

/// A shared holder of a stream. Copies hold the same stream; the last one deletes it without calling close()
/// first. An empty holder is a valid result that means "no such stream". A holder and its copies stay on one
/// thread at a time, as the stream does. Construction may raise std::bad_alloc, and then deletes the stream.
template<class Stream>
class Counted {
public:
    /// An empty holder.
    Counted() = default;
    /// Takes ownership of the stream; null makes an empty holder.
    explicit Counted(Stream* owned) : held(owned) {}
    explicit Counted(std::unique_ptr<Stream> owned) : held(std::move(owned)) {}

    /// The stream, still owned by the holders; null if empty.
    Stream* get() const { return held.get(); }
    explicit operator bool() const { return held != nullptr; }
    /// The stream. Raise harbor6::counted_ptr_null if the holder is empty.
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
