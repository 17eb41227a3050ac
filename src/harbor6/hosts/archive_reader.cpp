#include "harbor6/hosts/archive_reader.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/source_file.h"
#include "harbor6/stream/multi_output.h"
#include "harbor6/stream/positioned_input.h"

namespace host {

namespace {

using pattern::AcquiredPtr;

/// What the items of one pass share.
struct part_target {
    harbor6::Format& plain_format;
    entry_receiver* receiver = nullptr;
    std::size_t current = 0; ///< the entry that the client was asked about last
};

class part_output : public stream::output, public stream::segment_listener {
public:
    part_output(entry_receiver& receiver, std::size_t entry, std::shared_ptr<arrival> arriving)
        : target(receiver), number(entry), data(std::move(arriving)) {}

    using stream::output::write;

    void write(const char* buffer, unsigned length) override {
        data->set_received(data->received() + length);
        target.bytes(number, {buffer, length});
    }
    void write(char byte) override { write(&byte, 1); }
    std::uint64_t tell() const override { return data->received(); }
    void segment_begins(std::uint64_t size) override { data->expect(size); }
    void segment_failed() override { data->fail({}); }

private:
    entry_receiver& target;
    const std::size_t number;
    std::shared_ptr<arrival> data;
};

class PartFile;

class PartFork : public harbor6::Fork {
public:
    explicit PartFork(PartFile* file) : owner(file) {}
    harbor6::data::CountedOutput output(bool expanding) override;

private:
    PartFile* owner;
};

/// A wanted entry, whose bytes go to the receiver.
class PartFile : public TargetFile, public harbor6::OneForkFile<PartFork>, public PlainItem<PartFile> {
public:
    explicit PartFile(part_target& shared)
        : OneForkFile(static_cast<PartFile*>(this)), PlainItem(shared.plain_format), target(shared),
          number(shared.current) {}

    /// A checksum over its bytes is wrong.
    void spoil() {
        if (data)
            data->fail({});
    }

    void commitItem() override {
        if (auto* const receiver = data && !ended ? target.receiver : nullptr) {
            ended = true;
            receiver->ended(number, data->complete());
        }
    }

protected:
    std::string itemName() const override { return {}; }
    bool setItemName(const std::string& /*name*/) override { return true; }

private:
    friend class PartFork;
    part_target& target;
    const std::size_t number;
    bool ended = false;
};

harbor6::data::CountedOutput PartFork::output(bool /*expanding*/) {
    owner->data = std::make_shared<arrival>();
    return harbor6::data::CountedOutput(new part_output(*owner->target.receiver, owner->number, owner->data));
}

/// A folder that accepts any names and keeps nothing.
class PartFolder : public TargetFolder, public PlainItem<PartFolder> {
public:
    explicit PartFolder(part_target& shared, std::string own_path = {})
        : PlainItem(shared.plain_format), target(shared), folder_path(std::move(own_path)) {}

    const std::string& path() const override { return folder_path; }
    std::string prepareFor(const std::string& /*name*/) override { return {}; }
    bool isCreated() override { return true; }
    harbor6::Item* acquireItemFromName(const std::string& /*name*/) override { return nullptr; }
    harbor6::File* _newFile() override { return new PartFile(target); }
    harbor6::Folder* _newFolder() override { return new PartFolder(target, folder_path); }

protected:
    std::string itemName() const override { return nio::leaf(folder_path, '/'); }
    bool setItemName(const std::string& name) override {
        if (!name.empty() && folder_path.size() + name.size() <= longest_path)
            folder_path = pathOf(name);
        return true;
    }

private:
    part_target& target;
    std::string folder_path;
};

/// Hands on to the journal of the expansion that runs.
class relay : public journal {
public:
    void done(const std::string& path, std::uint64_t size) override { to->done(path, size); }
    void refused(const std::string& path, const std::string& reason) override { to->refused(path, reason); }
    void unfinished(const std::string& path, std::uint64_t size, const std::string& reason) override {
        to->unfinished(path, size, reason);
    }
    void missing(const std::string& path) override { to->missing(path); }
    void skipped(const std::string& path, const std::string& reason) override { to->skipped(path, reason); }

    journal* to = nullptr;
};

/// Counts the files that an archive asks about, and decides about each. The pass goes on behind damage, and
/// the first is kept.
class ReaderClient : public TargetClient {
public:
    explicit ReaderClient(relay& log) : TargetClient(log), reports(log) {}

    bool sourceArchiveDamaged(harbor6::Archive& /*archive*/, const std::exception_ptr& failure) override {
        if (!damage)
            damage = failure;
        return true;
    }
    void itemFailed(std::uint32_t /*code*/, const harbor6::Item& /*source*/, harbor6::Item& target) override {
        const std::string reason = "a checksum over its data is wrong";
        if (auto* const part = dynamic_cast<PartFile*>(&target))
            part->spoil();
        else if (const auto* const file = dynamic_cast<const TargetFile*>(&target))
            reports.refused(file->path(), reason + "; it is kept");
        if (!damage)
            damage = std::make_exception_ptr(format::crc_exception(reason, "host::ArchiveReader"));
    }

    bool sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* expand,
                    const harbor6::Format** format) override {
        const auto number = next++;
        return decide(number, file, target) &&
               (!expanding || TargetClient::sourceFile(file, target, expand, format));
    }

