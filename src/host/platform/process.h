#pragma once

#include <cstddef>

namespace host {

/// Lets the system read the file of the local time zone once, and not for each time that is converted. To be
/// called before another thread is started.
void keep_time_zone();

/// Raises the number of descriptors that the process may have open as far as it is allowed, and returns how
/// many of them may be kept for folders.
std::size_t descriptors_for_folders();

/// Whether the process may use more than one processor at a time, by its affinity and its control group.
bool has_several_processors();

} // namespace host
