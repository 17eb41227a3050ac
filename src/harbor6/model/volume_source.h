#pragma once

#include "harbor6/stream/counted_stream.h"

#include <cstdint>
#include <functional>
#include <string>

namespace harbor6 {

/// The volume that an archive of several files needs next, as the volume at hand names it.
struct VolumeRequest {
    std::string name;    ///< of its file, UTF-8, as stored: nothing keeps it from being a path or empty
    std::string disk;    ///< label of the disk that held it, not converted; may be empty
    std::uint32_t set;   ///< number of the set
    std::uint32_t index; ///< of the volume in the set; all ones if no volume can be the right one
    /// Whether the stream, at its start, is that volume; reads some bytes and doesn't set it back. Raises
    /// what the stream raises.
    std::function<bool(stream::input&)> matches;
};

/// Gives an archive its other volumes. The host owns it, and it must outlive the archive's operations. Called
/// on the thread that works on the archive.
class HARBOR6_API VolumeSource {
public:
    VolumeSource() = default;
    VolumeSource(const VolumeSource&) = delete;
    VolumeSource& operator=(const VolumeSource&) = delete;
    virtual ~VolumeSource();

    /// The bytes of a volume from its start; empty if there is none. It may be another one than was asked
    /// for, if it has the name: the archive tests it, and says what is wrong. The last one may be closed.
    virtual data::CountedInput openVolume(const VolumeRequest& request) = 0;
};

} // namespace harbor6
