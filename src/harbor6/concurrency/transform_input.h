#pragma once

#include "harbor6/concurrency/pipe.h"
#include "harbor6/concurrency/thread.h"
#include "harbor6/stream/nio.h"

#include <exception>

namespace nio {

/// Work that may run on a worker thread: reads one stream and writes another. It owns neither; during a run
/// only the thread that runs it may use them.
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

/// What a transform_input gives its transform to write to: a pipe, except during a run that another output
/// takes. Of such a run it counts the bytes. The first failure of that output is kept, and what is written
/// after it is dropped, as a pipe drops it after abort(): the transform continues to the end of its input.
class HARBOR6_API transform_target final : public output {
public:
    explicit transform_target(nio::pipe& pipe);
    ~transform_target() override;

    /// Before a run: sends it to `taker`, which must live until its end; null drops what is written.
    void divert(output* taker);
    /// Before a run: sends it to the pipe.
    void restore() { divert(&pipe); }
    /// After a diverted run: raises the failure of the output that took it, if any, and returns the number of
    /// bytes that were written.
    std::uint64_t taken();

    void write(const char* buffer, unsigned length) override;
    /// The pipe's.
    void finish() override;

private:
    nio::pipe& pipe;
    output* receiver; ///< of what is written; null drops it
    std::uint64_t count = 0;
    std::exception_ptr failure;
};

/// An input whose bytes a transform computes. It owns a pipe, a transform that writes to it, and the thread
/// that runs the transform. The source isn't owned and must outlive the object; between start and finish only
/// the transform may use it. All operations are called from one thread at a time.
///
/// constructed --start--> running --finish--> finished --start--> running ...
///
/// The first read of a run starts a worker thread. A run that copy_to() or finish() takes as a whole needs
/// none: it happens within that call, on the calling thread, without the pipe. Both give the same bytes, the
/// same position of the source and the same failure.
///
/// `Transform` is constructed from an nio::input& and an nio::output&. However its run ends, it must call
/// finish() on its output, or readers wait for ever.
template<class Transform>
class transform_input : public filter_input {
public:
    /// `pipe_size` in bytes, as for nio::pipe, with its exception.
    transform_input(input& source, unsigned pipe_size)
        : filter_input(&source), pipe(pipe_size), target(pipe), decompressor(source, target) {
        position = 0;
        pipe.finish();
    }

    /// Ends the run as finish() does, but drops the transform's exception: an owner that wants it calls
    /// finish().
    ~transform_input() override {
        if (stopped)
            return;
        try {
            transform_input::finish();
        } catch (...) {
        }
    }

    /// Begins a run, which reads the source from its present position. Does nothing during a run.
    void start() override {
        if (started)
            return;
        started = waiting = true;
        stopped = false;
        pipe.reset();
        target.restore();
    }

    /// Ends the run, even if it hasn't been read to its end, and waits until the transform has. Raises the
    /// exception that ended it. Does nothing if the run has been finished already.
    void finish() override {
        if (stopped)
            return;
        if (waiting)
            run_into(nullptr);
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
    /// the first start(). The first read of a run raises what basic::thread::start raises; the run is then
    /// over.
    unsigned read(char* buffer, unsigned length) override {
        start_worker();
        const unsigned got = pipe.read(buffer, length);
        position += got;
        return got;
    }

    /// The next byte as 0 to 255, -1 at the end. The position counts calls, so that it advances by 1 at
    /// the end too.
    int get() override {
        start_worker();
        ++position;
        return pipe.get();
    }

    /// Writes what is left of the run to `taker` and returns the number of bytes. What the transform raises
    /// is left to finish(), what `taker` raises passes through. The latter ends the writing, not the run.
    std::uint64_t copy_to(output& taker) {
        if (!waiting)
            return copy(*this, taker, ~std::uint64_t{0}, 65536);
        return run_into(&taker);
    }

private:
    void start_worker() {
        if (!waiting)
            return;
        waiting = false;
        try {
            thread.start(&decompressor);
        } catch (...) {
            started = false;
            pipe.finish();
            throw;
        }
    }

    std::uint64_t run_into(output* taker) {
        waiting = false;
        target.divert(taker);
        thread.run_here(&decompressor);
        const auto taken = target.taken();
        position += taken;
        return taken;
    }

    nio::pipe pipe;
    transform_target target;

protected:
    Transform decompressor;

private:
    basic::thread thread; ///< destroyed first: the worker uses the members above
    bool started = false; ///< between start() and finish()
    bool waiting = false; ///< started, and the transform doesn't run yet
    bool stopped = false; ///< the last run has been finished, and no new one started
};

} // namespace nio
