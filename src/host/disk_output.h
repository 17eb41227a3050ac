#pragma once

#include "host/disk_transfer.h"
#include "stream/output.h"
#include "stream/segment_listener.h"

namespace host {

/// The stream into a file on disk. Small writes are gathered, large ones go straight through. The stream ends
/// with its buffer written out; if that fails in the destructor the transfer knows it.
class disk_output : public stream::output, public stream::segment_listener {
public:
    explicit disk_output(std::shared_ptr<disk_transfer> transfer);
    ~disk_output() override;

    using stream::output::write;

    void write(const char* buffer, unsigned length) override;
    void write(char byte) override;
    std::uint64_t tell() const override;
    void flush() override;
    void segment_begins(std::uint64_t size) override;

private:
    std::shared_ptr<disk_transfer> transfer;
    std::unique_ptr<char[]> gathered; ///< made by the first small write
    unsigned pending = 0;
};

} // namespace host
