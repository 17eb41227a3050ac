#pragma once

#include "harbor6/groundwork/export.h"

#include <string>

namespace host {

/// Why the file `path` can't be loaded as a plug-in, printable; empty if it looks like one that was built for
/// this version of the library's interface: the number in the name of the library that it needs. Loading a
/// FIFO would wait for its writer, and loading a file without all of its segments would end the process on
/// the first access to what is missing. Opens the file for reading, and never waits.
std::string plug_in_fault(const std::string& path);

} // namespace host
