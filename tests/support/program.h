#pragma once

#include "support/cabinet_writer.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

// The program as its user sees it: arguments in, exit status and exact output out.

namespace support {

struct transcript {
    int status = -1;
    std::string out;
    std::string err;

    friend bool operator==(const transcript&, const transcript&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const transcript& shown) {
        return stream << "status " << shown.status << "\n-- out\n" << shown.out << "-- err\n" << shown.err;
    }
};

class program : public testing::Test {
protected:
    /// Runs `harbor` with `arguments`, as a shell reads them, in `place`; `before` is put in front.
    transcript run(const std::string& arguments, const std::string& before = {}) {
        const auto shell = "cd '" + place.path.string() + "' && { " + before + " '" HARBOR_PROGRAM "' " +
                           arguments + "; } >'" + (logs / "out").string() + "' 2>'" +
                           (logs / "err").string() + "'";
        const int ended = std::system(shell.c_str());
        return {WIFEXITED(ended) ? WEXITSTATUS(ended) : -1, read_file(logs / "out"), read_file(logs / "err")};
    }
    void save(const cabinet& made, const std::string& name = "x.cab") {
        write_file(place / name, made.bytes());
    }

    static transcript fine(const std::string& out = {}) { return {0, out, {}}; }
    static transcript failed(const std::string& err, const std::string& out = {}) { return {1, out, err}; }

    temporary_folder place;
    temporary_folder logs;
};

} // namespace support
