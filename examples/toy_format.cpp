// A format: the signature "TOY!", then for each file the length of its path in one byte, the path, its size
// in four bytes, the lowest first, and its bytes.
#include <harbor6/harbor6.h>

namespace {

constexpr std::string_view signature = "TOY!";

class Archive : public harbor6::SuperArchive {
public:
    using SuperArchive::SuperArchive;

    void addContentTo(harbor6::Folder& target, harbor6::ContainerAdaptor* added) const override {
        const auto bytes = storageInput(0);
        stream::little_endian_input numbers(*bytes);
        bytes->skip(signature.size());
        harbor6::ContentPass pass(*this, target, added);
        for (int length = bytes->read(); length >= 0 && !pass.ended(); length = bytes->read()) {
            harbor6::ContentEntry entry;
            entry.path.resize(static_cast<unsigned>(length));
            bytes->read(entry.path.data(), static_cast<unsigned>(length));
            entry.size = numbers.read32();
            pass.add(entry, *bytes);
        }
    }
};

class Format : public harbor6::SuperFormat {
public:
    explicit Format(harbor6::HarborShell* host) : SuperFormat(host) {
        format_name = "toy";
        long_name = "Toy";
        suffixes.push_back(".toy");
        is_folder = true;
        capabilities = expands_archives;
    }

    harbor6::Archive* _newArchiveAtItem(harbor6::File* file, unsigned mode) override {
        return new Archive(*this, *file, mode);
    }
    format::classifier* _newClassifier() override { return new harbor6::SignatureClassifier(signature); }
};

} // namespace

bool loadFormats(harbor6::Classifier& classifier, harbor6::HarborShell* shell) {
    return classifier.addFormat(*new Format(shell));
}
