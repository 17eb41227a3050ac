#pragma once

#include "harbor6/stream/random.h"

#include <memory>
#include <string_view>

namespace stream {

/// Reads memory in place, in any order: what Fork::input of a host's file returns for bytes in memory. It
/// copies nothing. One thread at a time. Never fails: at the end reads return fewer bytes.
class HARBOR6_API memory_input : public random::input {
public:
    /// `owner`, if there is one, keeps the bytes alive; without, they must outlive the stream. They must stay
    /// unchanged.
    explicit memory_input(std::string_view bytes, std::shared_ptr<const void> owner = {});
    ~memory_input() override;

    using stream::input::read;

    bool seek(std::uint64_t value) override;
    std::uint64_t size() const override;

protected:
    unsigned _read(char* buffer, unsigned length) override;
    int _read() override;
    std::uint64_t _tell() const override;

private:
    std::string_view bytes;
    std::shared_ptr<const void> owner;
    std::size_t next = 0;
};

} // namespace stream
