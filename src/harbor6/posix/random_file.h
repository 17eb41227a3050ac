#pragma once

#include "harbor6/posix/file_writer.h"
#include "harbor6/stream/random.h"

#include <memory>

namespace host {

/// Reads a plain file in any order. One thread at a time. A failed read raises fs::Exception.
class random_file_input : public stream::random::input {
public:
    /// `name` is for messages.
    random_file_input(file_descriptor source, std::string name);

    using stream::random::input::read;

    /// Goes to any place up to the end.
    bool seek(std::uint64_t value) override;
    std::uint64_t size() const override;

protected:
    unsigned _read(char* buffer, unsigned length) override;
    int _read() override;
    std::uint64_t _tell() const override { return place; }

private:
    file_descriptor source;
    std::string name;
    std::uint64_t place = 0;
};

/// Writes a file of the target in any order. Fails as file_writer does.
class random_file_output : public stream::random::output {
public:
    explicit random_file_output(std::shared_ptr<file_writer> file);
    /// Closes the file's descriptor.
    ~random_file_output() override;

    using stream::random::output::write;

    void write(const char* buffer, unsigned length) override;
    void write(char byte) override;
    std::uint64_t tell() const override { return place; }
    /// Goes to any place up to the end.
    bool seek(std::uint64_t value) override;
    std::uint64_t size() const override { return extent; }
    void resize(std::uint64_t size) override;

private:
    std::shared_ptr<file_writer> file;
    std::uint64_t place = 0;
    std::uint64_t extent = 0;
};

} // namespace host
