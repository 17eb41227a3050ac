#pragma once

#include "harbor6/concurrency/thread.h"

#include <functional>
#include <utility>

namespace support {

/// A runnable that calls a function.
struct job final : basic::runnable {
    explicit job(std::function<void()> body) : work(std::move(body)) {}
    void run() override { work(); }

    std::function<void()> work;
};

} // namespace support
