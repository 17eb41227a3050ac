#pragma once

#include "harbor6/c.h"
#include "harbor6/hosts/archive_reader.h"
#include "harbor6/model/volume_source.h"

#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

// What the sources of the C interface share.

struct harbor6_formats {
    harbor6::ClientInterface unused; ///< the formats here are only shared, each archive has its own client
    host::Registry registry{unused};
    std::string error;
    std::vector<std::string> names; ///< of the formats
};

struct harbor6_archive {
    std::unique_ptr<harbor6::VolumeSource> volumes; ///< null if the archive is one file
    std::unique_ptr<host::ArchiveReader> reader;
    std::string format;
    std::map<std::string, std::size_t> by_path; ///< made by the first lookup
    harbor6_status code = HARBOR6_OK;
    std::string error;
    bool busy = false; ///< it is being read: by a call that has not returned, or by a pass that is open
};

namespace c_interface {

/// A callback returned nonzero.
class aborted : public qpthr::Cloneable<aborted, un::exception> {
public:
    aborted() : Cloneable("ended by the caller", "harbor6/c.h") {}
};

/// The status for the exception in flight.
harbor6_status status_in_flight();
harbor6_status keep(harbor6_archive& archive, harbor6_status code, std::string text) noexcept;
harbor6_status keep_in_flight(harbor6_archive& archive) noexcept;
/// What the caller supplies, as a stream.
std::unique_ptr<stream::input> supplied(const harbor6_source& source);

/// Runs `act`, and keeps how it ended. The archive is open.
template<class Act>
harbor6_status run(harbor6_archive& archive, Act act) noexcept {
    try {
        keep(archive, HARBOR6_OK, {});
        act();
        return archive.code;
    } catch (...) {
        return keep_in_flight(archive);
    }
}

/// The same for a call from outside, which is refused while the archive is busy.
template<class Act>
harbor6_status guarded(harbor6_archive* archive, Act act) noexcept {
    if (!archive)
        return HARBOR6_NO_MEMORY;
    if (archive->busy)
        return HARBOR6_FAILED; // the status is that of what goes on
    if (!archive->reader)
        return archive->code;
    archive->busy = true;
    const auto code = run(*archive, act);
    archive->busy = false;
    return code;
}

/// Raises un::exception if a text that is needed isn't given.
inline const char* needed(const char* text, const char* what) {
    if (!text)
        throw un::exception(std::string("no ") + what + " is given", "harbor6/c.h");
    return text;
}

} // namespace c_interface
