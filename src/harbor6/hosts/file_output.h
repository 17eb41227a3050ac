#pragma once

#include "harbor6/hosts/target.h"
#include "harbor6/posix/file_writer.h"
#include "harbor6/posix/write_behind.h"
#include "harbor6/stream/multi_output.h"
#include "harbor6/stream/output.h"

namespace host {

/// The stream into a file on disk. Small writes are buffered, large ones are passed straight through, or to
/// a write_behind if there is one and the file is large. Destroying the stream writes its buffer out and
/// closes the file's descriptor. A write that fails raises nothing, so that the other files are still
/// written: the file_writer keeps the failure, and what follows for this file is dropped.
class file_output : public stream::output, public stream::segment_listener {
public:
    /// `behind` may be null; it outlives the stream.
    file_output(std::shared_ptr<file_writer> file, std::shared_ptr<arrival> data, write_behind* behind);
    ~file_output() override;

    using stream::output::write;

    void write(const char* buffer, unsigned length) override;
    void write(char byte) override;
    std::uint64_t tell() const override;
    void flush() override;
    void segment_begins(std::uint64_t size) override;
    void segment_failed() override { data->fail({}); }

private:
    void pass_on(std::string_view bytes);

    std::shared_ptr<file_writer> file;
    std::shared_ptr<arrival> data;
    write_behind* const behind;
    bool large = false;               ///< large enough for `behind`
    std::unique_ptr<char[]> buffered; ///< allocated by the first small write
    unsigned pending = 0;
};

} // namespace host