    std::function<bool(std::size_t, const harbor6::File&, harbor6::Folder&)> decide;
    std::size_t next = 0;
    bool expanding = false;
    std::exception_ptr damage;

private:
    relay& reports;
};

} // namespace

entry_receiver::~entry_receiver() = default;

bool entry_receiver::wants(std::size_t /*entry*/) {
    return true;
}

void entry_receiver::ended(std::size_t /*entry*/, bool /*complete*/) {}

const std::vector<std::string> ArchiveReader::attributes = {
    harbor6::key::name,       harbor6::key::pathName,    harbor6::key::compMethod,  harbor6::key::modTime,
    harbor6::key::readOnly,   harbor6::key::hidden,      harbor6::key::system,      harbor6::key::archive,
    harbor6::key::executable, harbor6::key::folderIndex, harbor6::key::folderOffset};

struct ArchiveReader::Body {
    explicit Body(const Registry& loaded) : client(reports), formats(client, loaded) {}

    /// One pass over the archive into `target`, with `decide` about each file.
    void pass(harbor6::Folder& target, decltype(ReaderClient::decide) decide) {
        client.decide = std::move(decide);
        client.next = 0;
        client.damage = nullptr;
        try {
            archive->addContentTo(target, nullptr);
            if (client.damage)
                std::rethrow_exception(client.damage);
        } catch (const format::exception&) {
            tell_cut();
            throw;
        } catch (const basic::algorithm_exception&) {
            tell_cut();
            throw;
        }
    }

    /// Raises the cause of a failure in the data if that is a missing end. A decoder may read beyond the end
    /// without needing what is missing there, so that alone is none.
    void tell_cut() const {
        const auto* const file = dynamic_cast<const file_input*>(storage);
        const auto* const other = dynamic_cast<const stream::positioned_input*>(storage);
        if ((file && file->came_short()) || (other && other->came_short()))
            throw stream::cut_short(storage->size(), "host::ArchiveReader");
    }

    void note(const harbor6::File& file, const harbor6::Folder& target) {
        tally_entry entry;
        const auto name = file.string(harbor6::key::name);
        entry.path = dynamic_cast<const TargetFolder&>(target).pathOf(name);
        std::int64_t size = 0;
        if (file.getInteger(harbor6::key::uncompressedSize, size))
            entry.size = static_cast<std::uint64_t>(size);
        for (const auto& key : attributes)
            if (auto value = value_of(file, key))
                entry.attributes.emplace(key, std::move(*value));
        entries.push_back(std::move(entry));
    }

    relay reports;
    ReaderClient client;
    Registry formats;
    part_target parts{formats.plain};
    stream::input* storage = nullptr; ///< owned by the archive's file
    AcquiredPtr<harbor6::Archive> archive;
    std::vector<tally_entry> entries;
    std::exception_ptr failure;
};

ArchiveReader::ArchiveReader(const Registry& loaded, std::unique_ptr<stream::input> bytes,
                             harbor6::VolumeSource* volumes)
    : body(std::make_unique<Body>(loaded)) {
    auto& formats = body->formats;
    body->storage = bytes.get();
    const AcquiredPtr<SourceFile> file(new SourceFile(formats.plain, "archive", std::move(bytes)));
    body->archive = formats.classifier.acquireStreamArchive(*file);
    if (!body->archive && volumes)
        body->archive = formats.classifier.acquireContinuedArchive(*file);
    if (!body->archive)
        throw format::exception(formats.why_unrecognised(*file->getMainFork()->input(true)),
                                "host::ArchiveReader");
    body->archive->options = TargetClient::archiveOptions();
    body->archive->options.item_details = harbor6::Archive::Details::all;
    body->archive->options.wanted_only = true;
    body->archive->volumes = volumes;
    body->archive->open(harbor6::Archive::mode_read);
    try {
        const AcquiredPtr<PartFolder> top(new PartFolder(body->parts));
        body->pass(*top, [this](std::size_t, const harbor6::File& file_in, harbor6::Folder& target) {
            body->note(file_in, target);
            return false;
        });
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        body->failure = std::current_exception();
    }
}

ArchiveReader::~ArchiveReader() = default;

const std::vector<tally_entry>& ArchiveReader::entries() const {
    return body->entries;
}

const std::exception_ptr& ArchiveReader::head_failure() const {
    return body->failure;
}

const harbor6::Format& ArchiveReader::format() const {
    return std::as_const(*body->archive).format();
}

harbor6::Format& ArchiveReader::plain_format() {
    return body->formats.plain;
}

void ArchiveReader::ignore_checksums(bool ignored) {
    body->archive->close();
    body->archive->options.ignore_checksums = ignored;
    body->archive->open(harbor6::Archive::mode_read);
}

void ArchiveReader::read(entry_receiver& receiver) {
    body->parts.receiver = &receiver;
    body->client.expanding = false;
    const AcquiredPtr<PartFolder> top(new PartFolder(body->parts));
    body->pass(*top, [&](std::size_t number, const harbor6::File&, harbor6::Folder&) {
        body->parts.current = number;
        return receiver.wants(number);
    });
}

void ArchiveReader::expand(harbor6::Folder& target, journal& reports, TargetClient::Existing existing,
                           const std::function<bool(std::size_t)>& wants) {
    body->reports.to = &reports;
    body->client.expanding = true;
    body->client.existing = existing;
    body->pass(target, [&](std::size_t number, const harbor6::File&, harbor6::Folder&) {
        return !wants || wants(number);
    });
}

} // namespace host
