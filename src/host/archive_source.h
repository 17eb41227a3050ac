#pragma once

#include "harbor6/posix/file_input.h"

#include <functional>
#include <memory>
#include <string>

namespace host {

struct command_context;
class progress;

/// An archive that the user asked for: a file, or an archive inside a file.
struct archive_source {
    std::string path; ///< of the file; "-" is the standard input
    std::uint64_t offset = 0;
    bool is_one_of_several = false; ///< in its file
    unsigned number = 1;            ///< more for the second of the files that would get one folder, and so on
    bool file_is_archive = false;   ///< the file begins with an archive: this one, or one in front of it
    /// Bytes of the file that follow the archive, if no other one is among them and the archive states its
    /// end.
    std::uint64_t bytes_behind = 0;

    /// For messages: the path, with "@OFFSET" if the file contains several archives.
    std::string name() const;
    /// A new stream over the file from the archive's first byte on, which tells `meter`, unless that is null,
    /// how far it was read. Raises fs::Exception with the cause.
    std::unique_ptr<file_input> open(progress* meter = nullptr) const;
};

/// Why there may be archives that a search hasn't found: see ArchiveFinder::passedOver.
inline constexpr char too_many_heads[] = "so much in it looks like archives that some of that was not tested";

/// Calls `work` with each archive in the file `path`, in order. Returns false if there may be more of them,
/// which is reported. That is the file itself if it begins as an archive does and no other one follows, or if
/// it contains none or is a pipe, so that `work` reports why.
bool for_each_archive(command_context& context, const std::string& path,
                      const std::function<void(const archive_source&)>& work);

} // namespace host
