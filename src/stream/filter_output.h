#pragma once

#include "stream/output.h"

namespace stream {

/// Forwards to another stream, which it doesn't own and which must outlive it. With no stream attached every
/// operation that needs one raises stream::exception.
class HARBOR6_API filter_output : public virtual output {
public:
    explicit filter_output(output* target);
    ~filter_output() override;

    void write(const char* buffer, unsigned length) override;
    std::uint64_t tell() const override;
    void write(const std::string& text) override;
    void write(char byte) override;
    void copy_from(input& source) override;
    void resize(std::uint64_t size) override;
    /// The filter's own flush(), then sync() of the wrapped stream.
    void sync() override;
    void close() override;

    virtual void attach(output* target);
    virtual output* attached() const;

private:
    output& wrapped() const;

    output* inner;
};

} // namespace stream
