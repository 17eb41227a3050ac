#pragma once

#include "harbor6/hosts/journal.h"
#include "harbor6/model/file.h"
#include "harbor6/model/folder.h"

#include <memory>
#include <optional>

namespace host {

/// How much of one target file's data has arrived, and whether that is all of it. Shared by the file and the
/// stream that takes its data. One thread.
class HARBOR6_API arrival {
public:
    /// States how many bytes will come. Without that, all have come unless something failed.
    void expect(std::uint64_t size) { expected = size; }
    bool is_sized() const { return expected.has_value(); }
    void set_received(std::uint64_t bytes) { count = bytes; } ///< so far
    std::uint64_t received() const { return count; }
    /// From now on the data counts as incomplete. The first reason is kept; it may be empty.
    void fail(const std::string& reason);
    bool complete() const { return !failure && (!expected || count == *expected); }
    /// Reports the file as done or as unfinished.
    void report(journal& log, const std::string& path) const;

private:
    std::optional<std::uint64_t> expected;
    std::uint64_t count = 0;
    std::optional<std::string> failure;
};

/// A file that takes the data of one file of an archive. commitItem ends it, and reports once how it ended.
class HARBOR6_API TargetFile : public virtual harbor6::File {
public:
    /// Takes the forks of `source`, then commits the file.
    void adoptForks(const harbor6::File& source) override;
    /// As the base. A failure also marks the data as incomplete.
    void commitFork(const harbor6::Fork& fork) override;
    /// From the top of the target, with '/' between names; the name alone by default.
    virtual std::string path() const;

    /// Whether this is a plain file, and not a link or a device.
    virtual bool isRegular() const;
    /// Whether it comes from this expansion: it is being written, or was.
    virtual bool isOfThisExpansion() const;

protected:
    std::shared_ptr<arrival> data; ///< null until the fork's output is taken
};

/// A folder that takes the content of an archive.
class HARBOR6_API TargetFolder : public harbor6::Folder {
public:
    /// No system accepts longer paths, and an archive can state paths of any length.
    static constexpr std::size_t longest_path = 4096;

    /// From the top of the target, with '/' between names; empty for the top itself.
    virtual const std::string& path() const = 0;
    std::string pathOf(const std::string& name) const;
    /// The name that an item called `name` gets here; the same by default.
    virtual std::string nameHere(const std::string& name) const { return name; }
    /// Creates the folder if that is needed for a file called `name`. Returns why no such file can be created
    /// in it, empty if one can.
    virtual std::string prepareFor(const std::string& name) = 0;
    /// Lets the next file of that name replace the existing one; nothing by default.
    virtual void replaceNext(const std::string& name);
    /// Stands in for the sub-folder `name`, which can't be created for the reason `obstacle`. Null by
    /// default: what would go into it is left out.
    virtual pattern::AcquiredPtr<harbor6::Folder> makeUnusable(const std::string& name,
                                                               const std::string& obstacle) const;
};

} // namespace host
