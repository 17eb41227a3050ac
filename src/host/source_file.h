#pragma once

#include "host/disk_storage.h"
#include "model/file.h"
#include "outside/shell/fork.h"

namespace host {

/// The archive's file as the item model sees it: a name, and one stream of bytes, which everybody shares.
/// Each request for the stream sets it back to its beginning; on a pipe that works as long as the stream
/// still holds it.
class SourceFile : public harbor6::File {
public:
    SourceFile(harbor6::Format& format, std::string name, std::unique_ptr<storage_input> bytes);

    storage_input& storage() const { return *bytes; }

    void destroy() override;
    const harbor6::Format& format() const override;
    harbor6::Format& format() override;
    harbor6::Fork* getMainFork() override;
    const harbor6::Fork* getMainFork() const override;
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;

protected:
    void populateIndex() const override;

private:
    class SourceFork : public harbor6::Fork {
    public:
        harbor6::data::CountedInput input(bool expanding) const override;
        /// Empty on a pipe.
        harbor6::data::random::CountedInput randomInput(bool expanding, bool shared_stream) const override;

        harbor6::data::CountedInput shared;
        const storage_input* storage = nullptr;
    };

    harbor6::Format& described;
    std::string name;
    storage_input* bytes; ///< held by the fork
    SourceFork fork;
};

} // namespace host
