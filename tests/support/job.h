#pragma once

#include "concurrency/runnable.h"

#include <exception>
#include <functional>
#include <string>
#include <utility>

namespace support {

/// A runnable made of a function.
class job final : public basic::runnable {
public:
    explicit job(std::function<void()> body) : work(std::move(body)) {}
    void run() override { work(); }

private:
    std::function<void()> work;
};

/// The text of what `body` throws, empty if it throws nothing.
template<class Body>
std::string text_of(Body body) {
    try {
        body();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return {};
}

} // namespace support
