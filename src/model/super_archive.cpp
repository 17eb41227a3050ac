#include "model/super_archive.h"

namespace harbor6 {

SuperArchive::SuperArchive(const Format& format, Item& storing_item, unsigned mode)
    : Archive(format, storing_item, mode) {}

SuperArchive::~SuperArchive() = default;

void SuperArchive::print(stream::output& out) {
    out.write("harbor6::Archive::print not implemented in this format\n");
}

void SuperArchive::archiveHook() {}

void SuperArchive::beginExtraction() {}

void SuperArchive::endExtraction() {}

void SuperArchive::abortExtraction() {}

void SuperArchive::destroy() {
    delete this;
}

const Folder* SuperArchive::asFolder() const {
    return this;
}

Folder* SuperArchive::asFolder() {
    return this;
}

const Archive* SuperArchive::asArchive() const {
    return this;
}

Archive* SuperArchive::asArchive() {
    return this;
}

Archive* SuperArchive::archive() {
    return this;
}

const Format& SuperArchive::format() const {
    return Archive::format();
}

Format& SuperArchive::format() {
    return Archive::format();
}

HarborShell& SuperArchive::shell() const {
    return Archive::shell();
}

} // namespace harbor6
