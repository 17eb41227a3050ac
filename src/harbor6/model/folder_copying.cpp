#include "harbor6/model/archive.h"
#include "harbor6/model/container.h"
#include "harbor6/model/file.h"
#include "harbor6/model/folder.h"
#include "harbor6/model/format.h"
#include "harbor6/model/wrapper_name.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"

// Copying items from any source into a folder, and expanding the archives among them.

namespace harbor6 {

using pattern::AcquiredPtr;

namespace {

/// Tells an archive that isn't stored in a file what it receives next: the source, its only item, or null.
void announce(Archive& archive, const Container& source) {
    const auto* const described = dynamic_cast<const Attributes*>(&source);
    bool plural = true;
    if (described && described->hasString(key::name)) {
        archive.setArchiveFile(described);
    } else if (source.hasPluralContent(plural, false) && !plural) {
        const AcquiredPtr<const Item> only(source.acquireFirstItem());
        archive.setArchiveFile(only.get());
    } else {
        archive.setArchiveFile(nullptr);
    }
}

} // namespace

void Folder::addItem(const Item& item, bool uniqueName) {
    AcquiredPtr<Item> added(acquireAddedItem(item, uniqueName));
}

Item* Folder::acquireAddedItem(const Item& item, bool uniqueName) {
    if (archive())
        archive()->setArchiveFile(&item);
    try {
        return acquireCopiedItem(item, uniqueName);
    } catch (const basic::exception&) {
        format::adapt_exception();
        return nullptr;
    }
}

void Folder::addContent(const Container& source) {
    AcquiredPtr<ContainerAdaptor> added(acquireAddedContent(source));
}

ContainerAdaptor* Folder::acquireAddedContent(const Container& source) {
    if (archive() && !archive()->hasArchiveFile())
        announce(*archive(), source);
    AcquiredPtr<ContainerAdaptor> added(new StdVectorContainer);
    try {
        _addContent(source, added.get());
    } catch (const basic::exception&) {
        format::adapt_exception();
    }
    return added.detach();
}

void Folder::_addContent(const Container& source, ContainerAdaptor* added) {
    Archive* walked = nullptr;
    try {
        bool at_first = true;
        ConstItemIterator items(source);
        for (items.first(); !items.isDone(); items.next()) {
            const AcquiredPtr<const Item> item(items.current());
            if (at_first) {
                if (Archive* const around = const_cast<Item&>(*item).archive()) {
                    around->beginExtraction();
                    walked = around;
                }
                at_first = false;
            }
            const AcquiredPtr<Item> copied(acquireCopiedItem(*item, false));
            if (added && copied)
                added->containerAdd(*copied);
        }
        if (Archive* const around = std::exchange(walked, nullptr))
            around->endExtraction();
    } catch (...) {
        if (walked) {
            try {
                walked->abortExtraction();
            } catch (...) {
                // The failure that ended the walk is the one to report.
            }
        }
        throw;
    }
}

Folder* Folder::acquireCopiedFolder(const Folder& folder, bool uniqueName) {
    if (!shell().client().sourceFolder(folder, *this))
        return nullptr;
    AcquiredPtr<Folder> made(acquireNewFolderLike(folder, uniqueName));
    if (!made || !shell().client().targetFolder(*made, *this, &folder))
        return nullptr;
    made->commitItem();
    made->_addContent(folder, nullptr);
    return made.detach();
}

void Folder::copyContentTo(Folder& target) const {
    const AcquiredPtr<Folder> made(target.acquireNewFolderLike(*this, false));
    if (!made || !shell().client().targetFolder(*made, target, this))
        return;
    if (!made->isCreated())
        made->commitItem();
    addContentTo(*made, nullptr);
}

Item* Folder::acquireCopiedItem(const Item& item, bool uniqueName) {
    if (const File* const file = item.asFile())
        return acquireExpandedFile(*file, uniqueName);
    const Folder* const folder = item.asFolder();
    if (!folder)
        throw un::exception("attempt to derefernce 0", "un");
    return acquireCopiedFolder(*folder, uniqueName);
}

Item* Folder::acquireExpandedFile(const File& file, bool uniqueName) {
    bool expand = false;
    const Format* format = nullptr;
    if (!shell().client().sourceFile(file, *this, &expand, &format))
        return nullptr;
    if (archive() || (file.archive() && (file.archive()->mode() & Archive::mode_search)))
        expand = false;
    if (expand)
        if (AcquiredPtr<Item> result = expandInPlace(file, uniqueName, expand))
            return result.detach();
    AcquiredPtr<File> copy(acquireCopiedFile(file, uniqueName, format));
    if (expand)
        if (AcquiredPtr<Item> result = expandCopy(file, copy.get(), uniqueName))
            return result.detach();
    return copy.detach();
}

/// The first attempt, on the source itself. If it returns null the file is copied, and `expand` tells whether
/// to try the copy then.
AcquiredPtr<Item> Folder::expandInPlace(const File& source, bool uniqueName, bool& expand) {
    auto& file = const_cast<File&>(source);
    try {
        const AcquiredPtr<Archive> found(file.isOutermost() ? file.acquireArchive(false, 0, 0)
                                                            : file.acquireStreamArchive());
        if (found && shell().client().sourceArchive(*found, *this)) {
            auto result = expandArchive(*found, uniqueName);
            if (result) {
                promoteOnlyItem(result);
                result->expanded = true;
            }
            return result;
        }
        expand = false;
        if (found) {
            shell().client().sourceArchiveDone(*found);
            if (found->mode() != 0) {
                found->close();
                throw un::exception("Archive opened by the ClientInterface::sourceArchive has to be expanded",
                                    "un");
            }
        }
    } catch (const un::implemented&) {
        // The archive can't be read in place; its copy may be readable.
    } catch (const Archive::ModeError&) {
    } catch (const fs::Exception&) {
        throw;
    } catch (const un::exception&) {
        expand = false;
    }
    return {};
}

/// The second attempt, on the copy, which is erased once it has been expanded. If it returns null the copy
/// stays.
AcquiredPtr<Item> Folder::expandCopy(const File& original, File* copy, bool uniqueName) {
    if (!copy)
        throw un::exception("attempt to derefernce 0", "un");
    const AcquiredPtr<Archive> found(original.format().boolean(key::isFile)
                                         ? copy->acquireArchive(false, 0, 0)
                                         : copy->acquireStreamArchive());
    if (!found || !shell().client().sourceArchive(*found, *this))
        return {};
    auto result = expandArchive(*found, uniqueName);
    if (result) {
        promoteOnlyItem(result);
        copy->erase();
        result->expanded = true;
    }
    return result;
}

/// Copies the content of an archive into this folder. The archive is closed and the client told in any case.
AcquiredPtr<Item> Folder::expandArchive(Archive& archive, bool uniqueName) {
    if (archive.mode() == 0)
        archive.open(Archive::mode_read);
    auto& client = shell().client();
    AcquiredPtr<Item> result;
    try {
        result = acquireAddedItem(archive, uniqueName);
    } catch (...) {
        archive.close();
        try {
            client.sourceArchiveFailed(archive, std::current_exception());
        } catch (...) {
            // The failure that ended the expansion is the one to report.
        }
        client.sourceArchiveDone(archive);
        throw;
    }
    archive.close();
    client.sourceArchiveDone(archive);
    return result;
}

void Folder::promoteOnlyItem(AcquiredPtr<Item>& result) {
    const auto wrapper = result;
    Folder* const folder = wrapper->asFolder();
    if (!folder || !folder->hasBoolean(key::pluralContent) || folder->boolean(key::pluralContent))
        return;
    const auto name = folder->string(key::name);
    std::exception_ptr failure;
    try {
        if (!AcquiredPtr<const Item>(folder->acquireFirstItem()))
            return;
        // The item may have the wrapper's name: the wrapper is renamed first.
        folder->setString(key::name, wrapper_name);
        const AcquiredPtr<const Item> only(folder->acquireFirstItem());
        AcquiredPtr<Item> adopted(acquireAdoptedItem(const_cast<Item&>(*only)));
        if (adopted) {
            result = adopted;
            folder->erase();
            return;
        }
    } catch (...) {
        // The wrapper stays, under its old name.
        failure = std::current_exception();
    }
    try {
        folder->setString(key::name, name);
        folder->commitItem();
    } catch (...) {
        if (!failure)
            failure = std::current_exception();
    }
    if (!failure)
        return;
    try {
        shell().client().promotionFailed(*folder, failure);
    } catch (...) {
        // The archive is expanded all the same.
    }
}

/// The folder for a scratch file: this one, or, inside archives, the one that contains the outermost archive.
AcquiredPtr<Folder> Folder::scratchFolder() {
    AcquiredPtr<File> outermost;
    for (Archive* around = archive(); around; around = outermost ? outermost->archive() : nullptr)
        outermost = around->acquireArchiveFile();
    return outermost ? AcquiredPtr<Folder>(outermost->acquireParent()) : AcquiredPtr<Folder>::sharing(*this);
}

File* Folder::acquireCopiedFile(const File& source, bool uniqueName, const Format* wanted) {
    if (wanted == &const_cast<const Folder*>(this)->format())
        wanted = nullptr;
    auto* const converter = const_cast<Format*>(wanted);
    auto current = AcquiredPtr<File>::sharing(const_cast<File&>(source));
    auto destination = AcquiredPtr<Folder>::sharing(*this);
    AcquiredPtr<Archive> newArchive;
    if (converter && format().boolean(key::providesEmptyFile)) {
        newArchive = converter->newArchiveAtFolder(*this);
        newArchive->open(Archive::mode_create);
        destination = AcquiredPtr<Folder>::sharing(*newArchive);
    } else if (converter) {
        current = converter->newFileInFolder(*scratchFolder(), &source);
        current->setEraseOnRelease(true);
        const AcquiredPtr<Archive> scratch(converter->newArchiveAtFile(*current));
        scratch->open(Archive::mode_create);
        scratch->addItem(source, false);
        scratch->close();
    }
    AcquiredPtr<File> made(destination->acquireNewFileLike(*current, uniqueName));
    if (made) {
        const Archive* const around = const_cast<const File&>(*current).archive();
        made->setEraseOnRelease(!(around && around->keepFailedTargets));
        const bool ok = shell().client().targetFile(*current, *made, *this);
        if (ok && !current->fileFlagged())
            shell().client().targetFileReady(*current, *made);
        if (ok) {
            made->adopt(current.get());
            made->setEraseOnRelease(false);
        } else {
            made = nullptr;
        }
    }
    if (newArchive) {
        made = newArchive->acquireArchiveFile();
        newArchive->close();
    }
    return made.detach();
}

} // namespace harbor6
