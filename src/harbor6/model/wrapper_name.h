#pragma once

namespace harbor6 {

/// The name that the folder made for an archive has while its only item takes its place.
inline constexpr char wrapper_name[] = ".__&&temp_folder&&__";

} // namespace harbor6
