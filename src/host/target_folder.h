#pragma once

#include "model/folder.h"

namespace host {

/// A folder into which the program brings an archive's content.
class TargetFolder : public harbor6::Folder {
public:
    /// No system takes longer paths, and an archive can state names without end.
    static constexpr std::size_t longest_path = 4096;

    /// From the top of the target, with '/' between names; empty for the top itself.
    virtual const std::string& path() const = 0;
    /// Why no file called `name` can be made here, empty if one can. May make the folder ready for it.
    virtual std::string refusal(const std::string& name) = 0;
};

} // namespace host
