#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/shell/attributes.h"
#include "harbor6/shell/ref_counted.h"
#include "harbor6/stream/array_input.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace format {

/// Recognises a format in a sample of a stream's bytes. A format makes it and keeps it; the host sets
/// `sample`, whose bytes it owns, and asks. The two tests need not be asked in order. For one call at a time.
class HARBOR6_API classifier {
public:
    classifier(std::uint32_t format_number, std::uint32_t identifier);
    classifier(const classifier&) = delete;
    classifier& operator=(const classifier&) = delete;
    virtual ~classifier();

    /// 0.
    virtual unsigned default_result();
    /// The quick test: 1 if the format's signature stands at `offset` of the sample, else 0.
    virtual unsigned matches_at(unsigned offset) const = 0;
    /// The thorough test: whether an archive of the format begins at `offset`. Raises what the stream classes
    /// raise if the sample ends too early.
    virtual bool confirm_at(unsigned offset) = 0;

    std::uint32_t format_number;
    void* owner = nullptr; ///< the host's
    std::uint32_t identifier;
    un::array<char> sample;
};

} // namespace format

namespace format {
class classifier;
} // namespace format

namespace harbor6 {

class Archive;
class File;
class Folder;
class HarborShell;
class Item;

/// One archive format: what it is called, what it can do, and how its archives come into being. A concrete
/// format fills the members in its constructor and overrides the factories. Hosts read the members through
/// the attribute keys. The members, like the operations, keep their order.
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

    static constexpr std::uint32_t expands_archives = 1u << 0; ///< a bit of `capabilities`
    static constexpr std::uint32_t creates_archives = 1u << 3; ///< another one
    static constexpr std::uint16_t default_level = 0xFFFF;     ///< stands for `compression_default`

    /// `shell` is not owned. It may be null as long as nobody asks an item of the format for it.
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
    /// "compressionLevel" takes the low 16 bits: 0xFFFF is the default, all else is clamped to the bounds.
    bool setInteger(const std::string& key, const std::int64_t& value) override;

protected:
    void populateIndex() const override;

public:
    /// Makes an empty archive in a file, which gets a name if it has none. A deactivated format raises
    /// un::exception, one that makes no archives un::implemented; so do the two operations that follow.
    virtual Archive* newArchiveAtFile(File& file);
    /// The same with a folder as the item that stores the archive; no name is given.
    virtual Archive* newArchiveAtFolder(Folder& folder);
    /// Makes the file too, named after `sample` unless that is null.
    virtual Archive* newArchiveInFolder(Folder& folder, const Item* sample);
    /// Whether `other` is this very object.
    virtual bool isSameFormat(const Format& other) const;
    /// 1, whatever is asked; nothing calls it.
    virtual std::uint64_t formatQuery(std::uint64_t a, std::uint32_t b);
    /// Sets `name` to the stem of the name for an archive without one, "Archive".
    virtual void defaultName(std::string& name) const;
    /// Sets `result` to the file name for `stem`: the prefix in front, the preferred suffix behind.
    virtual void archiveName(std::string& result, const std::string& stem) const;
    /// An archive on `file`, counted, that has the open mode `mode`: 0 leaves it unopened. Nothing is read.
    virtual Archive* _newArchiveAtItem(File* file, unsigned mode);
    /// A new archive that `file` or `item` is to store, counted. The first calls the second, which raises
    /// un::implemented: a format that makes archives overrides it.
    virtual Archive* _newEmptyArchiveAtFile(File& file);
    virtual Archive* _newEmptyArchiveAtItem(Item& item);
    /// Null: archives of this format cannot be recognised by their content.
    virtual std::unique_ptr<format::classifier> _newClassifier();
    /// Whether its items lie in a file system rather than in archives; false.
    virtual bool isFileSystem() const;

    /// Makes a file for a new archive, named after `sample` unless that is null or nameless. Counted; null if
    /// the client declined.
    File* newFileInFolder(Folder& folder, const Attributes* sample);
    /// The recogniser, made when first asked for; null if there is none. It serves one caller at a time.
    format::classifier* recogniser();

protected:
    std::vector<std::string> suffixes; ///< the preferred one first

public:
    bool executable = true;
    bool active = true; ///< false: no archive can be created
    std::uint32_t preserve_resource_fork = 0;
    HarborShell* const shell;

protected:
    std::uint32_t capabilities = 0;
    ModelAttributes model; ///< the file of a new archive
    std::string format_name;
    std::string long_name;
    std::string mime_type;
    std::string name_prefix;
    bool is_file = false;
    bool is_folder = false;
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
