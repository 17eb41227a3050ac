#pragma once

#include "host/disk/journal.h"
#include "host/platform/console.h"

#include <exception>
#include <vector>

namespace host {

/// The program's exit statuses.
enum class exit_status {
    ok = 0,     ///< everything was done
    failed = 1, ///< something failed, and the standard error says what
    usage = 2   ///< the command line is invalid, and nothing was done
};

/// The text of a failure, printable.
std::string failure_text(const std::exception_ptr& failure);

/// What the program says about its work, archive by archive. Errors go to the standard error, one line each,
/// "harbor: ARCHIVE: TEXT". Incomplete and missing files are reported by end_archive(), after the error that
/// ended the archive. The operations of the journal raise nothing where memory runs out: that is reported
/// instead, and counts as an error. One thread.
class report : public journal {
public:
    /// With `verbose` each file that is done or skipped is named on `output`.
    report(console& output, bool name_each_file) : out(output), verbose(name_each_file) {}

    /// Begins an archive, under the name that the user gave it.
    void begin_archive(const std::string& name);
    /// An error of the archive as a whole; `text` must be printable.
    void archive_error(const std::string& text);
    /// Reports that `failure`, which must be printable, ended the data of the archive's files: under the path
    /// of the file at hand, if that is known.
    void data_error(const std::string& failure);
    /// Whether the archive has had no error up to now.
    bool is_sound() const { return sound && afterwards.empty(); }
    /// Ends the archive, and returns whether it had no error.
    bool end_archive();
    /// An error outside any archive; `text` must be printable.
    void error(const std::string& text);
    /// `failed` after any error.
    exit_status status() const { return failed ? exit_status::failed : exit_status::ok; }

    void done(const std::string& path, std::uint64_t size) override;
    void refused(const std::string& path, const std::string& reason) override;
    void unfinished(const std::string& path, std::uint64_t size, const std::string& reason) override;
    void missing(const std::string& path) override;
    void moved(const std::string& from, const std::string& to) override;
    /// A file that is left out by the user's choice, which is no error.
    void skipped(const std::string& path, const std::string& reason);

    console& out;

private:
    template<class Line>
    void guarded(Line line);

    const bool verbose;
    std::string archive; ///< printable
    std::vector<std::string> afterwards;
    std::string at_hand;      ///< printable path of the last file that ended early
    unsigned ended_early = 0; ///< number of such files, those with a reason of their own left out
    bool sound = true;
    bool failed = false;
};

} // namespace host
