#include "host/disk/target.h"

#include "host/platform/directory_tree.h"

namespace host {

void arrival::fail(const std::string& reason) {
    if (!failure)
        failure = reason;
}

void arrival::report(journal& log, const std::string& path) const {
    if (complete())
        log.done(path, count);
    else
        log.unfinished(path, count, failure.value_or(std::string()));
}

void TargetFile::adoptForks(const harbor6::File& source) {
    File::adoptForks(source);
    commitItem();
}

void TargetFile::commitFork(const harbor6::Fork& fork) {
    try {
        File::commitFork(fork);
    } catch (const std::exception& failure) {
        if (data)
            data->fail(failure.what());
        throw;
    }
}

std::string TargetFolder::pathOf(const std::string& name) const {
    return join_path(path(), name);
}

} // namespace host
