#include "harbor6/hosts/registry.h"

#include "harbor6/groundwork/platform.h"
#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/source_file.h"
#include "harbor6/posix/plug_in_file.h"

#include <algorithm>
#include <filesystem>

namespace host {

namespace {

using loader = bool(harbor6::Classifier&, harbor6::HarborShell*);

[[noreturn]] void refuse(const std::string& reason) {
    throw un::exception(reason, "host::Registry");
}

/// A line about the plug-in `path`.
std::string complaint(const std::string& path, const std::string& fault) {
    const auto name = nio::printable(path) + ": ";
    return fault.starts_with(name) ? fault : name + fault;
}

} // namespace

PlainFormat::PlainFormat(harbor6::HarborShell* host) : Format(host) {}

PlainFormat::~PlainFormat() = default;

bool PlainFormat::isFileSystem() const {
    return true;
}

Registry::Registry(harbor6::ClientInterface& client) : shell(classifier, client), plain(&shell) {}

Registry::Registry(harbor6::ClientInterface& client, const Registry& loaded) : Registry(client) {
    plug_ins = loaded.plug_ins;
    for (auto& each : plug_ins)
        if (each.accepted)
            add_formats(each);
}

Registry::~Registry() = default;

std::vector<std::string> Registry::standard_folders() {
    std::vector<std::string> folders;
    if (auto wanted = platform::trusted_environment("HARBOR_FORMATS"); !wanted.empty())
        folders.push_back(std::move(wanted));
    if (const std::filesystem::path library = platform::library_path(); !library.empty())
        folders.push_back((library.parent_path() / "harbor6" / "formats").string());
    return folders;
}

void Registry::add_formats(plug_in& from) {
    auto* const load_formats = reinterpret_cast<loader*>(from.code->symbol("loadFormats"));
    if (!load_formats(classifier, &shell))
        refuse("its formats were not accepted");
    from.accepted = true;
}

void Registry::load_file(const std::string& path) {
    if (const auto fault = plug_in_fault(path); !fault.empty())
        refuse(fault);
    plug_in loaded{nio::leaf(path, '/'), std::make_shared<const platform::library>(path)};
    // Kept even if it raises: the exception is an object of its code.
    add_formats(plug_ins.emplace_back(std::move(loaded)));
}

std::vector<std::string> Registry::load(const std::string& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().extension() == ".so")
            files.push_back(entry->path());
    std::sort(files.begin(), files.end());
    std::vector<std::string> complaints;
    for (const auto& file : files) {
        const auto is_this = [&](const plug_in& other) { return other.name == file.filename(); };
        if (std::any_of(plug_ins.begin(), plug_ins.end(), is_this))
            continue;
        try {
            load_file(file.string());
        } catch (...) {
            complaints.push_back(complaint(file.string(), nio::failure_text(std::current_exception())));
        }
    }
    if (classifier.formats().empty())
        complaints.push_back("no formats found in " + nio::printable(folder) +
                             (error ? ": " + error.message() : std::string()));
    return complaints;
}

std::string Registry::why_unrecognised(stream::input& bytes) const {
    std::vector<char> sample(harbor6::Classifier::sample_size);
    bytes.seek(0);
    const auto length = bytes.read(sample.data(), harbor6::Classifier::sample_size);
    if (length == 0)
        return empty_file;
    if (const auto* const format = classifier.resembling(un::array<char>(sample.data(), length)))
        return "begins as " + format->string(harbor6::key::longName) +
               " archives do, but its header is damaged or says that it continues another archive";
    return unknown_format;
}

pattern::AcquiredPtr<harbor6::Archive> Registry::open(const std::string& path,
                                                      const harbor6::Archive::Options& options) {
    const pattern::AcquiredPtr<SourceFile> file(
        new SourceFile(plain, nio::leaf(path, '/'), std::make_unique<file_input>(open_input(path), path)));
    pattern::AcquiredPtr<harbor6::Archive> archive(classifier.acquireStreamArchive(*file));
    if (!archive)
        throw format::exception(why_unrecognised(file->storage()), "host::Registry");
    archive->options = options;
    archive->open(harbor6::Archive::mode_read);
    return archive;
}

} // namespace host
