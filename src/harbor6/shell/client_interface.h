#pragma once

#include "harbor6/shell/ref_counted.h"

#include <exception>
#include <string>

namespace harbor6 {

class Archive;
class Attributes;
class File;
class Folder;
class Format;
class Item;

/// Makes a host's decisions: the item model asks at each step that can be stopped or redirected. These
/// defaults accept everything, merge folders, and keep an existing file; a client overrides what it decides
/// otherwise. All calls are made on the thread that called into the model, and what a client raises ends the
/// operation that asked. The arguments are valid during the call only.
class HARBOR6_API ClientInterface {
public:
    ClientInterface() = default;
    ClientInterface(const ClientInterface&) = delete;
    ClientInterface& operator=(const ClientInterface&) = delete;
    virtual ~ClientInterface();

    /// Whether `file` is to be copied into `target`. The client may set `*expand` to have an archive
    /// expanded, and `*format` to have the file converted. Both pointers may be null; `format` is while an
    /// archive's content is expanded in one pass, where no file is converted.
    virtual bool sourceFile(const File& file, Folder& target, bool* expand, const Format** format);
    /// Whether `archive`, found in a file, is to be expanded into `target`. The client may open it here, and
    /// must return true then.
    virtual bool sourceArchive(Archive& archive, Folder& target);
    /// Work on the archive has ended, successfully or not.
    virtual void sourceArchiveDone(Archive& archive);
    /// Whether `source` is to be copied into `target`.
    virtual bool sourceFolder(const Folder& source, Folder& target);
    /// Whether the data may be copied, now that `newFile` exists as an object; it is dropped if not.
    virtual bool targetFile(const File& source, File& newFile, Folder& target);
    /// The data is about to be copied.
    virtual void targetFileReady(const File& source, File& newFile);
    /// Whether the folder `newFolder` may be created. `source` may be null.
    virtual bool targetFolder(Folder& newFolder, Folder& parent, const Folder* source);
    /// `existing` already has the name `name` that is wanted for what `model` describes; `folders` is true if
    /// a folder may be merged into it. The client may change `name`, and, unless `target` is null, replace
    /// the folder there or clear it; `target` is null when an existing item is moved. Returns false to skip
    /// the item.
    virtual bool targetNameConflict(std::string& name, Item& existing, bool folders, const Attributes& model,
                                    pattern::AcquiredPtr<Folder>* target);
    /// Codes of itemFailed: what detected the damage.
    static constexpr std::uint32_t checksum_failed = 1001;
    static constexpr std::uint32_t decoder_failed = 1002;
    /// Data of `source` arrived damaged in `target`, which is kept.
    virtual void itemFailed(std::uint32_t code, const Item& source, Item& target);
    /// The expansion of `archive` failed with `failure`; sourceArchiveDone follows.
    virtual void sourceArchiveFailed(Archive& archive, const std::exception_ptr& failure);
    /// A part of `archive` is damaged or missing, as `failure` says, and the files that need it were ended
    /// before this call. Whether to go on with the rest; by default `failure` ends the pass.
    virtual bool sourceArchiveDamaged(Archive& archive, const std::exception_ptr& failure);
    /// The only item of an expanded archive could not replace `folder`, which was made for its content:
    /// `failure` says why. The content is complete, and `folder` has its own name again, if that was
    /// possible.
    virtual void promotionFailed(Folder& folder, const std::exception_ptr& failure);
};

} // namespace harbor6
