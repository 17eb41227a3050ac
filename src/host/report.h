#pragma once

#include "host/disk/expansion_state.h"
#include "host/platform/console.h"

#include <optional>
#include <vector>

namespace host {

/// How the program ends.
enum class exit_status {
    ok = 0,     ///< everything that was asked for was done
    failed = 1, ///< something wasn't, and the standard error says what
    usage = 2   ///< the command line makes no sense, and nothing was done
};

/// The text of the exception that is being handled, fit for a terminal; nothing if none is.
std::optional<std::string> failure_text();

/// What the program says about its work, archive by archive: troubles on the standard error, one line each,
/// beginning with "harbor: ARCHIVE: ". What became of single files comes after what ended the pass.
class report : public journal {
public:
    report(console& output, bool name_all) : screen(output), verbose(name_all) {}

    /// Begins an archive, under the name that the user gave it.
    void begin(const std::string& archive);
    /// A trouble with the archive as a whole; `text` is printed as it is.
    void failure(const std::string& text);
    bool is_sound() const { return sound && afterwards.empty(); }
    /// Ends the archive and says whether there was no trouble with it.
    bool end();
    /// A trouble outside of any archive.
    void trouble(const std::string& text);
    exit_status status() const { return troubled ? exit_status::failed : exit_status::ok; }

    void done(const std::string& path, std::uint64_t size) override;
    void refused(const std::string& path, const std::string& reason) override;
    void unfinished(const std::string& path, std::uint64_t size, const std::string& reason) override;
    void missing(const std::string& path) override;
    void moved(const std::string& from, const std::string& to) override;
    /// A file that isn't wanted after all, which is no trouble.
    void skipped(const std::string& path, const std::string& reason);

    console& screen;

private:
    const bool verbose;
    std::string subject; ///< printable
    std::vector<std::string> afterwards;
    bool sound = true;
    bool troubled = false;
};

} // namespace host
