#pragma once

#include "outside/groundwork/export.h"

namespace basic {

/// Something to run on a thread. Nobody owns or destroys one through this interface.
class HARBOR6_API runnable {
public:
    virtual void run() = 0;

protected:
    ~runnable() = default;
};

} // namespace basic
