#pragma once

#include "outside/groundwork/export.h"

#include <string>

namespace harbor6 {

class Folder;

/// What can stand in a folder.
class HARBOR6_API Containable {
public:
    Containable() = default;
    Containable(const Containable&) = delete;
    Containable& operator=(const Containable&) = delete;

    /// The folder that holds this, with a reference for the caller, or null.
    virtual Folder* acquireParent();
    virtual void moveTo(Folder& target);
    /// It stands in its storage. Folder operations call create() only where this says false.
    virtual bool isCreated();
    /// The parent finds it under its name.
    virtual bool exists();
    virtual void create();
    virtual void erase();

protected:
    ~Containable() = default;
};

} // namespace harbor6
