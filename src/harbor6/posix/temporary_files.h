#pragma once

#include <string>

namespace host {

class directory_tree;

// A file that isn't complete has no name, or where the file system or the descriptors don't allow that, a
// temporary one: ".harbor-PID-N" in the folder that it is for. A signal that ends the process removes such
// files first; those of a process that was killed are removed by the next one that writes to the folder.
// A folder that is renamed for a moment is treated alike.

/// A name that no temporary file of this process has had.
std::string new_temporary_name();
/// Whether `name` is of the kind that new_temporary_name returns, in any process.
bool is_temporary_name(const std::string& name);
/// Removes the temporary files in the open folder `folder` whose processes no longer exist. Failures are
/// ignored.
void remove_abandoned_files(int folder);

/// While one lives, no signal is answered: a change on disk and its note count as one. Not to be nested.
class uninterrupted_step {
public:
    uninterrupted_step();
    uninterrupted_step(const uninterrupted_step&) = delete;
    uninterrupted_step& operator=(const uninterrupted_step&) = delete;
    ~uninterrupted_step();
};

/// A note of what a signal is to undo on disk. Notes are made and dropped within an uninterrupted_step, like
/// the change that they go with.
class undo_note {
public:
    undo_note() = default;
    undo_note(const undo_note&) = delete;
    undo_note& operator=(const undo_note&) = delete;

    /// Called by the thread that ends the process. Fails as directory_tree does.
    virtual void undo() const = 0;

protected:
    ~undo_note() = default;
    void keep(bool noted);
};

/// The name of one temporary file, to be removed by a signal while it is not empty.
class temporary_name final : public undo_note {
public:
    /// Both arguments outlive it.
    temporary_name(const directory_tree& target, const std::string& folder_path)
        : tree(target), folder(folder_path) {}
    ~temporary_name();

    void set(std::string value);
    void clear() { set({}); }
    bool empty() const { return name.empty(); }
    const char* c_str() const { return name.c_str(); }

    void undo() const override;

private:
    const directory_tree& tree;
    const std::string& folder;
    std::string name;
};

/// The folder that has another name for a moment. A signal removes it if it is empty, and otherwise gives it
/// its own name back.
class renamed_folder final : public undo_note {
public:
    explicit renamed_folder(const directory_tree& target) : tree(target) {}
    ~renamed_folder();

    void set(std::string own_path, std::string path_now);
    void clear() { set({}, {}); }
    /// Empty if there is none.
    const std::string& path() const { return now; }

    void undo() const override;

private:
    const directory_tree& tree;
    std::string own, now;
};

} // namespace host
