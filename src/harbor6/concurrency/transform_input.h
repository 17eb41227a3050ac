#pragma once

#include "harbor6/concurrency/pipe.h"
#include "harbor6/concurrency/thread.h"
#include "harbor6/stream/nio.h"

namespace nio {

/// Work for a worker thread: reads one stream and writes another. It owns neither; during a run only the
/// thread that runs it may use them.
class HARBOR6_API transform : public basic::runnable {
public:
    transform(nio::input& input, nio::output& output);
    transform(const transform&) = delete;
    transform& operator=(const transform&) = delete;

    /// Copies all of the input to the output. What the streams raise passes through.
    void run() override;

protected:
    ~transform();

    nio::input* const input;
    nio::output* const output;
};

/// An input whose bytes a worker thread computes. It owns a pipe, a transform that writes to it, and the
/// thread that runs the transform. The source isn't owned and must outlive the object; between start and
/// finish only the worker may use it. All operations are called from one thread at a time.
///
/// constructed --start--> running --finish--> finished --start--> running ...
///
/// `Transform` is constructed from an nio::input& and an nio::output&. However its run ends, it must call
/// finish() on its output, or readers wait for ever.
template<class Transform>
class transform_input : public filter_input {
public:
    /// `pipe_size` in bytes, as for nio::pipe, with its exception.
    transform_input(input& source, unsigned pipe_size)
        : filter_input(&source), pipe(pipe_size), decompressor(source, pipe) {
        position = 0;
        pipe.finish();
    }

    /// Ends the run as finish() does, but drops the worker's exception: an owner that wants it calls
    /// finish().
    ~transform_input() override {
        if (stopped)
            return;
        try {
            transform_input::finish();
        } catch (...) {
        }
    }

    /// Starts a worker that reads the source from its present position. Does nothing during a run. Raises
    /// what basic::thread::start raises, and then no run is active.
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

    /// Ends the run, even if it hasn't been read to its end, and waits for the worker. Raises the exception
    /// that ended the worker. Does nothing if the run has been finished already.
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

    /// Waits for `length` bytes and returns how many were read; fewer only at the end of the run, 0 before
    /// the first start().
    unsigned read(char* buffer, unsigned length) override {
        const unsigned got = pipe.read(buffer, length);
        position += got;
        return got;
    }

    /// The next byte as 0 to 255, -1 at the end. The position counts calls, so that it advances by 1 at
    /// the end too.
    int get() override {
        ++position;
        return pipe.get();
    }

private:
    nio::pipe pipe;

protected:
    Transform decompressor;

private:
    basic::thread thread; ///< destroyed first: the worker uses the members above
    bool started = false; ///< between start() and finish()
    bool stopped = false; ///< the last run has been finished, and no new one started
};

} // namespace nio
