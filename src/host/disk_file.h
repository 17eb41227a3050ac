#pragma once

#include "host/disk_expansion.h"
#include "host/disk_transfer.h"
#include "host/plain_item.h"
#include "model/one_fork_file.h"

namespace host {

class DiskFile;

/// The data of a file on disk.
class DiskFork : public harbor6::Fork {
public:
    explicit DiskFork(DiskFile* file) : owner(file) {}

    /// Empty while the file doesn't stand.
    harbor6::data::CountedInput input(bool expanding) const override;
    harbor6::data::random::CountedInput randomInput(bool expanding, bool shared) const override;
    harbor6::data::CountedOutput output(bool expanding) override;
    /// Empty if the file can't be had.
    harbor6::data::random::CountedOutput randomOutput(bool expanding) override;

private:
    DiskFile* owner;
};

/// A file on disk: either one that stands there already, as a lookup finds it, or one that was asked for. The
/// latter is nothing but a name until its fork's output is taken; commitItem ends it, and tells the journal
/// how it fared. One that goes without ever having been committed is reported as missing. Many thousands wait
/// at once, so it is small.
class DiskFile : public harbor6::OneForkFile<DiskFork>, public PlainItem<DiskFile> {
public:
    /// A file to be made in `folder`; it gets its name as an attribute, once.
    DiskFile(disk_expansion& expansion, std::shared_ptr<const std::string> folder);
    /// What stands there under `name`.
    DiskFile(disk_expansion& expansion, std::shared_ptr<const std::string> folder, std::string name,
             bool regular);
    ~DiskFile() override;

    const std::string& folder() const { return *folder_path; }
    const std::string& name() const { return file_name; }
    std::string path() const { return disk_target::join(folder(), name()); }
    disk_expansion& shared() const { return expansion; }
    /// Whether this stands for a plain file, and not a link or a device.
    bool isRegular() const { return state != existing_other; }

    bool isCreated() override;
    harbor6::Folder* acquireParent() override;
    /// Removes the file, if it stood there before or was made here.
    void erase() override;
    /// Takes the forks, and ends the file with them.
    void adoptForks(const harbor6::File& source) override;
    /// Never raises: what goes wrong is reported.
    void commitItem() override;

protected:
    std::string itemName() const override;
    /// Gives a file to be made its name, once, and one that stands another.
    bool setItemName(const std::string& name) override;
    bool setItemTime(const any::time& time) override;
    std::optional<fs::Spec> identity() const override;

private:
    friend class DiskFork;
    bool begin();
    bool stands() const { return state == existing || (state == settled && made); }

    enum : std::uint8_t {
        existing,       ///< stood there before; nothing is done to it
        existing_other, ///< the same, but no plain file
        nameless,       ///< to be made; setItemName leads to `wanted`
        wanted,         ///< to be made; its output leads to `writing`, or to `settled` if it can't be had
        writing,        ///< commitItem leads to `settled`
        settled         ///< reported
    } state;
    bool made = false; ///< it was brought to its end here
    bool replacing = false;
    bool promised = false;
    disk_expansion& expansion;
    std::shared_ptr<const std::string> folder_path;
    std::string file_name;
    std::optional<std::time_t> modified;
    std::shared_ptr<disk_transfer> transfer;
};

} // namespace host
