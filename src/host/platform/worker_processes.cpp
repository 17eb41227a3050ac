#include "host/platform/worker_processes.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/posix/file_descriptor.h"
#include "harbor6/posix/system_error.h"
#include "host/platform/console.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace host {

namespace {

constexpr int pipe_size = 1 << 20; ///< what a worker may print before its turn
constexpr int tick_milliseconds = 100;
constexpr std::size_t waiting_for_each = 4; ///< workers with unread output, for each that runs

struct worker {
    std::size_t number;
    pid_t process;
    file_descriptor output;
    bool running = true;
    int status = 0;
    std::string received{};
};

int exit_value(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

/// Waits until the worker has ended, which it does soon once its pipe is closed.
void reap(worker& each) {
    while (waitpid(each.process, &each.status, 0) < 0 && errno == EINTR) {
    }
    each.running = false;
}

} // namespace

/// The workers of one run, oldest first.
class worker_queue {
public:
    explicit worker_queue(const worker_processes& owning) : owner(owning) {}

    std::size_t running() const {
        return static_cast<std::size_t>(
            std::count_if(workers.begin(), workers.end(), [](const worker& each) { return each.running; }));
    }
    std::size_t size() const { return workers.size(); }

    void start(std::size_t number) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw_system_error("start", "a process", errno);
        file_descriptor reading(ends[0]), writing(ends[1]);
        fcntl(writing.get(), F_SETPIPE_SZ, pipe_size); // more than the usual size may be refused
        const auto parent = getpid();
        const auto process = fork();
        if (process < 0)
            throw_system_error("start", "a process", errno);
        if (process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            if (getppid() != parent)
                _exit(1);
            workers.clear();
            reading.close();
            print_to(writing.get());
            _exit(owner.work(number));
        }
        workers.push_back({number, process, std::move(reading)});
    }

    /// Passes on what the oldest worker prints, and notes which others have ended. Waits for a tick at most.
    void wait() {
        std::vector<pollfd> watched;
        for (const auto& each : workers)
            if (each.running)
                watched.push_back({each.output.get(), static_cast<short>(watched.empty() ? POLLIN : 0), 0});
        // The oldest may have ended already, with unread output.
        const bool ready = !workers.front().running;
        if (!ready && poll(watched.data(), watched.size(), tick_milliseconds) < 0)
            return;
        for (std::size_t i = 1; i < workers.size(); ++i)
            for (const auto& seen : watched)
                if (seen.fd == workers[i].output.get() && (seen.revents & (POLLHUP | POLLERR)))
                    reap(workers[i]);
        if (ready || watched.front().revents != 0)
            read_oldest();
    }

private:
    void read_oldest() {
        auto& oldest = workers.front();
        char buffer[65536];
        const auto length = read_some(oldest.output.get(), buffer, sizeof buffer);
        if (length > 0) {
            oldest.received.append(buffer, static_cast<std::size_t>(length));
            pass_on(oldest);
            return;
        }
        if (oldest.running)
            reap(oldest);
        owner.ended(oldest.number, exit_value(oldest.status));
        workers.pop_front();
    }

    void pass_on(worker& from) {
        std::string_view left = from.received;
        for (;;) {
            const auto piece = take_printed_piece(left);
            if (!piece)
                break;
            if (piece->kind == printed_piece::message)
                owner.receive(from.number, piece->text);
            else
                print_piece(*piece);
        }
        from.received.erase(0, from.received.size() - left.size());
    }

    const worker_processes& owner;
    std::deque<worker> workers;
};

void worker_processes::run(std::size_t count, std::size_t at_once) {
    worker_queue queue(*this);
    std::size_t started = 0;
    while (started < count || queue.size() > 0) {
        while (started < count && queue.running() < at_once && queue.size() < at_once * waiting_for_each)
            queue.start(started++);
        queue.wait();
        tick();
    }
}

void worker_processes::send_message(std::string_view message) {
    print_piece({printed_piece::message, message});
}

void* shared_memory(std::size_t bytes) {
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : memory;
}

} // namespace host
