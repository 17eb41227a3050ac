#include "harbor6/model/file.h"

#include "harbor6/model/archive.h"
#include "harbor6/model/classifier.h"
#include "harbor6/model/format.h"
#include "harbor6/model/infinite_items.h"
#include "harbor6/model/single_fork_file.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/fork.h"
#include "harbor6/shell/harbor_shell.h"

namespace harbor6 {

File::~File() = default;

const File* File::asFile() const {
    return this;
}

File* File::asFile() {
    return this;
}

std::unique_ptr<pattern::Iterator<const Fork*>> File::createIterator() const {
    return std::make_unique<SingleForkIterator>(this);
}

void File::adopt(File* other) {
    adopt(static_cast<Item*>(other));
}

void File::adopt(Item* other) {
    commitItem();
    File* const file = other ? other->asFile() : nullptr;
    bool link = false;
    if (containerFormat && !(getBoolean(key::symLink, link) && link)) {
        auto& format = const_cast<Format&>(*containerFormat);
        const pattern::AcquiredPtr<Archive> inside(format.newArchiveAtFile(*this));
        inside->open(Archive::mode_create);
        if (file)
            inside->addItem(*file, false);
        else if (const pattern::AcquiredPtr<File> made(other ? inside->acquireNewFileLike(*other, false)
                                                             : nullptr);
                 made)
            made->commitItem();
        inside->close();
    } else if (file) {
        adoptForks(*file);
    }
}

void File::adoptFileContents(File& /*other*/) {
    throw un::implemented("no default implementation for File::adoptFileContents");
}

Fork* File::getMainFork() {
    return getFork(0);
}

const Fork* File::getMainFork() const {
    throw un::implemented("harbor6::File::getMainFork");
}

Fork* File::getFork(unsigned /*id*/) {
    return nullptr;
}

const Fork* File::getFork(unsigned id) const {
    ConstIterator<Fork> forks(*this);
    for (forks.first(); !forks.isDone(); forks.next())
        if (forks.current()->id == id)
            return forks.current();
    return nullptr;
}

void File::copyTo(File& target) const {
    if (!target.isCreated())
        target.create();
    giveForksTo(target);
    target.commitItem();
}

void File::testContents() const {
    const pattern::AcquiredPtr<InfiniteFile> target(new InfiniteFile(shell(), nullptr));
    copyTo(*target);
}

data::CountedInput File::input(std::uint64_t /*x*/) {
    return {};
}

data::random::CountedInput File::randomInput(std::uint64_t /*x*/) {
    return {};
}

Transform& File::expansionTransform() {
    throw un::implemented("harbor6::File::expansionTransform: no transform available");
}

data::CountedOutput File::output(data::CountedOutput& target) {
    const pattern::AcquiredPtr<Transform> transform(compressionTransform());
    if (!transform)
        return {};
    transform->setOutput(target);
    const auto port = transform->outputPort();
    return port ? data::CountedOutput(new data::OutputTransformer(port, *transform)) : data::CountedOutput();
}

data::random::CountedOutput File::randomOutput(std::uint64_t /*x*/) {
    return {};
}

Transform* File::compressionTransform() {
    return nullptr;
}

void File::reservedFileHookA(std::uint64_t /*a*/, std::uint64_t /*b*/) {}

void File::reservedFileHookB(std::uint64_t /*a*/, std::uint64_t /*b*/) {}

void File::reservedFileHookC(std::uint64_t /*a*/, std::uint64_t /*b*/) {}

void File::reservedFileHookD(std::uint64_t /*a*/, std::uint64_t /*b*/) {}

void File::reservedFileHookE(std::uint64_t /*a*/, std::uint64_t /*b*/) {}

void File::reservedFileHookF(std::uint64_t /*a*/, std::uint64_t /*b*/) {}

bool File::isOutermost() const {
    const Archive* const around = archive();
    if (!around)
        return true;
    if (!format().boolean(key::isFile))
        return false;
    return pattern::AcquiredPtr<File>(around->acquireArchiveFile())->isOutermost();
}

bool File::fileFlagged() const {
    return false;
}

void File::adoptForks(const File& source) {
    bool failed = false;
    const auto damaged = [&](std::uint32_t code) {
        if (!failed)
            shell().client().itemFailed(code, source, *this);
        failed = true;
    };
    ConstIterator<Fork> forks(source);
    for (forks.first(); !forks.isDone(); forks.next()) {
        const Fork& fork = *forks.current();
        try {
            commitFork(fork);
            fork.committed = true;
        } catch (const format::crc_exception&) {
            damaged(ClientInterface::checksum_failed);
        } catch (const basic::digest_exception&) {
            damaged(ClientInterface::checksum_failed);
        } catch (const basic::algorithm_exception&) {
            damaged(ClientInterface::decoder_failed);
        }
    }
    if (failed) {
        setEraseOnRelease(false);
        setBoolean(key::hidden, false);
        commitItem();
    }
}

void File::commitFork(const Fork& fork) {
    auto in = fork.input(true);
    if (!in)
        throw un::implemented("gz::FileItem::commitFile: can't get input stream");
    Fork* const own = getFork(fork.id);
    if (!own)
        return;
    const pattern::AcquiredPtr<Transform> transform(own->acquireCompressionTransform());
    transform->setInput(in);
    transform->run();
}

void File::giveForksTo(File& target) const {
    target.adoptForks(*this);
}

void File::commitForkTo(const Fork& fork, File& target) {
    target.commitFork(fork);
    fork.committed = true;
}

Archive* File::acquireStreamArchive() {
    return shell().getClassifier().acquireStreamArchive(*this);
}

Archive* File::acquireArchive(bool follow, std::uint32_t a, std::uint32_t b) {
    pattern::AcquiredPtr<Archive> found(shell().getClassifier().acquireFileArchive(*this, a, b, 0));
    if (!follow || !found || !found->format().boolean(key::isFile))
        return found.detach();
    try {
        found->open(Archive::mode_walk);
    } catch (const un::exception&) {
        return found.detach();
    }
    try {
        const pattern::AcquiredPtr<const Item> first(found->acquireFirstItem());
        File* const file = first ? const_cast<Item*>(first.get())->asFile() : nullptr;
        pattern::AcquiredPtr<Archive> inner(file ? file->acquireArchive(follow, 0, 0) : nullptr);
        if (inner) {
            inner->sourceArchive(*found);
            return inner.detach();
        }
    } catch (const un::exception&) {
        // No archive further in: the wrapper itself is the result.
    } catch (...) {
        found->close();
        throw;
    }
    found->close();
    return found.detach();
}

} // namespace harbor6
