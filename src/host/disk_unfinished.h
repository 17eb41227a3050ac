#pragma once

namespace host {

/// As long as one lives, a signal that ends the program (SIGINT, SIGTERM or SIGHUP, where it isn't ignored)
/// removes the file `name` of the open folder `folder` first: a half file is not taken for a whole one, and
/// no temporary one stays. Of several the one made last counts. `name` has to stay.
class disk_unfinished {
public:
    disk_unfinished(int folder, const char* name);
    disk_unfinished(const disk_unfinished&) = delete;
    disk_unfinished& operator=(const disk_unfinished&) = delete;
    ~disk_unfinished();

private:
    const char* mine;
};

} // namespace host
