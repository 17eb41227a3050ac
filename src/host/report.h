#pragma once

#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/journal.h"
#include "host/platform/console.h"
#include "host/progress.h"

#include <exception>
#include <utility>
#include <vector>

namespace host {

/// The program's exit statuses.
enum class exit_status {
    ok = 0,     ///< everything was done
    failed = 1, ///< something failed, and the standard error says what
    usage = 2   ///< the command line is invalid, and nothing was done
};

using nio::failure_text;

/// "1 file", "2 files".
std::string counted(std::uint64_t number, const std::string& noun);
/// "12 B", "3.4 MB": at most four characters and a unit, in powers of 1000.
std::string human_size(std::uint64_t bytes);

/// `text` in bold letters of a color if `colored`.
std::string red(const std::string& text, bool colored);
std::string green(const std::string& text, bool colored);
std::string bold(const std::string& text, bool colored);

/// Of a pass whose files are reported elsewhere.
class quiet_journal : public journal {
public:
    void done(const std::string& /*path*/, std::uint64_t /*size*/) override {}
    void refused(const std::string& /*path*/, const std::string& /*reason*/) override {}
    void unfinished(const std::string& /*path*/, std::uint64_t /*size*/,
                    const std::string& /*reason*/) override {}
    void missing(const std::string& /*path*/) override {}
};

/// What the program says about its work, archive by archive. Errors go to the standard error, one line each,
/// "harbor: ARCHIVE: TEXT", or with `json` as objects to the standard output. Incomplete and missing files
/// are reported by settle(), after the error that ended the archive. The operations of the journal raise
/// nothing where memory runs out: that is reported instead, and counts as an error. One thread.
class report : public journal {
public:
    struct style {
        bool quiet = false;   ///< errors only
        bool verbose = false; ///< each file that is done or skipped is named
        bool json = false;
        bool progress = false; ///< how far the work is, on the terminal
        bool color_output = false;
        bool color_errors = false;
        bool file_objects = false; ///< with `json`: each file that is done is an object
    };

    report(console& output, style chosen) : out(output), form(chosen), meter(chosen.progress) {}

    /// Begins an archive, under the name that the user gave it.
    void begin_archive(const std::string& name);
    /// An error of the archive as a whole; `text` must be printable.
    void archive_error(const std::string& text) { print_error({}, text); }
    /// Reports what an archive's bytes made a format or decoder raise. Damage in the files' data is reported
    /// under the path of the file at hand, if that is known.
    void damage(const std::exception_ptr& failure);
    /// Whether the archive has had no error up to now.
    bool is_sound() const { return sound && afterwards.empty(); }
    /// Reports what is known of the archive's files once its end was reached.
    void settle();
    /// Ends the archive, and returns whether it had no error. Includes settle().
    bool end_archive();
    /// An error outside any archive; `text` must be printable.
    void error(const std::string& text);
    /// Counts an error that another process has reported.
    void note_failure() { failed = true; }
    /// `failed` after any error.
    exit_status status() const { return failed ? exit_status::failed : exit_status::ok; }

    void begun(const std::string& path) override { meter.at_file(path); }
    void done(const std::string& path, std::uint64_t size) override;
    void refused(const std::string& path, const std::string& reason) override;
    void unfinished(const std::string& path, std::uint64_t size, const std::string& reason) override;
    void missing(const std::string& path) override;
    void moved(const std::string& from, const std::string& to) override;
    /// A file of `size` bytes would be written, and might replace an existing one.
    void planned(const std::string& path, std::uint64_t size, bool replaces);
    /// A new file is not called `from`, as a file of that name exists.
    void renamed(const std::string& from, const std::string& to);
    void skipped(const std::string& path, const std::string& reason) override;

    /// What was done in the archive.
    struct totals {
        std::uint64_t files = 0;
        std::uint64_t bytes = 0;
        std::uint64_t skipped = 0;
    };
    const totals& archive_totals() const { return sums; }
    /// Counts a file that done() is not told of.
    void count(std::uint64_t size);
    /// How many archives have ended, and how many of them had no error.
    struct archive_counts {
        std::uint64_t all = 0;
        std::uint64_t sound = 0;
    };
    archive_counts archives;
    /// The archive's name as the user gave it.
    const std::string& archive_name() const { return archive; }

    console& out;
    const style form;
    progress meter; ///< shows how far the archive at hand is

private:
    template<class Line>
    void guarded(Line line);
    void print_error(const std::string& path, const std::string& text);

    std::string archive;
    totals sums;
    std::vector<std::pair<std::string, std::string>> afterwards; ///< paths and what is wrong with them
    std::string at_hand;                                         ///< path of the last file that ended early
    unsigned ended_early = 0; ///< number of such files, those with a reason of their own left out
    bool sound = true;
    bool failed = false;
};

} // namespace host
