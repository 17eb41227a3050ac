#pragma once

#include "harbor6/concurrency/pipe.h"
#include "harbor6/concurrency/thread.h"
#include "harbor6/stream/nio.h"

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

/// An input whose bytes a worker computes: it owns a pipe, a transform that writes into it, and the thread
/// that runs the transform. The source isn't owned and must outlive the object; between start and finish it
/// belongs to the worker. All calls come from one thread, the owner's.
///
/// constructed --start--> running --finish--> wound up --start--> running ...
///
/// The transform must call finish() on its output however its run ends, or readers wait for ever.
template<class Transform>
class transform_input : public filter_input {
public:
    /// `pipe_size` is a power of two.
    transform_input(input& source, unsigned pipe_size)
        : filter_input(&source), pipe(pipe_size), decompressor(source, pipe) {
        position = 0;
        pipe.finish();
    }

    /// Winds a run up. A failure that the worker left behind is dropped: where another exception is on its
    /// way that one is kept, and otherwise the owner has chosen not to call finish.
    ~transform_input() override {
        if (stopped)
            return;
        try {
            transform_input::finish();
        } catch (...) {
        }
    }

    /// Starts a worker on the source as it stands; nothing while a run is on.
    void start() override {
        if (started)
            return;
        started = true;
        stopped = false;
        pipe.reset();
        try {
            thread.start(&decompressor);
        } catch (...) {
            started = false;
            pipe.finish();
            throw;
        }
    }

    /// Winds the run up, whether it has been read to its end or not, and waits for the worker. Raises what
    /// the worker left behind. Nothing if that has been done already.
    void finish() override {
        if (stopped)
            return;
        stopped = true;
        started = false;
        pipe.abort();
        thread.join();
        try {
            thread.raise();
        } catch (...) {
            thread.release();
            throw;
        }
        thread.release();
    }

    /// Waits for `length` bytes; fewer come only at the end of the run, none ahead of the first.
    unsigned read(char* buffer, unsigned length) override {
        const unsigned came = pipe.read(buffer, length);
        position += came;
        return came;
    }

    /// Counts one byte at the end too.
    int get() override {
        ++position;
        return pipe.get();
    }

private:
    nio::pipe pipe;

protected:
    Transform decompressor;

private:
    basic::thread thread; ///< goes first, the worker's other belongings after it
    bool started = false; ///< a run is on
    bool stopped = false; ///< the last run has been wound up
};

} // namespace nio
