#include "host/disk_library.h"

#include "outside/groundwork/exception.h"

#include <dlfcn.h>
#include <filesystem>
#include <utility>

namespace host {

namespace {

[[noreturn]] void fail() {
    const char* const words = dlerror();
    throw fs::Exception(words ? words : "cannot be loaded", "host::disk_library");
}

} // namespace

disk_library::disk_library(const std::string& path) : handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle)
        fail();
}

disk_library::disk_library(disk_library&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}

disk_library::~disk_library() {
    if (handle)
        dlclose(handle);
}

void* disk_library::symbol(const char* name) const {
    void* const found = dlsym(handle, name);
    if (!found)
        fail();
    return found;
}

std::string program_folder() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? "." : program.parent_path().string();
}

} // namespace host
