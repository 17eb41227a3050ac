// Expands cabinets with the built program into a folder in memory and prints, for a stored cabinet of 200 MB
// with checksums, the time beside that of a plain copy of the same bytes in pieces of 64 KiB, run in turns;
// then the largest resident set with one large file and with 65535 small ones, what item-by-item extraction
// costs compared with one pass, and what cabinets cost whose names are long, deep, many or alike, or that
// hold themselves over and over.

#include "support/cabinet_writer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t size = 200'000'000;
const std::filesystem::path place = "/dev/shm/harbor-bench-" + std::to_string(getpid());

struct outcome {
    double seconds;
    long resident; ///< KiB
};

/// Runs `work` in a process of its own.
template<class Work>
outcome measure(Work work, bool may_fail = false) {
    std::filesystem::remove_all(place / "out");
    const auto begin = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(1);
    }
    int status = 0;
    rusage used = {};
    wait4(child, &status, 0, &used);
    if (status != 0 && !may_fail)
        std::fprintf(stderr, "a run failed\n");
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count(), used.ru_maxrss};
}

/// With `option`, a further argument, unless that is null.
outcome expand(const std::string& cabinet, const char* option = nullptr, bool may_fail = false) {
    const auto path = (place / cabinet).string();
    const auto out = (place / "out").string();
    return measure(
        [&] {
            if (may_fail)
                dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
            execl(HARBOR_PROGRAM, "harbor", "expand", path.c_str(), "-C", out.c_str(), option, nullptr);
        },
        may_fail);
}

outcome copy(const char* file) {
    return measure([&] {
        static std::array<char, 65536> piece;
        std::filesystem::create_directory(place / "out");
        const int from = open((place / file).c_str(), O_RDONLY);
        const int to = open((place / "out/copy").c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
        for (ssize_t received; (received = read(from, piece.data(), piece.size())) > 0;)
            if (write(to, piece.data(), static_cast<std::size_t>(received)) != received)
                _exit(1);
        _exit(0);
    });
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// A stored cabinet, written as it is made: a cabinet that lies in memory would do for the bench, not for its
/// figures.
void write_cabinet(const char* name, support::cabinet& made) {
    std::ofstream(place / name, std::ios::binary) << made.bytes();
}

/// Runs in a process of its own: a child's resident set begins as its parent's.
void write_inputs() {
    std::mt19937_64 random(1);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    std::ofstream(place / "plain", std::ios::binary) << bytes;
    support::cabinet large;
    constexpr std::size_t folder_size = 65000 * std::size_t{2000};
    for (std::size_t at = 0, i = 0; at < size; at += folder_size, ++i)
        large.folder(support::stored)
            .file(std::to_string(i), std::string_view(bytes).substr(at, folder_size));
    write_cabinet("large.cab", large);
    support::cabinet many;
    for (unsigned i = 0; i < 65535; ++i)
        many.file({.name = std::to_string(i % 16) + "\\" + std::to_string(i), .size = 16});
    many.folders.emplace_back().content.assign(std::size_t{65535} * 16, 'x');
    write_cabinet("many.cab", many);
    support::cabinet one;
    write_cabinet("one.cab", one.file("x", "x"));

    std::string levels;
    for (unsigned i = 0; i < 500; ++i)
        levels += "\\a";
    support::cabinet deep, too_deep, flat;
    for (unsigned i = 0; i < 116; ++i)
        deep.file(std::to_string(i) + levels, "");
    for (unsigned i = 0; i < 14; ++i)
        too_deep.file(std::to_string(i) + levels + levels + levels + levels + levels, "");
    for (unsigned i = 0; i < 65535; ++i)
        flat.file(std::to_string(i), "");
    write_cabinet("deep.cab", deep);
    write_cabinet("too-deep.cab", too_deep);
    write_cabinet("flat.cab", flat);
    support::cabinet long_name;
    write_cabinet("long-name.cab", long_name.file(std::string(64u << 20, 'x'), ""));
    support::cabinet alike;
    for (unsigned i = 0; i < 65535; ++i)
        alike.file(std::string(200, 'x') + std::to_string(i), "");
    write_cabinet("alike.cab", alike);

    // Ten copies of a cabinet in the next one, sixteen times.
    std::string inner = "x";
    for (unsigned level = 0; level < 16; ++level) {
        support::cabinet outer;
        outer.folder(support::mszip);
        for (unsigned copy = 0; copy < 10; ++copy)
            outer.file(std::to_string(copy) + ".cab", inner);
        inner = outer.bytes();
    }
    std::ofstream(place / "nested.cab", std::ios::binary) << inner;
}

} // namespace

int main() {
    std::filesystem::create_directory(place);
    measure([] {
        write_inputs();
        _exit(0);
    });
    std::vector<double> expanding;
    std::vector<double> copying;
    std::vector<double> ratios;
    long resident = 0;
    for (int i = 0; i < 11; ++i) {
        const auto plain = copy("plain");
        const auto program = expand("large.cab");
        expanding.push_back(program.seconds);
        copying.push_back(plain.seconds);
        ratios.push_back(plain.seconds / program.seconds);
        resident = std::max(resident, program.resident);
    }
    const auto mebibytes_per_second = [&](double seconds) {
        return static_cast<double>(size) / seconds / 1048576;
    };
    std::printf("expand  %7.0f MiB/s\ncopy    %7.0f MiB/s\nratio   %7.2f (median of 11 pairs)\n",
                mebibytes_per_second(median(expanding)), mebibytes_per_second(median(copying)),
                median(ratios));
    const auto one = expand("one.cab");
    const auto many = expand("many.cab");
    std::printf("resident: %ld KiB for 200 MB, %ld KiB for one byte, %ld KiB for 65535 files\n", resident,
                one.resident, many.resident);
    std::printf("65535 files: %.2f s, %.0f bytes a file\n", many.seconds,
                static_cast<double>(many.resident - one.resident) * 1024 / 65535);
    for (const std::string cabinet : {"large.cab", "many.cab"}) {
        std::vector<double> items;
        long walked = 0;
        for (int i = 0; i < 5; ++i) {
            const auto one_pass = expand(cabinet);
            const auto by_items = expand(cabinet, "--nested");
            items.push_back(by_items.seconds / one_pass.seconds);
            walked = by_items.resident;
        }
        std::printf("%s item by item: %.2f times one pass (median of 5 pairs), resident %ld KiB\n",
                    cabinet.c_str(), median(items), walked);
    }
    for (const std::string cabinet :
         {"deep.cab", "too-deep.cab", "flat.cab", "alike.cab", "long-name.cab", "nested.cab"}) {
        const auto bytes = std::filesystem::file_size(place / cabinet);
        for (const char* option : {static_cast<const char*>(nullptr), "--nested"}) {
            const auto run = expand(cabinet, option, true);
            std::printf("%s of %ju bytes%s: %.2f s, resident %ld KiB\n", cabinet.c_str(),
                        std::uintmax_t{bytes}, option ? " item by item" : "", run.seconds, run.resident);
        }
    }
    std::filesystem::remove_all(place);
}
