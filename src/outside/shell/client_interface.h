#pragma once

#include "outside/shell/ref_counted.h"

#include <string>

namespace harbor6 {

class Archive;
class Attributes;
class File;
class Folder;
class Format;
class Item;

/// The host's object of decisions: the item model asks it at each step that can be stopped or redirected. A
/// client may answer by any policy. All calls come on the thread that called into the model.
class HARBOR6_API ClientInterface {
public:
    ClientInterface() = default;
    ClientInterface(const ClientInterface&) = delete;
    ClientInterface& operator=(const ClientInterface&) = delete;
    virtual ~ClientInterface();

    /// Is this file wanted? The client may set `*expand` to ask for expansion, and `*format` for a change of
    /// format. `format` may be null.
    virtual bool sourceFile(const File& file, Folder& target, bool* expand, const Format** format) = 0;
    /// An archive was found: expand it? The client may open it here; then it has to say yes.
    virtual bool sourceArchive(Archive& archive, Folder& target) = 0;
    /// The work on that archive is over. If a failure ended it, that exception is being handled during the
    /// call.
    virtual void sourceArchiveDone(Archive& archive) = 0;
    virtual bool sourceFolder(const Folder& source, Folder& target) = 0;
    /// The target file object stands: may the data move?
    virtual bool targetFile(const File& source, File& newFile, Folder& target) = 0;
    /// The data is about to move.
    virtual void targetFileReady(const File& source, File& newFile) = 0;
    /// The target folder object stands: may it be created? `source` may be null.
    virtual bool targetFolder(Folder& newFolder, Folder& parent, const Folder* source) = 0;
    /// `existing` bears the `name` that is wanted for what `model` describes. The client may leave another
    /// name, and another folder or none in `target` unless that is null. False means give up.
    virtual bool targetNameConflict(std::string& name, Item& existing, bool folders, const Attributes& model,
                                    pattern::AcquiredPtr<Folder>* target) = 0;
    /// A fork of `source` came over damaged into `target`; `code` says what found it.
    static constexpr std::uint32_t checksum_failed = 1001;
    static constexpr std::uint32_t decoder_failed = 1002;
    virtual void itemFailed(std::uint32_t code, const Item& source, Item& target) = 0;
};

} // namespace harbor6
