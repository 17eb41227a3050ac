// Whole passes over any bytes as a cabinet, into memory. Whatever the bytes hold, a pass ends with a result
// or an exception of the project's tree, and
//   - gives the same when fresh memory is filled with another byte;
//   - gives each wanted file the same bytes, and tells of damage in the same words, whichever other files are
//     wanted;
//   - with `wanted_only`, gives complete files the same bytes.

#include "cabinet_mutator.h"
#include "harbor6/groundwork/text.h"
#include "support/cabinet_host.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>

namespace {

unsigned char fresh_memory = 0;

} // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    void* const memory = std::malloc(size ? size : 1);
    return memory ? std::memset(memory, fresh_memory, size) : nullptr;
}
void* operator new(std::size_t size) {
    if (void* const memory = operator new(size, std::nothrow))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t longest);

namespace {

constexpr unsigned most_writes = 400;

/// Which files are wanted, by their place in the cabinet: all, or those at which a bit of `bits` is set.
struct selection {
    bool wants(unsigned place) const { return (bits >> place % 61 & 1) != 0; }

    std::uint64_t bits = ~std::uint64_t{0};
};

/// What one pass gave.
struct outcome {
    bool operator==(const outcome&) const = default;

    std::map<unsigned, std::string> files; ///< by place
    std::map<unsigned, unsigned> commits;
    std::string refusal;
    bool complete = true; ///< false if the pass was ended for writing too much
};

/// Wants what the selection says, gives clashing names a new one, and finds the node of each file.
class choosing_client : public harbor6::ClientInterface {
public:
    explicit choosing_client(const selection& choice) : chosen(choice) {}

    bool sourceFile(const harbor6::File&, harbor6::Folder&, bool*, const harbor6::Format**) override {
        return chosen.wants(place++);
    }
    bool targetFile(const harbor6::File&, harbor6::File& made, harbor6::Folder&) override {
        nodes[place - 1] = dynamic_cast<support::memory_file&>(made).node;
        return true;
    }
    bool targetNameConflict(std::string& name, harbor6::Item&, bool folders, const harbor6::Attributes&,
                            pattern::AcquiredPtr<harbor6::Folder>*) override {
        if (!folders)
            name += std::string("#").append(std::to_string(++renamed));
        return true;
    }

    bool sourceArchiveDamaged(harbor6::Archive&, const std::exception_ptr& failure) override {
        // Its class says whether it ended a file, which depends on the files that are wanted.
        damage += nio::failure_text(failure) + "\n";
        return true;
    }

    std::map<unsigned, support::node_ptr> nodes;
    std::string damage; ///< after which the pass went on

private:
    selection chosen;
    unsigned place = 0;
    unsigned renamed = 0;
};

outcome expand(const std::string& bytes, const harbor6::Archive::Options& options, const selection& chosen,
               unsigned char memory) {
    fresh_memory = memory;
    outcome result;
    support::memory_host host;
    choosing_client client(chosen);
    std::destroy_at(&host.shell); // it asks the client of the host, which only records
    std::construct_at(&host.shell, host.classifier, client);
    harbor6::cab::Format format(&host.shell);
    unsigned writes = 0;
    host.trap = [&](const std::string& step) {
        if (step.starts_with("write ") && ++writes > most_writes) {
            result.complete = false;
            throw fs::Exception("enough", "fuzz");
        }
    };
    const auto stored = host.source("x.cab", bytes);
    const pattern::AcquiredPtr<harbor6::Archive> archive(format._newArchiveAtItem(stored.get(), 0));
    archive->options = options;
    result.refusal = support::refusal_of([&] { archive->addContentTo(*host.root(), nullptr); });
    result.refusal += client.damage;
    for (const auto& [place, node] : client.nodes) {
        result.files[place] = node->bytes;
        result.commits[place] = node->commits;
    }
    return result;
}

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

void check(const std::string& bytes, const harbor6::Archive::Options& options) {
    const auto all = expand(bytes, options, {}, 0xA5);
    require(expand(bytes, options, {}, 0x5A) == all, "the same whatever memory held");
    if (!all.complete)
        return;
    for (const auto& [place, count] : all.commits)
        require(count <= 1, "at most one commit");
    const selection some{std::hash<std::string>()(bytes)};
    const auto part = expand(bytes, options, some, 0);
    require(part.refusal == all.refusal, "the same failure for a choice of files");
    for (const auto& [place, content] : all.files)
        if (some.wants(place))
            require(part.files.at(place) == content && part.commits.at(place) == all.commits.at(place),
                    "the same bytes for a choice of files");
    auto narrow = options;
    narrow.wanted_only = true;
    const auto least = expand(bytes, narrow, some, 0);
    // A block that is cut short may pass as one that ends in zeros, if it is read; not if it is passed over.
    const bool cut = least.refusal.find("cut short") != std::string::npos;
    if (all.refusal.empty() && !cut)
        require(least.refusal.empty() && least.files == part.files, "the same bytes where less is read");
}

std::string mutated(std::string bytes, std::size_t longest) {
    const auto size = std::min(bytes.size(), longest);
    bytes.resize(std::min(longest, size + 64));
    bytes.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(bytes.data()), size, bytes.size()));
    return bytes;
}

std::size_t give(const std::string& made, std::uint8_t* to, std::size_t longest) {
    return made.copy(reinterpret_cast<char*>(to), longest);
}

std::string_view text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t longest,
                                               unsigned seed) {
    std::mt19937 dice(seed);
    auto made = cabinet_mutator::parse(text(data, size));
    if (!made && size == 0)
        made.emplace();
    if (!made || dice() % 16 == 0)
        return LLVMFuzzerMutate(data, size, longest);
    for (auto edits = 1 + dice() % 3; edits > 0; --edits)
        cabinet_mutator::edit(*made, dice, mutated);
    return give(made->bytes(), data, longest);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data, std::size_t size,
                                                 const std::uint8_t* other, std::size_t other_size,
                                                 std::uint8_t* out, std::size_t longest, unsigned) {
    auto made = cabinet_mutator::parse(text(data, size));
    const auto added = cabinet_mutator::parse(text(other, other_size));
    if (!made || !added)
        return 0;
    cabinet_mutator::join(*made, *added);
    return give(made->bytes(), out, longest);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(text(data, size));
    const bool published = std::hash<std::string>()(bytes) >> 61 & 1;
    check(bytes, {.published_rules = published, .longest_path = 512});
    return 0;
}
