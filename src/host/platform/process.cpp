#include "host/platform/process.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sched.h>
#include <string>
#include <sys/resource.h>

namespace host {

namespace {

/// Whether a control group of version 2 above the process, or its own, keeps it to one processor's time.
bool is_limited_to_one_processor() {
    std::ifstream groups("/proc/self/cgroup");
    std::string group;
    while (std::getline(groups, group) && !group.starts_with("0::"))
        continue;
    if (!group.starts_with("0::/"))
        return false;
    group.erase(0, 3);
    for (bool more = true; more;) {
        std::ifstream limit("/sys/fs/cgroup" + group + "/cpu.max");
        double time = 0;
        double period = 0;
        if (limit >> time >> period && time < 2 * period)
            return true;
        more = !group.empty();
        group.erase(more ? group.rfind('/') : 0);
    }
    return false;
}

} // namespace

void keep_time_zone() {
    // What glibc uses without TZ; but then it looks for a change of the file each time.
    setenv("TZ", ":/etc/localtime", 0);
}

std::size_t descriptors_for_folders() {
    constexpr rlim_t fewest = 16;
    constexpr rlim_t most = 64;
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return fewest;
    return std::clamp(limit.rlim_cur / 2, fewest, most);
}

bool has_several_processors() {
    cpu_set_t allowed = {};
    return (sched_getaffinity(0, sizeof allowed, &allowed) != 0 || CPU_COUNT(&allowed) > 1) &&
           !is_limited_to_one_processor();
}

} // namespace host
