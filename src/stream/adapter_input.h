#pragma once

#include "stream/filter_input.h"
#include "stream/nio_copy.h"

#include <memory>

namespace stream {

/// Gives a nio::input, which it owns, the interface of stream::input. `size` and `close` stay the filter's
/// and reach `source`, the stream that the nio::input takes its bytes from.
template<class Input>
class adapter_input : public filter_input {
public:
    adapter_input(input* source, std::unique_ptr<Input> owned)
        : filter_input(source), adapted(std::move(owned)) {}

    using input::read;

    void start() override { adapted->start(); }
    void finish() override { adapted->finish(); }

protected:
    unsigned _read(char* buffer, unsigned length) override { return adapted->read(buffer, length); }
    int _read() override { return adapted->get(); }
    std::uint64_t _skip(std::uint64_t count) override { return nio::skip(*adapted, count, 65536); }
    std::uint64_t _tell() const override { return adapted->tell(); }

private:
    std::unique_ptr<Input> adapted;
};

/// Creates the nio::input that it adapts, from the source, a compression extent and the rewind flag.
template<class Input>
class adapter_2_input : public adapter_input<Input> {
public:
    adapter_2_input(input& source, unsigned extent, bool rewind)
        : adapter_input<Input>(&source, std::make_unique<Input>(source, extent, rewind)) {}
};

} // namespace stream
