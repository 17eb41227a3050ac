#pragma once

/// Makes calls of this process to the system fail, from any thread, those of the library among them.
namespace support::faults {

enum class call { none, allocate, open, create, mkdir, read, write, link, rename, time, sync, close };

/// The `nth` call from now on fails with `error`, and if it `stays`, so do all after it; 1 is the next.
void arm(call which, unsigned nth, int error, bool stays = false);
/// Nothing fails any more. Returns whether a call has failed.
bool disarm();

extern bool can_keep_others; ///< whether a rename may be told to replace nothing
extern unsigned synced_files;
extern unsigned synced_folders;

} // namespace support::faults
