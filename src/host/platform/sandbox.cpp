#include "host/platform/sandbox.h"

#include "harbor6/posix/file_descriptor.h"

// Sanitizers trace the process, and profilers write beside its objects.
#if defined __linux__ && !defined HARBOR_NO_SANDBOX
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/landlock.h>
#include <linux/sched.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>
#endif

namespace host {

#if defined __linux__ && !defined HARBOR_NO_SANDBOX

namespace {

// Landlock knows truncation from its third version on, which not every system's headers do.
constexpr std::uint64_t truncate_file = 1ULL << 14;
constexpr std::uint64_t move_between_folders = 1ULL << 13;

constexpr std::uint64_t read_rights = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t write_rights = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_FILE |
                                       LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                                       LANDLOCK_ACCESS_FS_MAKE_DIR | move_between_folders | truncate_file;
/// What nothing here needs at all.
constexpr std::uint64_t forbidden_rights = LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                                           LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                                           LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
constexpr std::uint64_t rights_of_files =
    LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE | truncate_file;

void allow(int rules, const std::vector<std::string>& paths, std::uint64_t rights) {
    for (const auto& path : paths) {
        const file_descriptor opened(open(path.c_str(), O_PATH | O_CLOEXEC));
        struct stat status = {};
        if (!opened || fstat(opened.get(), &status) != 0)
            continue;
        landlock_path_beneath_attr rule = {};
        rule.allowed_access = S_ISDIR(status.st_mode) ? rights : rights & rights_of_files;
        rule.parent_fd = opened.get();
        syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    }
}

void confine_to(const reachable_paths& allowed) {
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    // The first version forbids every move between folders.
    if (version < 2)
        return;
    const std::uint64_t known = version < 3 ? ~truncate_file : ~std::uint64_t{0};
    landlock_ruleset_attr handled = {};
    handled.handled_access_fs = (read_rights | write_rights | forbidden_rights) & known;
    const file_descriptor rules(
        static_cast<int>(syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0)));
    if (!rules)
        return;
    allow(rules.get(), allowed.readable, read_rights);
    allow(rules.get(), allowed.listable, LANDLOCK_ACCESS_FS_READ_DIR);
    allow(rules.get(), allowed.writable, (read_rights | write_rights) & known);
    syscall(SYS_landlock_restrict_self, rules.get(), 0);
}

#if defined __x86_64__
constexpr std::uint32_t architecture = AUDIT_ARCH_X86_64;
#elif defined __aarch64__
constexpr std::uint32_t architecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t architecture = 0;
#endif

/// Refused whatever the arguments.
constexpr long refused_calls[] = {
    SYS_execve,
    SYS_execveat,
    SYS_socket,
    SYS_socketpair,
    SYS_connect,
    SYS_bind,
    SYS_ptrace,
    SYS_process_vm_readv,
    SYS_process_vm_writev,
    SYS_unshare,
    SYS_setns,
    SYS_mount,
    SYS_umount2,
    SYS_pivot_root,
    SYS_chroot,
    SYS_bpf,
    SYS_perf_event_open,
    SYS_userfaultfd,
    SYS_io_uring_setup,
    SYS_keyctl,
    SYS_add_key,
    SYS_request_key,
    SYS_init_module,
    SYS_finit_module,
    SYS_delete_module,
    SYS_kexec_load,
    SYS_open_by_handle_at,
    SYS_pidfd_getfd,
    SYS_tkill,
    SYS_pidfd_send_signal,
    SYS_rt_sigqueueinfo,
    SYS_rt_tgsigqueueinfo,
};

constexpr sock_filter load(std::size_t offset) {
    return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset));
}

/// Goes on with the next instruction if the loaded value is `value`, or else skips `otherwise` of them.
constexpr sock_filter unless_equal(std::uint32_t value, std::uint8_t otherwise) {
    return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, otherwise);
}

constexpr sock_filter answer(std::uint32_t result) {
    return BPF_STMT(BPF_RET | BPF_K, result);
}

constexpr auto refuse = answer(SECCOMP_RET_ERRNO | EPERM);
constexpr auto accept = answer(SECCOMP_RET_ALLOW);
/// Where the low halves of a call's arguments are.
constexpr std::size_t argument(unsigned index) {
    return offsetof(seccomp_data, args) + index * sizeof(std::uint64_t);
}

using filter_program = std::vector<sock_filter>;

/// A program that goes on with the number of the call.
filter_program begun_filter() {
    return {load(offsetof(seccomp_data, arch)), unless_equal(architecture, 1), BPF_STMT(BPF_JMP | BPF_JA, 1),
            refuse, load(offsetof(seccomp_data, nr)),
            // The numbers of another interface to the same calls.
            BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, 0x40000000, 0, 1), refuse};
}

/// For all threads of the process.
void apply(filter_program program) {
    program.push_back(accept);
    sock_fprog filter = {};
    filter.len = static_cast<unsigned short>(program.size());
    filter.filter = program.data();
    syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &filter);
}

} // namespace

void confine(const reachable_paths& allowed) {
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return;
    confine_to(allowed);
    if constexpr (architecture == 0)
        return;
    auto program = begun_filter();
    for (const long number : refused_calls) {
        program.push_back(unless_equal(static_cast<std::uint32_t>(number), 1));
        program.push_back(refuse);
    }
    // Input put into the terminal would be read by the shell.
    program.insert(program.end(), {unless_equal(SYS_ioctl, 6), load(argument(1)), unless_equal(TIOCSTI, 1),
                                   refuse, unless_equal(TIOCLINUX, 1), refuse, accept});
    apply(std::move(program));
}

void confine_to_itself() {
    if (architecture == 0 || prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) != 1)
        return;
    const auto self = static_cast<std::uint32_t>(getpid());
    auto program = begun_filter();
#ifdef SYS_fork
    program.insert(program.end(), {unless_equal(SYS_fork, 1), refuse, unless_equal(SYS_vfork, 1), refuse});
#endif
    // Threads, but no processes. The arguments of clone3 are out of sight: the C library falls back to clone.
    program.insert(program.end(), {unless_equal(SYS_clone3, 1), answer(SECCOMP_RET_ERRNO | ENOSYS),
                                   unless_equal(SYS_clone, 4), load(argument(0)),
                                   BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, CLONE_THREAD, 0, 1), accept, refuse});
    // Signals to this process, and the question whether another one exists.
    program.insert(program.end(),
                   {unless_equal(SYS_tgkill, 4), load(argument(0)), unless_equal(self, 1), accept, refuse,
                    unless_equal(SYS_kill, 7), load(argument(0)), unless_equal(self, 1), accept,
                    load(argument(1)), unless_equal(0, 1), accept, refuse});
    apply(std::move(program));
}

#else

void confine(const reachable_paths& /*allowed*/) {}
void confine_to_itself() {}

#endif

} // namespace host
