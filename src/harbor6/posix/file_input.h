#pragma once

#include "harbor6/groundwork/exception.h"
#include "harbor6/posix/file_descriptor.h"
#include "harbor6/stream/input.h"

#include <memory>

namespace host {

/// Reads a file or a pipe. The last 256 KiB that it delivered stay in its ring buffer, so a push-back or a
/// seek into them is a step back: nothing is copied, and the bytes passed to `unread` are not looked at.
/// Memory is constant, whatever the input's size. On a plain file it also seeks further back, by reading
/// again. One thread at a time. A failed read raises fs::Exception.
///
/// A read or skip that delivers fewer bytes than asked is no failure: decoders read beyond the end and seek
/// back. But bytes pushed back after such a read were needed and are incomplete: that raises
/// stream::cut_short.
class HARBOR6_API file_input : public stream::input {
public:
    /// Reads `source` from its current position, which is place 0 of this stream. `name` is for messages. In
    /// a plain file place 0 is `offset` bytes further.
    file_input(file_descriptor source, std::string name, std::uint64_t offset = 0);

    using stream::input::read;

    void unread(const char* bytes, unsigned length) override;
    void unread(char byte) override;
    /// Goes to any place that the ring holds; on a plain file, to any place up to its end. False otherwise.
    bool seek(std::uint64_t value) override;
    /// All ones on a pipe.
    std::uint64_t size() const override;

    /// Gives the ring's memory back until the next read, if this is a plain file.
    void release_memory();
    /// A second descriptor of the input if it is a plain file read from its first byte, else none.
    file_descriptor duplicate() const;
    /// Whether the last read or skip reached the end before it had what was asked for.
    bool came_short() const { return short_read; }
    /// What to raise if the bytes that such a read missed are needed. It names the end of the file, not of
    /// the part of it that is read.
    stream::cut_short cut_short() const;

protected:
    unsigned _read(char* buffer, unsigned length) override;
    int _read() override;
    std::uint64_t _skip(std::uint64_t count) override;
    std::uint64_t _tell() const override { return place; }

private:
    void step_back(std::uint64_t count);
    bool refill();
    std::uint64_t oldest() const;
    void restart_at(std::uint64_t value);

    file_descriptor source;
    std::string name;
    std::unique_ptr<char[]> ring; ///< null before the first read
    bool regular = false;
    bool short_read = false;
    std::uint64_t origin = 0; ///< file offset of the stream's place 0
    std::uint64_t begun = 0;  ///< place at which the ring was last emptied
    std::uint64_t filled = 0; ///< first place not read into the ring yet
    std::uint64_t place = 0;  ///< next byte to deliver, `oldest()` to `filled`
};

/// Opens the file `path` for reading. Raises fs::Exception with the cause, also for a folder.
HARBOR6_API file_descriptor open_input(const std::string& path);
/// A second descriptor of what `descriptor` has open. Raises fs::Exception with the cause.
HARBOR6_API file_descriptor duplicate_descriptor(int descriptor);
/// The same of the standard input.
HARBOR6_API file_descriptor open_standard_input();

} // namespace host
