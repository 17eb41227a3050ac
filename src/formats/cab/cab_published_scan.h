#pragma once

#include "formats/cab/cab_item_reader.h"
#include "formats/cab/cab_targets.h"
#include "formats/cab/cab_volume.h"
#include "harbor6/model/range_splitter.h"

#include <exception>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace harbor6::cab {

/// One pass over a cabinet, or over a set of cabinets, by the published rules: records and data are where
/// the cabinet says, files are cut by the offsets that their records state, and each folder is expanded for
/// itself. It lives for one call of Archive::addContentTo and owns none of its arguments.
///
/// A folder that spans volumes moves the pass on: when its blocks in one volume are used up, the next volume
/// is opened, its files get their targets, and the folder's blocks there follow.
class PublishedScan {
public:
    PublishedScan(Archive& archive, Folder& target, ContainerAdaptor* adaptor);

    /// Runs the pass, once per object. What it raises is said at Archive::addContentTo.
    void run();

private:
    using Files = std::shared_ptr<RangeSplitter>;
    using Identity = std::tuple<std::string, std::uint64_t, std::uint64_t>; ///< name, size, offset

    void openFirst();
    std::unique_ptr<Volume> open(const std::string& name, const std::string& disk, std::int64_t index,
                                 const char* relation);
    void startVolume(Files carried);
    void addFile(const std::set<Identity>& known, std::vector<RangeSplitter::range>* of_folder_0);
    void tellCutRecords(const std::exception_ptr& failure);
    Files newFiles() const;
    void expandVolume();
    void expandFolder(std::size_t index);
    void expandInto(RangeSplitter& files, std::size_t index);
    Volume* moveOn();
    bool openNext();
    void complain(const Volume::Complaint& complaint);
    void tell(const std::exception_ptr& failure);
    void tellFailure(const std::exception_ptr& failure, bool in_a_file);

    Archive& archive;
    target_finder targets;
    const ::format::cab::text_rules texts;
    ::format::cab::item_reader reader;
    std::unique_ptr<Volume> here;
    std::uint32_t own_index = 0; ///< of the archive's own volume in its set
    std::vector<Files> folders;  ///< files of each folder of `here`
    std::set<Identity> spanning; ///< files of `here` that go on in the next volume
    bool ended = false;          ///< the client refused a folder
    bool stuck = false;          ///< the next volume can't be read
};

} // namespace harbor6::cab
