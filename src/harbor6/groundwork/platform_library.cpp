#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/platform.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <utility>

namespace platform {

namespace {

[[noreturn]] void fail(const std::string& fallback) {
    const char* message = dlerror();
    throw un::exception(message != nullptr ? message : fallback, "platform::library");
}

} // namespace

library::library(const std::string& path) {
    open(path);
}

library::library(library&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}

library& library::operator=(library&& other) noexcept {
    std::swap(handle, other.handle);
    return *this;
}

library::~library() {
    close();
}

void library::open(const std::string& path) {
    close();
    // dlopen is declared as raising nothing, yet passes on what a constructor in the library raises. A call
    // that the compiler can't see through lets it arrive here.
    void* (*volatile load)(const char*, int) = dlopen;
    handle = load(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr)
        fail("cannot load " + path);
}

void* library::symbol(const std::string& name) const {
    if (handle == nullptr)
        throw un::exception("no library is loaded", "platform::library");
    void* const address = dlsym(handle, name.c_str());
    if (address == nullptr)
        fail("no symbol " + name);
    return address;
}

void library::close() noexcept {
    if (handle != nullptr)
        dlclose(std::exchange(handle, nullptr));
}

std::string executable_path() {
    std::error_code failure;
    const auto path = std::filesystem::read_symlink("/proc/self/exe", failure);
    if (failure)
        throw un::exception(failure.message(), "platform::executable_path");
    return path.string();
}

std::string library_path() {
    static const char anchor = 0;
    Dl_info self = {};
    std::error_code failure;
    if (dladdr(&anchor, &self) == 0 || self.dli_fname == nullptr)
        return {};
    const auto path = std::filesystem::canonical(self.dli_fname, failure);
    return failure ? std::string() : path.string();
}

std::string trusted_environment(const char* name) {
    const char* const value = secure_getenv(name);
    return value ? value : "";
}

} // namespace platform
