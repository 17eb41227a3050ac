#pragma once

#include "harbor6/hosts/expansion_state.h"
#include "harbor6/hosts/plain_item.h"
#include "harbor6/hosts/target.h"
#include "harbor6/model/single_fork_file.h"

#include <limits>

namespace host {

class DiskFile;
class file_writer;

/// The data of a file on disk.
class HARBOR6_API DiskFork : public harbor6::Fork {
public:
    explicit DiskFork(DiskFile* file) : owner(file) {}

    /// The inputs are empty while the file doesn't exist on disk.
    harbor6::data::CountedInput input(bool expanding) const override;
    harbor6::data::random::CountedInput randomInput(bool expanding, bool shared) const override;
    /// If the file can't be created, a stream that drops its bytes.
    harbor6::data::CountedOutput output(bool expanding) override;
    /// Empty if the file can't be created.
    harbor6::data::random::CountedOutput randomOutput(bool expanding) override;

private:
    DiskFile* owner;
};

/// A file on disk: one that exists already, as a lookup finds it, or one to be made. The latter is only a
/// reserved name until its fork's output is taken; once that stream is destroyed no descriptor is open, and
/// commitItem ends the file. Destroyed without that it is reported as missing or unfinished. Many thousands
/// of them wait at a time, so it is small.
class HARBOR6_API DiskFile : public harbor6::OneForkFile<DiskFork>,
                             public TargetFile,
                             public PlainItem<DiskFile> {
public:
    /// A file to be made in `folder`; it gets its name as an attribute, once.
    DiskFile(expansion_state& expansion, std::shared_ptr<const std::string> folder);
    /// The existing file `name`; `regular` is false for links and devices.
    DiskFile(expansion_state& expansion, std::shared_ptr<const std::string> folder, std::string name,
             bool regular);
    ~DiskFile() override;

    const std::string& folder() const { return *folder_path; }
    const std::string& name() const { return file_name; }
    std::string path() const override { return join_path(folder(), name()); }
    bool isRegular() const override { return state != existing_other; }
    bool isOfThisExpansion() const override;
    /// Whether the file on disk was modified before `time`.
    bool isOlderThan(const any::time& time) const;

    bool isCreated() override;
    /// As the base, and the attributes "readOnly" and "executable", which take effect when the file is put in
    /// place.
    void cloneAttributes(const harbor6::Attributes& source, bool withName) override;
    harbor6::Folder* acquireParent() override;
    /// Removes the file, whether it existed before or was made here.
    void erase() override;
    /// Reports a failure instead of raising it.
    void commitItem() override;

protected:
    std::string itemName() const override;
    /// Names a file to be made, once; renames one that exists.
    bool setItemName(const std::string& name) override;
    /// To be set before the stream into the file is destroyed.
    bool setItemTime(const any::time& time) override;
    std::optional<fs::Spec> identity() const override;

private:
    friend class DiskFork;
    file_descriptor open() const;
    bool begin();
    class Arrival;
    /// While the state is `writing`; it shares `data`.
    std::shared_ptr<file_writer> writer() const;
    bool onDisk() const { return state == existing || (state == settled && made); }

    enum : std::uint8_t {
        existing,       ///< existed before
        existing_other, ///< the same, but no plain file
        nameless,       ///< to be made; setItemName leads to `wanted`
        wanted,         ///< to be made; its output leads to `writing`, or to `settled` if that is impossible
        writing,        ///< commitItem leads to `settled`
        settled         ///< reported
    } state;
    bool made = false; ///< it was completed here
    bool replacing = false;
    bool promised = false;
    bool read_only = false;
    bool executable = false;
    expansion_state& expansion;
    std::shared_ptr<const std::string> folder_path;
    std::string file_name;
    static constexpr auto no_time = std::numeric_limits<std::time_t>::min();
    std::time_t modified = no_time;
};

} // namespace host
