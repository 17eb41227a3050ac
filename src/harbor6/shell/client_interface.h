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

/// The host's object of decisions: the item model asks it at each step that can be stopped or redirected. The
/// bodies here say yes to everything, merge folders, and keep a file that exists; a client overrides what it
/// decides otherwise. All calls are made on the thread that called into the model.
class HARBOR6_API ClientInterface {
public:
    ClientInterface() = default;
    ClientInterface(const ClientInterface&) = delete;
    ClientInterface& operator=(const ClientInterface&) = delete;
    virtual ~ClientInterface();

    /// Whether `file` is wanted. The client may set `*expand` to ask for expansion of an archive, and
    /// `*format` for a change of format; either pointer may be null.
    virtual bool sourceFile(const File& file, Folder& target, bool* expand, const Format** format);
    /// Whether `archive`, which was found among the files, is to be expanded into `target`. The client may
    /// open it here; then it has to return true.
    virtual bool sourceArchive(Archive& archive, Folder& target);
    /// The work on that archive is over, whether it succeeded or not.
    virtual void sourceArchiveDone(Archive& archive);
    virtual bool sourceFolder(const Folder& source, Folder& target);
    /// Whether the data may move, now that the target file object exists.
    virtual bool targetFile(const File& source, File& newFile, Folder& target);
    /// The data is about to move.
    virtual void targetFileReady(const File& source, File& newFile);
    /// Whether the folder `newFolder` may be created. `source` may be null.
    virtual bool targetFolder(Folder& newFolder, Folder& parent, const Folder* source);
    /// `existing` already has the name `name` that is wanted for what `model` describes; `folders` is true
    /// where a folder may be merged into an existing one. The client may leave another name in `name`, and
    /// another folder or none in `target` unless that is null. False gives the item up.
    virtual bool targetNameConflict(std::string& name, Item& existing, bool folders, const Attributes& model,
                                    pattern::AcquiredPtr<Folder>* target);
    /// A fork of `source` arrived damaged in `target`; `code` says what found it.
    static constexpr std::uint32_t checksum_failed = 1001;
    static constexpr std::uint32_t decoder_failed = 1002;
    virtual void itemFailed(std::uint32_t code, const Item& source, Item& target);
    /// The expansion of `archive` ended with `failure`; sourceArchiveDone follows.
    virtual void sourceArchiveFailed(Archive& archive, const std::exception_ptr& failure);
};

} // namespace harbor6
