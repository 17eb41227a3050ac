#pragma once

#include "harbor6/groundwork/time.h"
#include "harbor6/hosts/plain_item.h"
#include "harbor6/hosts/target.h"
#include "harbor6/model/single_fork_file.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <variant>
#include <vector>

namespace host {

/// The value of an attribute, in the first of these types in which an item has it.
using attribute_value = std::variant<bool, std::int64_t, std::string, fs::time>;

/// Empty if the item has no such attribute.
HARBOR6_API std::optional<attribute_value> value_of(const harbor6::Attributes& item, const std::string& key);

/// One file of an archive, as a pass over the archive delivered it.
struct tally_entry {
    std::string path;       ///< from the top, with '/' between names; it need not be safe
    std::uint64_t size = 0; ///< bytes that arrived
    /// By key: those of tally::keys that the archive's item has.
    std::map<std::string, attribute_value> attributes;
};

/// Takes the bytes of one file, in their order. It may be destroyed before the file is complete.
class tally_sink {
public:
    virtual ~tally_sink() = default;
    virtual void write(std::string_view bytes) = 0;
    /// All bytes came; nothing by default.
    virtual void complete() {}
};

/// What the folders and files of one pass that only counts share. It outlives them, and keeps nothing of a
/// file that has ended but its name, and that only with `check_names`. One thread.
struct tally {
    harbor6::Format& plain_format;
    journal& log;
    std::vector<std::string> keys{};                   ///< the attributes to keep of each file
    std::function<void(const tally_entry&)> counted{}; ///< called with each complete file when it ends
    /// Called with the number of new files and of bytes that arrive; what it raises ends the pass.
    std::function<void(std::uint64_t files, std::uint64_t bytes)> arriving{};
    /// Called with the path of each file whose data begins; where its bytes go. They are dropped if this is
    /// empty or returns null.
    std::function<std::shared_ptr<tally_sink>(const std::string& path)> sink_for{};
    /// Refuse the files that could not all be stored in a new folder: for their names, or for those of
    /// others.
    bool check_names = false;

    /// A name in use. Folders are numbered from 1 on; 0 is the top as a parent, and a file as an item.
    struct used_name {
        std::string name;
        std::uint32_t parent = 0;
        std::uint32_t folder = 0;

        bool operator<(const used_name& other) const {
            return std::tie(parent, name) < std::tie(other.parent, other.name);
        }
    };
    std::set<used_name> names{}; ///< with `check_names`; ordered, as archives choose the names
    std::uint32_t folders = 0;   ///< how many of them are folders
};

class TallyFile;

/// Counts the bytes that are written to it.
class HARBOR6_API TallyFork : public harbor6::Fork {
public:
    explicit TallyFork(TallyFile* file) : owner(file) {}

    harbor6::data::CountedOutput output(bool expanding) override;

private:
    TallyFile* owner;
};

/// A target file that drops its data and leaves an entry in the tally.
class HARBOR6_API TallyFile : public TargetFile,
                              public harbor6::OneForkFile<TallyFork>,
                              public PlainItem<TallyFile> {
public:
    TallyFile(tally& shared, std::shared_ptr<const std::string> folder);
    ~TallyFile() override;

    void commitItem() override;
    std::string path() const override;
    /// Also keeps the attributes of `source` that the tally asks for.
    void cloneAttributes(const harbor6::Attributes& source, bool withName) override;

protected:
    std::string itemName() const override;
    bool setItemName(const std::string& name) override;

private:
    friend class TallyFork;
    tally& shared;
    std::shared_ptr<const std::string> folder_path;
    std::string name;
    std::unique_ptr<std::map<std::string, attribute_value>> attributes; ///< null if there are none
    bool committed = false;
};

/// A target folder that takes an archive's content, counts it, and keeps nothing: it always looks empty.
class HARBOR6_API TallyFolder : public TargetFolder, public PlainItem<TallyFolder> {
public:
    /// The top, if there is no `path`.
    explicit TallyFolder(tally& shared,
                         std::shared_ptr<const std::string> path = std::make_shared<const std::string>());

    const std::string& path() const override { return *folder_path; }
    /// With `check_names` a second file of one name is refused.
    std::string prepareFor(const std::string& name) override;

    bool isCreated() override;
    harbor6::Item* acquireItemFromName(const std::string& name) override;
    harbor6::File* _newFile() override;
    harbor6::Folder* _newFolder() override;

protected:
    std::string itemName() const override;
    /// Makes this the sub-folder of that name; an empty name leaves it as it is.
    bool setItemName(const std::string& name) override;

private:
    tally& shared;
    std::shared_ptr<const std::string> folder_path;
    std::uint32_t number = 0; ///< in tally::names
    std::string obstacle;     ///< why nothing can be stored in it; empty if something can
    bool too_deep = false;    ///< the path is longer than longest_path, and no longer extended
};

} // namespace host
