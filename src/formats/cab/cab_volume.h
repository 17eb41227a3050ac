#pragma once

#include "formats/cab/cab_records.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/counted_stream.h"

#include <optional>
#include <string>
#include <vector>

namespace harbor6::cab {

/// One cabinet of a set, or the only one, read by the published rules: it finds the records and the data of
/// each folder where the cabinet says that they are. For one pass, on one thread.
class Volume {
public:
    /// What is wrong with a stated place: where it makes no sense, what is due in sequence is read instead.
    using Complaint = std::optional<std::string>;

    /// Reads the header, with its own tests. `name` is the one under which the host gave `bytes`, empty for
    /// the archive itself.
    Volume(std::string name, data::CountedInput bytes, const ::format::cab::text_rules& texts);

    /// Reads the folder records, and goes to the first file record.
    Complaint readFolders();
    /// To be called once, behind the last file record.
    void endRecords() { behind_last = input->tell(); }

    /// The folders in the order in which they are to be expanded, by their places; `last`, if it is one of
    /// them, is the last.
    std::vector<std::size_t> expansionOrder(std::size_t last) const;
    /// Folders may share data, but a few records could state any amount of work. So the data that are read in
    /// all are limited to so many times the bytes up to the last of them.
    static constexpr std::uint64_t most_readings = 16;
    /// Goes to the first block of a folder. Raises format::exception if data that were read before are there
    /// and that limit is reached, and stream::exception if the input can't go there.
    Complaint goToData(std::size_t folder);
    /// Takes the place of goToData and endData for a folder that isn't read; the input stays where it is.
    void passOver(std::size_t folder);
    /// To be called when no more of a folder's blocks are read: `left` were not, and the first of them is
    /// next.
    void endData(std::uint32_t left);

    /// Names the volume in front of `text`, unless it is the archive itself.
    std::string named(const std::string& text) const { return name.empty() ? text : name + ": " + text; }

    /// Whether all of the volume has been read.
    bool isAtEnd() const { return input->read() < 0; }
    /// What to say if more of it is needed.
    stream::cut_short cutShort() const { return {input->tell(), "harbor6::cab::Archive"}; }

    const std::string name;
    const data::CountedInput input;
    ::format::cab::archive_header header;
    std::vector<::format::cab::folder_header> folders;
    bool continues_in = false;  ///< folder 0 begins in an earlier volume
    bool continues_out = false; ///< the last folder goes on in the next volume
    bool records_cut = false;   ///< the volume ends inside the file records
    bool told_cut = false;      ///< that the volume is cut short was told

private:
    std::uint64_t size() const;
    bool makesSense(std::uint64_t offset) const;
    bool hasPlace(std::size_t folder) const;
    void goTo(std::uint64_t place);
    void goBehindLast(std::size_t folder);

    const std::uint64_t start;    ///< of the cabinet in the input
    std::uint64_t head = 0;       ///< bytes of the header and the folder records
    std::uint64_t data_begin = 0; ///< of the folder that is being read
    std::size_t next_folder = 0;  ///< behind it
    bool at_data = false;         ///< goToData has gone to blocks that endData hasn't ended
    // The data of the folder behind it begin so many blocks behind this place.
    std::uint64_t behind_last = 0;
    std::uint32_t blocks_left = 0;
    std::uint64_t furthest = 0;   ///< behind all data that were read
    std::uint64_t read_bytes = 0; ///< of data; some may have been read several times
};

} // namespace harbor6::cab
