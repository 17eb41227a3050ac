#pragma once

#include <string>

namespace host {

class directory_tree;

// A file that isn't complete has no name, or where the file system or the descriptors don't allow that, a
// temporary one: ".harbor-PID-N" in the folder that it is for. A signal that ends the process removes such
// files first; those of a process that was killed are removed by the next one that writes to the folder.

/// Lets SIGINT, SIGTERM, SIGHUP and SIGQUIT, unless ignored, remove the temporary files before they end the
/// process. To be called before any other thread is started: these signals are then taken by a thread of
/// their own. Does nothing if that thread can't be started.
void remove_temporary_files_on_signals();

/// A name that no temporary file of this process has had.
std::string new_temporary_name();
/// Whether `name` is of the kind that new_temporary_name returns, in any process.
bool is_temporary_name(const std::string& name);
/// Removes the temporary files in the open folder `folder` whose processes no longer exist. Failures are
/// ignored.
void remove_abandoned_files(int folder);

/// The name of one temporary file, to be removed by a signal while it is not empty.
class temporary_name {
public:
    /// Both arguments outlive it.
    temporary_name(const directory_tree& target, const std::string& folder_path)
        : tree(target), folder(folder_path) {}
    temporary_name(const temporary_name&) = delete;
    temporary_name& operator=(const temporary_name&) = delete;
    ~temporary_name();

    /// To be called within a temporary_name::step, like the change on disk that it goes with.
    void set(std::string value);
    void clear() { set({}); }
    bool empty() const { return name.empty(); }
    const char* c_str() const { return name.c_str(); }

    /// While one lives, no signal is answered: a change on disk and its note count as one. Not to be nested.
    class step {
    public:
        step();
        step(const step&) = delete;
        step& operator=(const step&) = delete;
        ~step();
    };

    /// Removes the file. Fails as directory_tree does.
    void remove() const;

private:
    const directory_tree& tree;
    const std::string& folder;
    std::string name;
};

} // namespace host
