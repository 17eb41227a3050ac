#pragma once

#include "harbor6/model/named_item.h"
#include "harbor6/model/single_fork_file.h"
#include "harbor6/shell/structures.h"
#include "harbor6/stream/multi_output.h"
#include "harbor6/stream/output.h"
#include "host/disk/expansion_state.h"
#include "host/platform/file_writer.h"

namespace host {

/// Mixed into `Concrete`, a class of items that lie in no archive: they stand on disk or nowhere, and their
/// format is the one for such items, which outlives them.
template<class Concrete>
class PlainItem : public harbor6::NamedItem<Concrete> {
public:
    const harbor6::Format& format() const override { return plain; }
    harbor6::Format& format() override { return plain; }
    bool getStructure(const std::string& key, un::structure& value) const override {
        auto* const which = key == harbor6::key::fsSpec ? dynamic_cast<fs::Spec*>(&value) : nullptr;
        const auto mine = which ? identity() : std::nullopt;
        if (mine)
            *which = *mine;
        return mine.has_value();
    }

protected:
    explicit PlainItem(harbor6::Format& plain_format) : plain(plain_format) {}

    /// What "fsSpec" answers: which object on disk the item is, nothing if it is none.
    virtual std::optional<fs::Spec> identity() const { return std::nullopt; }

private:
    harbor6::Format& plain;
};

/// The stream into a file on disk. Small writes are gathered, large ones go straight through. The stream ends
/// with its buffer written out; if that fails in the destructor the transfer knows it.
class file_output : public stream::output, public stream::segment_listener {
public:
    explicit file_output(std::shared_ptr<file_writer> transfer);
    ~file_output() override;

    using stream::output::write;

    void write(const char* buffer, unsigned length) override;
    void write(char byte) override;
    std::uint64_t tell() const override;
    void flush() override;
    void segment_begins(std::uint64_t size) override;

private:
    std::shared_ptr<file_writer> transfer;
    std::unique_ptr<char[]> gathered; ///< made by the first small write
    unsigned pending = 0;
};

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
    DiskFile(expansion_state& expansion, std::shared_ptr<const std::string> folder);
    /// What stands there under `name`.
    DiskFile(expansion_state& expansion, std::shared_ptr<const std::string> folder, std::string name,
             bool regular);
    ~DiskFile() override;

    const std::string& folder() const { return *folder_path; }
    const std::string& name() const { return file_name; }
    std::string path() const { return directory_tree::join(folder(), name()); }
    expansion_state& shared() const { return expansion; }
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
    expansion_state& expansion;
    std::shared_ptr<const std::string> folder_path;
    std::string file_name;
    std::optional<std::time_t> modified;
    std::shared_ptr<file_writer> transfer;
};

} // namespace host
