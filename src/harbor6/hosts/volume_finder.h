#pragma once

#include "harbor6/model/volume_source.h"
#include "harbor6/posix/file_input.h"

#include <set>
#include <string>
#include <vector>

namespace host {

/// Finds the volumes of archives that consist of several files: among the files that the user named, in any
/// order and under any name, and beside the archive at hand, under the stored name, with capital and small
/// letters alike if there is no other. Only the last component of a stored name counts, and only a plain file
/// is opened that the user didn't name. One thread at a time.
class HARBOR6_API VolumeFinder : public harbor6::VolumeSource {
public:
    /// `named` are the paths of the files that the user named; "-" is the standard input.
    explicit VolumeFinder(std::vector<std::string> named);
    ~VolumeFinder() override;

    /// From now on volumes are wanted for the archive in the file `path`.
    void beginArchive(const std::string& path);
    /// Whether the file, as the user named it, was opened as a volume of an archive.
    bool wasUsed(const std::string& path) const { return used.count(path) != 0; }

    /// A failure to open or to read a file means that it isn't the volume.
    harbor6::data::CountedInput openVolume(const harbor6::VolumeRequest& request) override;

private:
    struct candidate {
        std::string path;
        harbor6::data::CountedInput pipe; ///< what can be opened only once, once it was
    };

    bool tryOpen(candidate& file, const harbor6::VolumeRequest& request, harbor6::data::CountedInput& bytes);
    std::string findBeside(const std::string& name) const;

    std::vector<candidate> candidates;
    std::set<std::string> used;
    std::string at_hand;
};

} // namespace host
