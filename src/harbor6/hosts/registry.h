#pragma once

#include "harbor6/model/archive.h"
#include "harbor6/model/classifier.h"
#include "harbor6/model/format.h"
#include "harbor6/shell/harbor_shell.h"

#include <memory>
#include <string>
#include <vector>

namespace platform {
class library;
}

namespace host {

/// The format of items outside any archive.
class HARBOR6_API PlainFormat : public harbor6::Format {
public:
    explicit PlainFormat(harbor6::HarborShell* shell);
    ~PlainFormat() override;

    bool isFileSystem() const override;
};

/// The formats that a program can use, and the shell through which they reach its client. It keeps the
/// plug-ins loaded, so it must outlive every archive, item and exception that comes from one; the client must
/// outlive it. One thread at a time; a thread of its own needs a registry of its own, which shares the
/// plug-ins.
class HARBOR6_API Registry {
public:
    /// Without formats.
    explicit Registry(harbor6::ClientInterface& client);
    /// With the formats of the plug-ins that `loaded` has, which stays unchanged: any number of threads may
    /// do that at once.
    Registry(harbor6::ClientInterface& client, const Registry& loaded);
    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;
    ~Registry();

    /// Where plug-ins are: the folder that the environment variable HARBOR_FORMATS names, unless the process
    /// has more rights than its user, then the one of those that are installed with this library.
    static std::vector<std::string> standard_folders();

    /// Loads every plug-in (*.so) in `folder`, in the order of their names, except those of a name that is
    /// loaded already. Returns a printable line for each that is refused, while the others can be used, and
    /// one if there are no formats at all then.
    std::vector<std::string> load(const std::string& folder);
    /// Loads one. Raises un::exception if it is no plug-in, or was built for another version of this
    /// library's interface; what the plug-in raises passes through.
    void load_file(const std::string& path);

    /// The archive in the file `path`, open for reading, as `options` say. Raises fs::Exception if the file
    /// can't be read, and format::exception if no format recognises it.
    pattern::AcquiredPtr<harbor6::Archive> open(const std::string& path,
                                                const harbor6::Archive::Options& options = {});
    /// Why no format recognises the archive in `bytes`, which can seek to their beginning. Raises what a
    /// format says of a header that is cut short.
    std::string why_unrecognised(stream::input& bytes) const;
    static constexpr char empty_file[] = "the file is empty";
    static constexpr char unknown_format[] = "not an archive of a known format";

private:
    struct plug_in {
        std::string name; ///< of its file
        std::shared_ptr<const platform::library> code;
        bool accepted = false; ///< its formats are registered
    };

    void add_formats(plug_in& from);

    std::vector<plug_in> plug_ins; ///< declared first, so unloaded last

public:
    harbor6::Classifier classifier;
    harbor6::HarborShell shell;
    PlainFormat plain; ///< of items outside any archive
};

} // namespace host
