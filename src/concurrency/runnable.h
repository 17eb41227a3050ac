#pragma once

#include "outside/groundwork/export.h"

namespace basic {

/// What a thread runs. Nobody owns a runnable through this interface.
class HARBOR6_API runnable {
public:
    virtual void run() = 0;

protected:
    runnable() = default;
    runnable(const runnable&) = default;
    runnable& operator=(const runnable&) = default;
    ~runnable() = default;
};

} // namespace basic
