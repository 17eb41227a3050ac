#include "harbor6/shell/structures.h"

namespace fs {

Spec::~Spec() = default;

} // namespace fs

namespace io::mac {

file_info::~file_info() = default;

extended_file_info::~extended_file_info() = default;

folder_info::~folder_info() = default;

extended_folder_info::~extended_folder_info() = default;

} // namespace io::mac

namespace io::win32 {

attributes::~attributes() = default;

} // namespace io::win32
