#pragma once

#include "concurrency/runnable.h"
#include "stream/nio_input.h"
#include "stream/nio_output.h"

namespace nio {

/// Work that turns one stream into another, for a worker thread to run. It owns neither stream; while a run
/// goes on both belong to the thread that runs it.
class HARBOR6_API transform : public basic::runnable {
public:
    transform(nio::input& input, nio::output& output);
    transform(const transform&) = delete;
    transform& operator=(const transform&) = delete;

    /// Copies all of the input.
    void run() override;

protected:
    ~transform();

    nio::input* const input;
    nio::output* const output;
};

} // namespace nio
