#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/shell/attributes.h"
#include "harbor6/shell/ref_counted.h"
#include "harbor6/stream/array_input.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace format {

/// Recognises a format in a sample of bytes. A format makes and owns it. The host sets `sample`, whose bytes
/// it owns, and calls the tests, in any order and on one thread at a time.
class HARBOR6_API classifier {
public:
    classifier(std::uint32_t format_number, std::uint32_t identifier);
    classifier(const classifier&) = delete;
    classifier& operator=(const classifier&) = delete;
    virtual ~classifier();

    /// Returns 0; the host's.
    virtual unsigned default_result();
    /// The quick test: 1 if the format's signature is at `offset` of the sample, else 0.
    virtual unsigned matches_at(unsigned offset) const = 0;
    /// The full test: whether an archive of the format begins at `offset`. Raises stream::exception if the
    /// sample ends inside the header.
    virtual bool confirm_at(unsigned offset) = 0;
    /// What every archive of the format begins with, so that a search inside other files can pass over all
    /// else quickly; valid as long as the classifier. Empty by default: each offset is tested.
    virtual std::string_view leading_bytes() const;
    /// The size in bytes of the archive at whose first byte `archive` stands and which confirm_at accepts: 0
    /// if its head makes no sense, so that it is no archive; all ones if it doesn't tell, as by default.
    /// Reads a few records at most. Positions of `archive` count from that byte, and it seeks where its
    /// source can. What reading raises passes through.
    virtual std::uint64_t measure(stream::input& archive);
    /// Whether what begins at `offset` is a volume that continues an archive from another file, which
    /// confirm_at doesn't accept. An archive made on it can be expanded by a host that has the others. False
    /// by default; failures as of confirm_at.
    virtual bool continues_at(unsigned offset);

    std::uint32_t format_number;
    void* owner = nullptr; ///< for the host's use
    std::uint32_t identifier;
    un::array<char> sample; ///< empty until the host sets it
};

} // namespace format

namespace harbor6 {

class Archive;
class File;
class Folder;
class HarborShell;
class Item;

/// An archive format: its names, its abilities, and how its archives are made. A concrete format fills the
/// members in its constructor and overrides the factories; a host reads the members through the attribute
/// keys. "compressionLevel", "preserveResourceFork" and "executable" can be set. Owned by the Classifier,
/// must outlive its archives and items, and is used by one thread at a time.
///
/// Archives and files that an operation returns are counted for the caller. Members and operations are an
/// interface to plug-ins: their order is fixed.
class HARBOR6_API Format : public Attributes {
public:
    /// A value that a format cannot represent.
    class HARBOR6_API Overflow : public un::exception {
    public:
        Overflow();
        ~Overflow() override;

        std::unique_ptr<basic::cloneable_exception> Clone() const override;
        void Raise() const override;
    };

    static constexpr std::uint32_t expands_archives = 1u << 0; ///< in `capabilities`
    static constexpr std::uint32_t creates_archives = 1u << 3; ///< in `capabilities`
    static constexpr std::uint16_t default_level = 0xFFFF;     ///< means compression_default

    /// `shell` is not owned, and may be null if no item of the format needs it.
    explicit Format(HarborShell* shell);
    ~Format() override;

    bool modifiable(const std::string& key) override;
    bool hasBoolean(const std::string& key) const override;
    bool getBoolean(const std::string& key, bool& value) const override;
    bool setBoolean(const std::string& key, bool value) override;
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;
    bool hasInteger(const std::string& key) const override;
    bool getInteger(const std::string& key, std::int64_t& value) const override;
    /// The low 16 bits are used as the "compressionLevel": 0xFFFF sets the default, any other value is
    /// clamped to the bounds.
    bool setInteger(const std::string& key, const std::int64_t& value) override;

protected:
    void populateIndex() const override;

public:
    /// Makes a new archive in `file`, which gets the model's attributes, and a name if it has none. This and
    /// the next two raise un::exception if the format isn't active, and un::implemented if it creates no
    /// archives.
    virtual Archive* newArchiveAtFile(File& file);
    /// Makes a new archive that `folder` stores.
    virtual Archive* newArchiveAtFolder(Folder& folder);
    /// Makes a new archive in a new file of `folder`, as newFileInFolder makes it. Raises un::exception if
    /// the client declines the file.
    virtual Archive* newArchiveInFolder(Folder& folder, const Item* sample);
    /// Whether `other` is this very object.
    virtual bool isSameFormat(const Format& other) const;
    /// Reserved; returns 1.
    virtual std::uint64_t formatQuery(std::uint64_t a, std::uint32_t b);
    /// Sets `name` to the stem for an archive without a name: "Archive".
    virtual void defaultName(std::string& name) const;
    /// Sets `result` to the file name for `stem`: the prefix, `stem`, and the preferred suffix.
    virtual void archiveName(std::string& result, const std::string& stem) const;
    /// The existing archive in `file`, with the open mode `mode`, 0 for closed. Nothing is read.
    virtual Archive* _newArchiveAtItem(File* file, unsigned mode);
    /// A new, closed archive that `file` or `item` stores. The first calls the second, which raises
    /// un::implemented unless a format that creates archives overrides it.
    virtual Archive* _newEmptyArchiveAtFile(File& file);
    virtual Archive* _newEmptyArchiveAtItem(Item& item);
    /// A new recogniser, which the caller owns; null if archives cannot be recognised by their content.
    virtual format::classifier* _newClassifier();
    /// Whether its items are in a file system and not in archives; false by default.
    virtual bool isFileSystem() const;

    /// Makes a file object for a new archive in `folder`, named after `sample`, or by defaultName if that is
    /// null or has no name. Null if the client declines.
    File* newFileInFolder(Folder& folder, const Attributes* sample);
    /// The recogniser, made by the first call and owned by the format; null if there is none.
    format::classifier* recogniser();

protected:
    std::vector<std::string> suffixes; ///< the preferred one first

public:
    bool executable = true; ///< answers "executable"
    bool active = true;     ///< false: creating archives is refused
    std::uint32_t preserve_resource_fork = 0;
    HarborShell* const shell;

protected:
    std::uint32_t capabilities = 0;
    ModelAttributes model; ///< attributes of the file of a new archive
    std::string format_name;
    std::string long_name;
    std::string mime_type;
    std::string name_prefix;
    bool is_file = false;   ///< archives hold a single file
    bool is_folder = false; ///< archives hold folders
    bool is_segmented = false;
    bool is_text = false;
    bool recovers_archives = false;
    bool provides_empty_file = true;
    bool saves_resources = false;
    bool mac_format = false;
    bool mac_attributes = false;
    std::uint16_t compression_level = 0;
    std::int16_t compression_least = 0;
    std::int16_t compression_most = 0;
    std::int16_t compression_default = 0;
    std::uint16_t file_size_bits = 32;

private:
    void testActive() const;

    std::unique_ptr<format::classifier> classifier;
};

/// The base of formats whose archives derive from SuperArchive.
class HARBOR6_API SuperFormat : public Format {
public:
    using Format::Format;
    ~SuperFormat() override;
};

} // namespace harbor6
