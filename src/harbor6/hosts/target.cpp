#include "harbor6/hosts/target.h"

#include "harbor6/posix/directory_tree.h"

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

bool TargetFile::isRegular() const {
    return true;
}

bool TargetFile::isOfThisExpansion() const {
    return true;
}

void TargetFolder::replaceNext(const std::string& /*name*/) {}

pattern::AcquiredPtr<harbor6::Folder> TargetFolder::makeUnusable(const std::string& /*name*/,
                                                                 const std::string& /*obstacle*/) const {
    return {};
}

std::string TargetFile::path() const {
    return string(harbor6::key::name);
}

std::string TargetFolder::pathOf(const std::string& name) const {
    return join_path(path(), nameHere(name));
}

} // namespace host
