#pragma once

#include "harbor6/groundwork/export.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace platform {
class temporary_file;
}

namespace harbor6 {

/// Where the item trees of archives keep the bytes of their entries: in memory up to a limit, which all
/// archives that use this space share, and beyond it in temporary files without a name, one for each archive.
/// Any number of archives and threads use one space; it must outlive those archives and their entries.
class HARBOR6_API ScratchSpace {
public:
    static constexpr std::uint64_t usual_memory = 16u << 20;

    /// Temporary files are created in the folder that the environment variable TMPDIR names; in `folder` if
    /// it is not set, or if no file can be created there.
    explicit ScratchSpace(std::string folder, std::uint64_t memory = usual_memory);
    ScratchSpace(const ScratchSpace&) = delete;
    ScratchSpace& operator=(const ScratchSpace&) = delete;
    ~ScratchSpace();

    /// The space of archives that were given no other; its folder is /tmp.
    static ScratchSpace& standard();

private:
    friend class ScratchLog;

    /// False, with nothing taken, if fewer than `bytes` are left.
    bool takeMemory(std::uint64_t bytes);
    void returnMemory(std::uint64_t bytes);
    /// Raises fs::Exception if none can be created.
    platform::temporary_file createFile() const;

    const std::string folder;
    std::atomic<std::uint64_t> memory_left;
};

} // namespace harbor6
