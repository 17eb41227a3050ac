#pragma once

#include "outside/shell/archive.h"

namespace harbor6 {

/// The smallest complete archive: plain answers where Archive leaves gaps, so that a format's class overrides
/// only what it really does.
class HARBOR6_API SuperArchive : public Archive {
public:
    SuperArchive(const Format& format, Item& storing_item, unsigned mode);
    ~SuperArchive() override;

    void print(stream::output& out) override;
    void archiveHook() override;
    void beginExtraction() override;
    void endExtraction() override;
    void abortExtraction() override;

    using Item::archive;

    void destroy() override;
    const Folder* asFolder() const override;
    Folder* asFolder() override;
    const Archive* asArchive() const override;
    Archive* asArchive() override;
    Archive* archive() override;
    const Format& format() const override;
    Format& format() override;
    HarborShell& shell() const override;
};

} // namespace harbor6
