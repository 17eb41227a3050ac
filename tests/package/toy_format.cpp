#include "harbor6/model/archive.h"
#include "harbor6/model/classifier.h"
#include "harbor6/model/container.h"
#include "harbor6/model/file.h"
#include "harbor6/model/format.h"
#include "harbor6/model/item.h"
#include "harbor6/stream/input.h"

#include <string_view>

// A format whose archives hold one file: the signature "TOY!", then the bytes of "toy.txt" up to the end.

namespace {

constexpr std::string_view signature = "TOY!";

struct Recogniser : format::classifier {
    Recogniser() : classifier(1000, 1000) {}
    unsigned matches_at(unsigned offset) const override {
        return std::string_view(sample.begin(), sample.length()).substr(offset).starts_with(signature);
    }
    bool confirm_at(unsigned offset) override { return matches_at(offset) != 0; }
};

struct Archive : harbor6::SuperArchive {
    using SuperArchive::SuperArchive;
    void addContentTo(harbor6::Folder& target, harbor6::ContainerAdaptor* added) const override {
        harbor6::ModelAttributes entry;
        entry.name = "toy.txt";
        const pattern::AcquiredPtr<harbor6::File> file(target.acquireNewFileLike(entry, false));
        if (!file)
            return;
        {
            const auto bytes = storageInput(0);
            const auto output = file->getMainFork()->output(true);
            bytes->skip(signature.size());
            bytes->copy_to(*output);
        }
        file->commitItem();
        if (added)
            added->containerAdd(*file);
    }
};

struct Format : harbor6::SuperFormat {
    explicit Format(harbor6::HarborShell* host) : SuperFormat(host) {
        format_name = "toy";
        suffixes.push_back(".toy");
        capabilities = expands_archives;
    }
    harbor6::Archive* _newArchiveAtItem(harbor6::File* file, unsigned mode) override {
        return new Archive(*this, *file, mode);
    }
    format::classifier* _newClassifier() override { return new Recogniser; }
};

} // namespace

extern "C" HARBOR6_API bool loadFormats(harbor6::Classifier& classifier, harbor6::HarborShell* shell) {
    return classifier.addFormat(*new Format(shell));
}
