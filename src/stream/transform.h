#pragma once

#include "outside/groundwork/export.h"

#include <cstdint>

namespace stream {

class input;
class output;

/// The shape of whatever turns one stream into another. Both forms of process return the bytes produced and
/// raise stream::exception where a class doesn't provide them.
class HARBOR6_API transform {
public:
    transform() = default;
    transform(const transform&) = delete;
    transform& operator=(const transform&) = delete;
    virtual ~transform();

    virtual void begin();
    virtual void end();
    virtual std::uint64_t process(input& source, output& target, std::uint64_t length);
    virtual std::uint64_t process(input& source, output& target);
};

} // namespace stream
