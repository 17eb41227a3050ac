#pragma once

#include "harbor6/stream/input.h"
#include "host/platform/file_descriptor.h"

#include <memory>

namespace host {

/// The bytes of an archive, from a file or a pipe. The last 256 KiB that it delivered stay in its ring, so
/// that a push-back or a seek to something just delivered is a step back: nothing is copied, and the bytes
/// given to `unread` are not looked at. Memory is constant, whatever the input's size. On a file it also goes
/// back further, by reading again. One thread at a time.
///
/// A read or skip that comes short is no failure, since decoders look beyond the end and come back by `seek`.
/// But bytes pushed back while the last read came short were never whole: that raises stream::cut_short.
class file_input : public stream::input {
public:
    /// Reads `source` from where it stands. `name` is for messages.
    file_input(file_descriptor source, std::string name);

    using stream::input::read;

    void unread(const char* bytes, unsigned length) override;
    void unread(char byte) override;
    /// Goes to any place that the ring holds; on a file, to any place up to its end.
    bool seek(std::uint64_t value) override;
    /// All ones on a pipe.
    std::uint64_t size() const override;

    /// Another descriptor of the input if it is a plain file, none of a pipe.
    file_descriptor duplicate() const;
    /// Whether the last read wanted more than there was.
    bool came_short() const { return short_read; }
    /// What to raise where the bytes that such a read missed were needed.
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
    std::unique_ptr<char[]> ring;
    bool regular = false;
    bool short_read = false;
    std::uint64_t origin = 0; ///< where in the file the stream's place 0 lies
    std::uint64_t begun = 0;  ///< first place that went through the ring since it was last started
    std::uint64_t filled = 0; ///< first place that isn't in the ring yet
    std::uint64_t place = 0;  ///< next byte to deliver, `oldest()` to `filled`
};

/// Opens the file `path` for reading. Raises fs::Exception with the cause; a folder is one.
file_descriptor open_input(const std::string& path);
/// A second descriptor of the standard input.
file_descriptor open_standard_input();

} // namespace host
